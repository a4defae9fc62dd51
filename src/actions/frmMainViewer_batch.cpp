#include "viewer/frmMainViewer.h"

#include "actions/conversion.h"
#include "actions/frmConvertFileName.h"
#include "actions/frmConvertFileType.h"
#include "app/checkjpg.h"
#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/operationslog.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <QLoggingCategory>

// The run goes by the list as it was when it began and has pictures of its own: what another window, a timer or a
// command does in between neither turns up in the files nor harms the run. While the progress window is shown nobody
// can change the list by hand anyway.

namespace {

Q_LOGGING_CATEGORY(conversionLog, "lumora.conversion", QtWarningMsg)

class WindowRun : public ConversionClient
{
public:
    explicit WindowRun(frmMainViewer &viewer)
        : m_viewer(&viewer)
        , m_types(&form<frmConvertFileType>())
        , m_progress(&form<frmConvertFileName>())
        , m_title(m_progress->windowTitle())
        , m_entries(viewer.lstDisplay->items())
        , m_selected(m_entries.size())
    {
        const QList<int> selected = viewer.lstDisplay->selectedIndices();
        for (const int index : selected)
            m_selected.setBit(index);
    }

    ConversionOptions options() const override { return m_types ? m_types->options() : ConversionOptions(); }
    int entryCount() const override { return int(m_entries.size()); }
    QString entry(int index) const override { return m_entries.value(index); }
    bool isSelected(int index) const override { return index < m_selected.size() && m_selected.testBit(index); }

    void letEventsIn(const std::function<bool()> &ready) override { ready ? YieldUntil(ready) : Yield(); }
    void wake() override { wakeYield(); }
    bool cancelled() const override { return globals.cancelFlag; }
    void clearCancel() override { globals.cancelFlag = false; }
    bool goesOn() const override { return !globals.ProgramExiting && m_viewer && m_types && m_progress; }

    MessageBox::Answer ask(const MessageBox &box) override { return dialogs().show(m_progress, box); }
    void showPercent(int percent) override
    {
        m_progress->ProgressBar1->setValue(percent);
        m_progress->lblPercent->setText(QString::number(percent) + QLatin1Char('%'));
    }
    void showFiles(const QString &from, const QString &to) override
    {
        m_progress->lblFileName->setText(from);
        m_progress->lblConvertFileName->setText(to);
    }
    void showOperation(const QString &text) override { m_progress->setWindowTitle(m_title + text); }
    void finished(const ConversionOutcome &outcome) override;

private:
    const QPointer<frmMainViewer> m_viewer;
    const QPointer<frmConvertFileType> m_types;
    const QPointer<frmConvertFileName> m_progress;
    const QString m_title;
    const QStringList m_entries;
    QBitArray m_selected;
};

void WindowRun::finished(const ConversionOutcome &outcome)
{
    const QString entry = displayPath(outcome.entry);
    const QString target = displayPath(outcome.target);
    if (!outcome.loaded)
        qCWarning(conversionLog, "\"%s\" cannot be read: \"%s\" gets the picture before", qPrintable(entry),
            qPrintable(target));
    switch (outcome.what) {
    case ConversionOutcome::NotWritten:
        qCWarning(conversionLog, "\"%s\" not written: %s", qPrintable(target), qPrintable(outcome.reason));
        return logOperation(Operation::Failed, outcome.target, outcome.reason);
    case ConversionOutcome::LeftAlone:
        return logOperation(Operation::LeftAlone, outcome.target, outcome.entry);
    case ConversionOutcome::Written:
        return logOperation(
            outcome.loaded ? Operation::Written : Operation::CarriedOver, outcome.target, outcome.entry);
    }
}

/// The busy pointer over the two windows of a run.
class BusyWindows
{
public:
    BusyWindows(QWidget &viewer, QWidget &progress)
        : m_windows{&viewer, &progress}
    {
        for (const auto &window : m_windows)
            window->setCursor(Qt::WaitCursor);
    }
    ~BusyWindows()
    {
        for (const auto &window : m_windows) {
            if (window)
                window->unsetCursor();
        }
    }
    Q_DISABLE_COPY_MOVE(BusyWindows)

private:
    const QVector<QPointer<QWidget>> m_windows;
};

/// False when the user has cancelled, or the program ends.
bool askForTypes(frmMainViewer &viewer)
{
    const QPointer<frmMainViewer> self(&viewer);
    auto &types = form<frmConvertFileType>();
    types.setParent(&viewer, types.windowFlags());
    types.exec();
    if (!self || !isLoaded<frmConvertFileType>() || globals.ProgramExiting)
        return false;
    return !std::exchange(form<frmConvertFileType>().Cancelled, false);
}

void convertList(frmMainViewer &viewer)
{
    auto &progress = form<frmConvertFileName>();
    const QPointer<frmConvertFileName> shown(&progress);
    // Another run may have put these out of sight.
    progress.Animation1->show();
    progress.ProgressBar1->show();
    progress.ProgressBar1->setValue(0);
    progress.lblPercent->setText(QString());
    progress.lblFileName->setText(QString());
    progress.lblConvertFileName->setText(QString());
    progress.showOver(&viewer);
    {
        const BusyWindows busy(viewer, progress);
        WindowRun client(viewer);
        PolyImage image = form<checkjpg>().polImageBox1;
        Gvbox gvbox = form<checkjpg>().Gvbox2;
        runConversion(client, image, gvbox, LookAhead::AllCores);
        // What was loaded last stays, until an item is shown again.
        if (isLoaded<checkjpg>()) {
            form<checkjpg>().polImageBox1 = image;
            form<checkjpg>().Gvbox2.setPicture(gvbox.picture());
        }
    }
    if (shown)
        shown->hide();
}

}

void frmMainViewer::mnuFileBatchConvertImages_Click()
{
    static bool underWay = false;
    if (underWay)
        return;
    const ScopedFlag busy(underWay);
    if (askForTypes(*this))
        convertList(*this);
}
