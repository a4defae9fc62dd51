#include "actions/frmConvertFileType.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QGridLayout>

#include <algorithm>

namespace {

constexpr int typeColumns = 2;
constexpr int dependantIndent = 20; ///< pixels

}

/// Puts a text beside a box that has none of its own.
void frmConvertFileType::label(QCheckBox *box, QLabel *label, const QString &text)
{
    box->setAccessibleName(text.trimmed());
    label->setText(text);
    label->setTextFormat(Qt::PlainText);
    label->installEventFilter(this);
    m_boxes.append({box, label});
}

QLabel *frmConvertFileType::labelOf(const QCheckBox *box) const
{
    const auto found =
        std::find_if(m_boxes.begin(), m_boxes.end(), [box](const LabelledBox &pair) { return pair.box == box; });
    return found == m_boxes.end() ? nullptr : found->label;
}

void frmConvertFileType::setTexts()
{
    for (int type = optFileType.first; type <= optFileType.last; ++type)
        label(optFileType[type], lblFileType[type],
            QCoreApplication::translate("SaveFormats", saveFormats()[std::size_t(type)].batchLabel));
    label(chkUseImageFolder, lblUseImageFolder, tr("Place Images in Original Image Folder"));
    label(chkAddConvertFolder, lblAddConvertFolder, tr("Add Convert Folder"));
    label(chkCovertFolderForEachType, lblCovertFolderForEachType, tr("For Each File Type"));
    label(chkOverWriteFiles, lblOverWriteFiles, tr("Overwrite Existing Files"));
    label(chkOverwritePromptFirst, lblOverwritePromptFirst, tr("Prompt for Confirmation"));
    label(chkDiffuseTwoColor, lblDiffuseTwoColor, tr("Diffuse Image During Color Reduction"));
    label(chkGrayScale, lblGrayScale, tr("Convert to Grayscale"));
    label(chkGrayScale256, lblGrayScale256, tr("Convert To 256 Color Image"));
    label(chkAutoLevel, lblAutoLevel, tr("Auto Level Image"));
    label(chkAutoContrast, lblAutoContrast, tr("Auto Contrast Image"));
    label(chkEmoboss, lblEmoboss, tr("Emboss Image"));
    optWhichFiles[0]->setText(tr("&Selected Files Only"));
    optWhichFiles[1]->setText(tr("A&ll Files In Display List"));
    cmdSelectAllTypes->setText(tr("S&elect All"));
    cmdClearAlTypesCommand->setText(tr("C&lear All"));
    cmdInvertSelections->setText(tr("I&nvert"));
    cmdBrowse->setText(tr("&Browse"));
    cmdConvert->setText(tr("Con&vert"));
    cmdCancel->setText(tr("&Cancel"));
    txtImageFolder->setReadOnly(true);
    txtImageFolder->installEventFilter(this);
    txtImageFolder->setAccessibleName(tr("Image folder"));
}

QLayout *frmConvertFileType::pair(QCheckBox *box, int indent) const
{
    auto *row = new QHBoxLayout;
    row->setSpacing(6);
    row->addSpacing(indent);
    row->addWidget(box);
    row->addWidget(labelOf(box));
    row->addStretch();
    return row;
}

QGroupBox *frmConvertFileType::makeTypes()
{
    auto *group = new QGroupBox(tr("&Please select a file type(s) to convert images to:"), this);
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(24);
    grid->setVerticalSpacing(3);
    constexpr int rows = (conversionTypeCount + typeColumns - 1) / typeColumns;
    for (int type = optFileType.first; type <= optFileType.last; ++type)
        grid->addLayout(pair(optFileType[type]), type % rows, type / rows);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {cmdSelectAllTypes, cmdClearAlTypesCommand, cmdInvertSelections})
        buttons->addWidget(button);
    buttons->addStretch();
    auto *all = new QVBoxLayout(group);
    all->addLayout(grid);
    all->addSpacing(4);
    all->addLayout(buttons);
    return group;
}

QGroupBox *frmConvertFileType::makeOptions()
{
    auto *group = new QGroupBox(tr("&Options:"), this);
    auto *grid = new QGridLayout(group);
    grid->setHorizontalSpacing(24);
    grid->setVerticalSpacing(3);
    grid->addWidget(optWhichFiles[0], 0, 0);
    grid->addWidget(optWhichFiles[1], 1, 0);
    grid->addLayout(pair(chkOverWriteFiles), 2, 0);
    grid->addLayout(pair(chkOverwritePromptFirst), 3, 0);
    grid->addLayout(pair(chkDiffuseTwoColor), 4, 0);
    // In the order in which they are done, but for the first two.
    grid->addLayout(pair(chkGrayScale), 0, 1);
    grid->addLayout(pair(chkGrayScale256, dependantIndent), 1, 1);
    grid->addLayout(pair(chkAutoLevel), 2, 1);
    grid->addLayout(pair(chkAutoContrast), 3, 1);
    grid->addLayout(pair(chkEmoboss), 4, 1);
    for (int row = 0; row < grid->rowCount(); ++row)
        grid->setRowMinimumHeight(row, optWhichFiles[0]->sizeHint().height());
    return group;
}

QGroupBox *frmConvertFileType::makeImageFolders()
{
    auto *group = new QGroupBox(tr("&Image Folders:"), this);
    auto *folder = new QHBoxLayout;
    folder->addWidget(txtImageFolder, 1);
    folder->addWidget(cmdBrowse);
    auto *all = new QVBoxLayout(group);
    all->addLayout(pair(chkUseImageFolder));
    all->addLayout(folder);
    return group;
}

QGroupBox *frmConvertFileType::makeConvertFolders()
{
    auto *group = new QGroupBox(tr("Con&vert Folders:"), this);
    auto *all = new QVBoxLayout(group);
    all->addLayout(pair(chkAddConvertFolder));
    all->addLayout(pair(chkCovertFolderForEachType, dependantIndent));
    all->addStretch();
    return group;
}

void frmConvertFileType::layOut()
{
    auto *folders = new QHBoxLayout;
    folders->addWidget(makeImageFolders(), 2);
    folders->addWidget(makeConvertFolders(), 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdConvert);
    buttons->addWidget(cmdCancel);
    cmdConvert->setDefault(true);
    for (QPushButton *button : {cmdSelectAllTypes, cmdClearAlTypesCommand, cmdInvertSelections, cmdBrowse, cmdCancel})
        button->setAutoDefault(false);
    auto *all = new QVBoxLayout(this);
    all->addWidget(makeTypes());
    all->addWidget(makeOptions());
    all->addLayout(folders);
    all->addLayout(buttons);
}

void frmConvertFileType::setTabs()
{
    QVector<QWidget *> order(optFileType.begin(), optFileType.end());
    order += {cmdSelectAllTypes, cmdClearAlTypesCommand, cmdInvertSelections, optWhichFiles[0], optWhichFiles[1],
        chkOverWriteFiles, chkOverwritePromptFirst, chkDiffuseTwoColor, chkGrayScale, chkGrayScale256, chkAutoLevel,
        chkAutoContrast, chkEmoboss, chkUseImageFolder, txtImageFolder, cmdBrowse, chkAddConvertFolder,
        chkCovertFolderForEachType, cmdConvert, cmdCancel};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    optFileType[0]->setFocus();
}
