#include "actions/frmSelectBatchDir.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/settings.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "shell/frmPreferences.h"
#include "ui/background.h"
#include "viewer/foldersearch.h"

#include <QBoxLayout>
#include <QKeyEvent>

frmSelectBatchDir::frmSelectBatchDir(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Select Batch Directory"));
    setModal(true);
    setSizeGripEnabled(true);
    layOut();
    Dir1->installEventFilter(this);
    connect(Drive1, &QComboBox::currentIndexChanged, this, &frmSelectBatchDir::Drive1_Change);
    connect(Dir1, &FolderTree::Change, this, &frmSelectBatchDir::Dir1_Change);
    connect(cmdCreateDirectory, &QPushButton::clicked, this, &frmSelectBatchDir::cmdCreateDirectory_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmSelectBatchDir::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmSelectBatchDir::cmdCancel_Click);
}

void frmSelectBatchDir::layOut()
{
    lblFileInfo[0]->setText(tr("D&rive:"));
    lblFileInfo[0]->setBuddy(Drive1);
    lblFileInfo[1]->setText(tr("&Directory:"));
    lblFileInfo[1]->setBuddy(Dir1);
    lblFileInfo[2]->setText(tr("Selected directory:"));
    lblFileInfo[3]->setAccessibleDescription(tr("Free space"));
    Drive1->setAccessibleName(tr("Drive"));
    Dir1->setAccessibleName(tr("Directory"));
    Dir1->setMinimumSize(320, 260);
    lblDirectoryName->setAccessibleDescription(tr("Selected directory"));
    cmdCreateDirectory->setText(tr("Create D&irectory"));
    cmdCreateDirectory->setAutoDefault(false);
    cmdOK->setText(tr("&OK"));
    cmdOK->setDefault(true);
    cmdCancel->setText(tr("&Cancel"));
    cmdCancel->setAutoDefault(false);

    auto *chosen = new QHBoxLayout;
    chosen->addWidget(lblFileInfo[2]);
    chosen->addWidget(lblDirectoryName, 1);
    chosen->addWidget(lblFileInfo[3]);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdCreateDirectory);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    auto *all = new QVBoxLayout(this);
    all->addWidget(lblFileInfo[0]);
    all->addWidget(Drive1);
    all->addWidget(lblFileInfo[1]);
    all->addWidget(Dir1, 1);
    all->addLayout(chosen);
    all->addSpacing(6);
    all->addLayout(buttons);
    QWidget *before = Drive1;
    for (QWidget *control : std::initializer_list<QWidget *>{Dir1, cmdCreateDirectory, cmdOK, cmdCancel}) {
        setTabOrder(before, control);
        before = control;
    }
    Dir1->setFocus();
    resize(480, 480);
}

void frmSelectBatchDir::Form_Load()
{
    Drive1->fill();
    openFolder(workingFolder());
}

/// Boxes and dialogs over the window make it active again; only the first time it chooses the folder.
void frmSelectBatchDir::Form_Activate()
{
    PaintFormBackground(this, QStringLiteral("OTHER"));
    if (m_opened)
        return;
    m_opened = true;
    openStartFolder();
    Dir1->refresh();
    showFreeSpace();
}

void frmSelectBatchDir::openStartFolder()
{
    const auto &choice = form<frmPreferences>().optDefaultOpenFolder;
    if (!choice[1]->isChecked() && !choice[2]->isChecked())
        return;
    switch (number(option("DefaultOpenFolder", "1")).value_or(0)) {
    case 1:
        return openFolder(option("LastVisitedFolder", ""));
    case 2:
        return openFolder(option("UserChoiceOpenFolder", ""));
    default:
        return openFolder(form<checkjpg>().WindowsSystemFolders1.pictures());
    }
}

/// A folder that is not there leaves the one before.
void frmSelectBatchDir::openFolder(const QString &folder)
{
    if (!folder.isEmpty() && Dir1->setPath(folder))
        Drive1->showDriveOf(folder);
}

void frmSelectBatchDir::Form_QueryUnload(bool &cancel)
{
    // Closed while it waits for an answer it answers like Cancel; whoever asked goes on from there.
    if (!isVisible())
        return;
    cmdCancel_Click();
    cancel = !globals.ProgramExiting;
}

void frmSelectBatchDir::hideEvent(QHideEvent *event)
{
    FormDialog::hideEvent(event);
    m_opened = false;
}

void frmSelectBatchDir::Drive1_Change()
{
    // Not ready: the drive before stays.
    Drive1->settle(!Drive1->folder().isEmpty() && Dir1->setPath(Drive1->folder()));
}

void frmSelectBatchDir::Dir1_Change()
{
    lblDirectoryName->setText(Dir1->path());
    showFreeSpace();
}

void frmSelectBatchDir::showFreeSpace()
{
    const auto bytes = freeSpace(Dir1->path());
    lblFileInfo[3]->setText(bytes ? tr("%1 free").arg(locale().formattedDataSize(*bytes)) : QString());
}

void frmSelectBatchDir::cmdCreateDirectory_Click()
{
    const QPointer<frmSelectBatchDir> self(this);
    const auto name =
        dialogs().inputText(this, tr("Create Directory"), tr("Enter Name Of Directory To Create"), QString());
    if (!self || !name || name->isEmpty())
        return;
    const Result<void> made = makeFolder(folderWithSeparator(Dir1->path()) + *name);
    MessageBox box;
    if (made) {
        Dir1->refresh();
        box.title = tr("Directory Created");
        box.text = tr("Directory ") + displayPath(*name) + tr(" created successfully.");
        box.icon = MessageBox::Icon::Information;
    } else {
        box.title = tr("Directory Creation error");
        box.text = tr("Directory could not be created.");
        box.icon = MessageBox::Icon::Exclamation;
    }
    dialogs().show(this, box);
}

void frmSelectBatchDir::cmdOK_Click()
{
    Dir1->takeHighlighted();
    lblDirectoryName->setText(folderWithSeparator(Dir1->path()));
    hide();
}

void frmSelectBatchDir::cmdCancel_Click()
{
    lblDirectoryName->setText(QString());
    hide();
}

void frmSelectBatchDir::reject()
{
    cmdCancel_Click();
}

/// The space key, and losing the focus, take the entry that is highlighted.
bool frmSelectBatchDir::eventFilter(QObject *watched, QEvent *event)
{
    const bool space = event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Space;
    if (watched == Dir1 && (space || event->type() == QEvent::FocusOut))
        Dir1->takeHighlighted();
    return FormDialog::eventFilter(watched, event) || (watched == Dir1 && space);
}
