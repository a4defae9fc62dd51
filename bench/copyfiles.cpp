// The command "Copy Files To" as the user gives it, with its windows, on all files of a folder:
//   bench_copyfiles FROM TO
// Prints the seconds from the answer to its question to its report, by the clock and of the processor. 1 is returned
// when the report does not tell of all files.

#include "actions/frmSelectBatchDir.h"
#include "app/globals.h"
#include "app/settings.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <ctime>

namespace {

double processorSeconds()
{
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

/// Says yes, and keeps the time from the question to the report.
class TimedDialogs : public Dialogs
{
public:
    QString report;
    double seconds = 0;
    double processor = 0;

    MessageBox::Answer show(QWidget *, const MessageBox &box) override
    {
        if (box.buttons == MessageBox::Buttons::YesNo) {
            m_clock.start();
            m_processor = processorSeconds();
            return MessageBox::Answer::Yes;
        }
        seconds = double(m_clock.nsecsElapsed()) / 1e9;
        processor = processorSeconds() - m_processor;
        report = box.text;
        return MessageBox::Answer::Ok;
    }
    std::optional<FileAnswer> openFile(QWidget *, const FileQuestion &) override { return std::nullopt; }
    std::optional<FileAnswer> saveFile(QWidget *, const FileQuestion &) override { return std::nullopt; }
    std::optional<QString> chooseFolder(QWidget *, const QString &, const QString &) override { return std::nullopt; }
    std::optional<QString> inputText(QWidget *, const QString &, const QString &, const QString &) override
    {
        return std::nullopt;
    }
    std::optional<QColor> chooseColor(QWidget *, const QColor &) override { return std::nullopt; }

private:
    QElapsedTimer m_clock;
    double m_processor = 0;
};

void answerPicker(const QString &folder)
{
    auto *poll = new QTimer(qApp);
    QObject::connect(poll, &QTimer::timeout, [poll, folder] {
        auto &picker = form<frmSelectBatchDir>();
        if (!picker.isVisible() || picker.Dir1->path() != folder)
            return;
        poll->deleteLater();
        picker.cmdOK->click();
    });
    poll->start(0);
}

}

int main(int count, char *arguments[])
{
    if (count != 3) {
        std::fputs("usage: bench_copyfiles FROM TO\n", stderr);
        return 2;
    }
    const QTemporaryDir home;
    for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qputenv(variable, home.path().toLocal8Bit());
    qputenv("LUMORA_APP_FOLDER", home.path().toLocal8Bit());
    QApplication application(count, arguments);
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    const QString from = absolutePath(pathFromBytes(arguments[1]), workingFolder());
    const QString to = absolutePath(pathFromBytes(arguments[2]), workingFolder());
    saveOption("LastVisitedFolder", to);
    auto own = std::make_unique<TimedDialogs>();
    TimedDialogs &timed = *own;
    setDialogs(std::move(own));

    auto &viewer = form<frmMainViewer>();
    viewer.show();
    const auto listing = listFolder(from);
    if (!listing)
        return 1;
    for (const QString &name : listing->files)
        ignore(viewer.lstDisplay->addItem(from + QLatin1Char('/') + name));
    viewer.lblCount->setText(QString::number(viewer.lstDisplay->count()));
    viewer.tabFileList->setCurrentIndex(1);
    viewer.lstDisplay->selectAll();
    answerPicker(to);
    viewer.mnuEditCopyFilesTo_Click();
    std::printf("%.3f %.3f\n", timed.seconds, timed.processor);
    std::fflush(stdout);
    const bool all = timed.report.startsWith(QString::number(listing->files.size()) + QLatin1Char(' '));
    globals.ProgramExiting = true;
    std::_Exit(all ? 0 : 1);
}
