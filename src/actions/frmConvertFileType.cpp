#include "actions/frmConvertFileType.h"

#include "actions/frmSelectBatchDir.h"
#include "actions/saveoptions.h"
#include "app/globals.h"
#include "platform/folders.h"
#include "shell/frmPreferences.h"
#include "ui/background.h"

#include <QKeyEvent>

#include <algorithm>

frmConvertFileType::frmConvertFileType(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tessaly Lumora V3 - Convert Files"));
    setModal(true);
    setTexts();
    layOut();
    setTabs();
    optWhichFiles[1]->setChecked(true);
    chkUseImageFolder->setChecked(true);
    chkUseImageFolder_Click();
    chkGrayScale_Click();
    chkAddConvertFolder_Click();
    connectControls();
}

void frmConvertFileType::connectControls()
{
    connect(cmdSelectAllTypes, &QPushButton::clicked, this, &frmConvertFileType::cmdSelectAllTypes_Click);
    connect(cmdClearAlTypesCommand, &QPushButton::clicked, this, &frmConvertFileType::cmdClearAlTypesCommand_Click);
    connect(cmdInvertSelections, &QPushButton::clicked, this, &frmConvertFileType::cmdInvertSelections_Click);
    connect(chkGrayScale, &QCheckBox::toggled, this, &frmConvertFileType::chkGrayScale_Click);
    connect(chkAddConvertFolder, &QCheckBox::toggled, this, &frmConvertFileType::chkAddConvertFolder_Click);
    connect(chkUseImageFolder, &QCheckBox::toggled, this, &frmConvertFileType::chkUseImageFolder_Click);
    connect(cmdBrowse, &QPushButton::clicked, this, &frmConvertFileType::cmdBrowse_Click);
    connect(cmdConvert, &QPushButton::clicked, this, &frmConvertFileType::cmdConvert_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmConvertFileType::cmdCancel_Click);
}

ConversionOptions frmConvertFileType::options() const
{
    ConversionOptions options;
    options.selectedOnly = optWhichFiles[0]->isChecked();
    for (int type = optFileType.first; type <= optFileType.last; ++type)
        options.types.set(std::size_t(type), optFileType[type]->isChecked());
    options.useImageFolder = chkUseImageFolder->isChecked();
    options.imageFolder = txtImageFolder->text();
    options.addConvertFolder = chkAddConvertFolder->isChecked();
    options.folderForEachType = chkCovertFolderForEachType->isChecked();
    options.overwriteFiles = chkOverWriteFiles->isChecked();
    options.promptFirst = chkOverwritePromptFirst->isChecked();
    options.diffuseTwoColor = chkDiffuseTwoColor->isChecked();
    options.grayScale = chkGrayScale->isChecked();
    options.grayScale256 = chkGrayScale256->isChecked();
    options.autoLevel = chkAutoLevel->isChecked();
    options.autoContrast = chkAutoContrast->isChecked();
    options.emboss = chkEmoboss->isChecked();
    const auto &sizes = form<frmPreferences>().optPhotoCDSize;
    for (int size = sizes.first; size <= sizes.last; ++size) {
        if (sizes[size]->isChecked())
            options.photoCDSize = size;
    }
    options.save = saveOptionsOfPreferences();
    return options;
}

void frmConvertFileType::Form_Activate()
{
    Cancelled = false;
    PaintFormBackground(this, QStringLiteral("OTHER"));
}

void frmConvertFileType::Form_QueryUnload(bool &cancel)
{
    // Closed while it waits for an answer it answers like Cancel; the run goes on from there.
    if (!isVisible())
        return;
    cmdCancel_Click();
    cancel = !globals.ProgramExiting;
}

void frmConvertFileType::cmdSelectAllTypes_Click()
{
    for (QCheckBox *box : optFileType)
        box->setChecked(true);
}

void frmConvertFileType::cmdClearAlTypesCommand_Click()
{
    for (QCheckBox *box : optFileType)
        box->setChecked(false);
}

void frmConvertFileType::cmdInvertSelections_Click()
{
    for (QCheckBox *box : optFileType)
        box->toggle();
}

/// A label looks as its box does, and goes on taking clicks.
void frmConvertFileType::enable(QCheckBox *box, bool on)
{
    box->setEnabled(on);
    labelOf(box)->setEnabled(on);
}

void frmConvertFileType::chkGrayScale_Click()
{
    enable(chkGrayScale256, chkGrayScale->isChecked());
    if (!chkGrayScale->isChecked())
        chkGrayScale256->setChecked(false);
}

void frmConvertFileType::chkAddConvertFolder_Click()
{
    enable(chkCovertFolderForEachType, chkAddConvertFolder->isChecked());
    if (!chkAddConvertFolder->isChecked())
        chkCovertFolderForEachType->setChecked(false);
}

void frmConvertFileType::chkUseImageFolder_Click()
{
    const bool ownFolder = !chkUseImageFolder->isChecked();
    txtImageFolder->setEnabled(ownFolder);
    cmdBrowse->setEnabled(ownFolder);
    // Without the separator at its end: its name then stands before those of the files.
    if (ownFolder && txtImageFolder->text().isEmpty())
        txtImageFolder->setText(AppFolder().chopped(1));
}

void frmConvertFileType::cmdBrowse_Click()
{
    const QPointer<frmConvertFileType> self(this);
    auto &picker = form<frmSelectBatchDir>();
    picker.setParent(this, picker.windowFlags());
    picker.exec();
    // Also when it is empty.
    if (self && isLoaded<frmSelectBatchDir>())
        txtImageFolder->setText(form<frmSelectBatchDir>().lblDirectoryName->text());
}

void frmConvertFileType::cmdConvert_Click()
{
    hide();
}

void frmConvertFileType::cmdCancel_Click()
{
    cmdClearAlTypesCommand_Click();
    Cancelled = true;
    hide();
}

bool frmConvertFileType::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == txtImageFolder && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        const bool ofWindow = key == Qt::Key_Tab || key == Qt::Key_Backtab || key == Qt::Key_Escape
            || key == Qt::Key_Return || key == Qt::Key_Enter;
        return key != Qt::Key_Left && key != Qt::Key_Right && !ofWindow;
    }
    if (event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        const auto clicked = std::find_if(
            m_boxes.begin(), m_boxes.end(), [&](const LabelledBox &pair) { return pair.label == watched; });
        // A box that is off takes this too.
        if (clicked != m_boxes.end() && clicked->label->rect().contains(static_cast<QMouseEvent *>(event)->pos()))
            clicked->box->toggle();
    }
    return FormDialog::eventFilter(watched, event);
}
