#include "actions/frmConvertFileName.h"

#include "app/globals.h"
#include "platform/folders.h"
#include "ui/background.h"
#include "ui/twips.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QGuiApplication>

namespace {
constexpr int usualWidth = 460; ///< pixels
}

frmConvertFileName::frmConvertFileName(QWidget *parent)
    : FormDialog(parent)
    , m_progressLine(new QWidget(this))
{
    setWindowTitle(tr("Converting File(s):"));
    setWindowModality(Qt::ApplicationModal);
    lblFrom->setText(tr("From:"));
    lblTo->setText(tr("To:"));
    lblFileName->setAccessibleDescription(tr("From"));
    lblConvertFileName->setAccessibleDescription(tr("To"));
    lblPercent->setAccessibleDescription(tr("Percent done"));
    ProgressBar1->setAccessibleName(tr("Progress"));
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    ProgressBar1->setTextVisible(false);
    cmdCancel->setText(tr("&Cancel"));
    connect(cmdCancel, &QPushButton::clicked, this, &frmConvertFileName::cmdCancel_Click);

    auto *names = new QGridLayout;
    names->addWidget(lblFrom, 0, 0);
    names->addWidget(lblFileName, 0, 1);
    names->addWidget(lblTo, 1, 0);
    names->addWidget(lblConvertFileName, 1, 1);
    names->setColumnStretch(1, 1);
    names->setHorizontalSpacing(12);
    auto *progress = new QVBoxLayout(m_progressLine);
    progress->setContentsMargins(0, 0, 0, 0);
    progress->addWidget(ProgressBar1);
    progress->addWidget(lblPercent);
    lblPercent->setAlignment(Qt::AlignCenter);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdCancel);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(18, 14, 18, 14);
    all->setSpacing(14);
    all->addWidget(Animation1);
    all->addLayout(names);
    all->addWidget(m_progressLine);
    all->addStretch();
    all->addLayout(buttons);
    setHeight(usualHeight);
}

void frmConvertFileName::Form_Activate()
{
    PaintFormBackground(this, QStringLiteral("OTHER"));
    openUsualFilm();
}

/// Who has opened another film before keeps it.
void frmConvertFileName::openUsualFilm()
{
    if (Animation1->fileName().isEmpty())
        Animation1->Open(AppFolder() + QStringLiteral("filecopy.avi"));
}

/// Not every window system tells of an activation each time that a window comes up.
void frmConvertFileName::showEvent(QShowEvent *event)
{
    FormDialog::showEvent(event);
    openUsualFilm();
}

/// A box over this window often goes in the same moment, and some window managers then look for the next window in
/// vain.
void frmConvertFileName::hideEvent(QHideEvent *event)
{
    FormDialog::hideEvent(event);
    if (parentWidget() && QGuiApplication::applicationState() == Qt::ApplicationActive)
        parentWidget()->activateWindow();
}

/// Closed by the user it cancels and stays: it goes with the run that it tells of.
void frmConvertFileName::Form_QueryUnload(bool &cancel)
{
    if (!isVisible() || globals.ProgramExiting)
        return;
    cmdCancel_Click();
    cancel = true;
}

void frmConvertFileName::showOver(QWidget *owner)
{
    setParent(owner, windowFlags() | Qt::Dialog);
    if (owner)
        move(owner->mapToGlobal(owner->rect().center()) - rect().center());
    show();
}

void frmConvertFileName::setHeight(int twips)
{
    m_progressLine->setVisible(twips >= usualHeight);
    // A large font may need more room than that.
    layout()->activate();
    resize(usualWidth, qMax(pixelsFromTwips(twips), layout()->minimumSize().height()));
}

void frmConvertFileName::cmdCancel_Click()
{
    globals.cancelFlag = true;
}

void frmConvertFileName::reject()
{
    cmdCancel_Click();
}
