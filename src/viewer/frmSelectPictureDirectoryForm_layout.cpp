#include "viewer/frmSelectPictureDirectoryForm.h"

#include "ui/icons.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QMouseEvent>
#include <QSplitter>

namespace {

struct JumpRow
{
    const char *caption;
    const char *icon;
};

constexpr int jumpIconPixels = 32;
constexpr QSize thumbnailSize(240, 200);

QWidget *inWidget(QLayout *layout)
{
    auto *widget = new QWidget;
    layout->setContentsMargins(0, 0, 0, 0);
    widget->setLayout(layout);
    return widget;
}

} // namespace

frmSelectPictureDirectoryForm::frmSelectPictureDirectoryForm(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Lumora - Select File Directory"));
    setModal(true);
    setSizeGripEnabled(true);
    lblInfo->setText(tr("Please select picture directory. File list and thumbnail are for preview only!!!"));
    lblInfo->setWordWrap(true);

    auto *columns = new QSplitter(Qt::Horizontal, this);
    columns->setChildrenCollapsible(false);
    columns->addWidget(inWidget(makeFolderColumn()));
    columns->addWidget(inWidget(makeFileColumn()));
    columns->addWidget(makePreview());
    columns->setStretchFactor(0, 3);
    columns->setStretchFactor(1, 3);
    columns->setStretchFactor(2, 2);

    auto *all = new QVBoxLayout(this);
    all->addLayout(makeJumpButtons());
    all->addWidget(columns, 1);
    all->addWidget(lblInfo);
    all->addLayout(makeButtonRow());
    placeFocus();
    connectControls();
    resize(900, 560);
}

QLayout *frmSelectPictureDirectoryForm::makeJumpButtons()
{
    // clang-format off
    static constexpr JumpRow rows[] = {
        {QT_TR_NOOP("D&esktop"),      "user-desktop"},
        {QT_TR_NOOP("&My Documents"), "folder-documents"},
        {QT_TR_NOOP("F&avorites"),    "user-bookmarks"},
        {QT_TR_NOOP("My &Pictures"),  "folder-pictures"},
    };
    // clang-format on
    auto *row = new QHBoxLayout;
    for (int index = cmdFolder.first; index <= cmdFolder.last; ++index) {
        QToolButton *button = cmdFolder[index];
        QLabel *label = lblButtons[index];
        const QString caption = tr(rows[index].caption);
        button->setIcon(themedIcon(QLatin1String(rows[index].icon)));
        button->setIconSize(QSize(jumpIconPixels, jumpIconPixels));
        // With a ground of its own: the icons are drawn for the palette's, which may be darker than the gradient.
        button->setAutoRaise(false);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setAccessibleName(QString(caption).remove(QLatin1Char('&')));
        button->setToolTip(button->accessibleName());
        label->setText(caption);
        label->setBuddy(button);
        label->setAlignment(Qt::AlignCenter);
        label->installEventFilter(this);
        auto *pair = new QVBoxLayout;
        pair->setSpacing(2);
        pair->addWidget(button, 0, Qt::AlignHCenter);
        pair->addWidget(label);
        row->addLayout(pair);
        row->addSpacing(12);
    }
    row->addStretch();
    return row;
}

QLayout *frmSelectPictureDirectoryForm::makeFolderColumn()
{
    auto *driveLabel = new QLabel(tr("D&rive"), this);
    driveLabel->setBuddy(Drive1);
    Drive1->setAccessibleName(tr("Drive"));
    auto *directoryLabel = new QLabel(tr("&Directory"), this);
    directoryLabel->setBuddy(Dir1);
    Dir1->setAccessibleName(tr("Directory"));
    Dir1->setMinimumSize(220, 220);
    auto *column = new QVBoxLayout;
    column->addWidget(driveLabel);
    column->addWidget(Drive1);
    column->addWidget(directoryLabel);
    column->addWidget(Dir1, 1);
    return column;
}

QLayout *frmSelectPictureDirectoryForm::makeFileColumn()
{
    auto *fileLabel = new QLabel(tr("&Filename"), this);
    fileLabel->setBuddy(File1);
    File1->setAccessibleName(tr("Filename"));
    File1->setMinimumWidth(200);
    auto *column = new QVBoxLayout;
    column->addWidget(fileLabel);
    column->addWidget(File1, 1);
    return column;
}

QWidget *frmSelectPictureDirectoryForm::makePreview()
{
    auto *group = new QGroupBox(tr("Image Media Properties"), this);
    imgThumbnail->setMinimumSize(thumbnailSize);
    imgThumbnail->setAlignment(Qt::AlignCenter);
    imgThumbnail->setFrameShape(QFrame::StyledPanel);
    imgThumbnail->setWordWrap(true);
    imgThumbnail->setAccessibleName(tr("Preview"));
    // The picture follows the label's size, never the label the picture.
    imgThumbnail->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    lblFileName->setWordWrap(true);
    lblFileName->setTextFormat(Qt::PlainText);
    lblFileName->setAccessibleDescription(tr("Name of the file"));
    lblFileName->setTextInteractionFlags(Qt::TextSelectableByMouse);

    const std::pair<QString, QLabel *> rows[] = {
        {tr("Image Colors:"), lblColors},
        {tr("Image Width:"), lblWidth},
        {tr("File Size:"), lblFileSize},
        {tr("Image Height:"), lblHeight},
    };
    auto *values = new QGridLayout;
    for (int index = lblFileInfo.first; index <= lblFileInfo.last; ++index) {
        const auto &[caption, value] = rows[index];
        lblFileInfo[index]->setText(caption);
        value->setTextFormat(Qt::PlainText);
        value->setAccessibleDescription(caption); // its name is what it says
        values->addWidget(lblFileInfo[index], index, 0);
        values->addWidget(value, index, 1);
    }
    values->setColumnStretch(1, 1);
    auto *column = new QVBoxLayout(group);
    column->addWidget(imgThumbnail, 1);
    column->addWidget(lblFileName);
    column->addLayout(values);
    return group;
}

QLayout *frmSelectPictureDirectoryForm::makeButtonRow()
{
    lblSearchSubFolders->setText(tr("&Search Sub Folders"));
    lblSearchSubFolders->setBuddy(chkSearchSubs);
    lblSearchSubFolders->installEventFilter(this);
    chkSearchSubs->setAccessibleName(tr("Search Sub Folders"));
    cmdSelectFileTypes->setText(tr("Display 'Select File &Types Options'"));
    cmdSelectFileTypes->setAutoDefault(false);
    cmdOK->setText(tr("&OK"));
    cmdOK->setDefault(true);
    cmdCancel->setText(tr("&Cancel"));
    cmdCancel->setAutoDefault(false);
    auto *row = new QHBoxLayout;
    row->addWidget(chkSearchSubs);
    row->addWidget(lblSearchSubFolders);
    row->addSpacing(12);
    row->addWidget(cmdSelectFileTypes);
    row->addStretch();
    row->addWidget(cmdOK);
    row->addWidget(cmdCancel);
    return row;
}

/// The Tab key goes as the eye does; the columns were put together apart from the window and would come last.
void frmSelectPictureDirectoryForm::placeFocus()
{
    QWidget *before = cmdFolder[cmdFolder.last];
    for (QWidget *control :
        std::initializer_list<QWidget *>{Drive1, Dir1, File1, chkSearchSubs, cmdSelectFileTypes, cmdOK, cmdCancel}) {
        setTabOrder(before, control);
        before = control;
    }
    Dir1->setFocus();
}

void frmSelectPictureDirectoryForm::connectControls()
{
    connect(Drive1, &QComboBox::currentIndexChanged, this, &frmSelectPictureDirectoryForm::Drive1_Change);
    connect(Dir1, &FolderTree::Change, this, &frmSelectPictureDirectoryForm::Dir1_Change);
    connect(File1, &ListBox::Click, this, &frmSelectPictureDirectoryForm::File1_Click);
    for (int index = cmdFolder.first; index <= cmdFolder.last; ++index)
        connect(cmdFolder[index], &QToolButton::clicked, this, [this, index] { cmdFolder_Click(index); });
    connect(cmdSelectFileTypes, &QPushButton::clicked, this, &frmSelectPictureDirectoryForm::cmdSelectFileTypes_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmSelectPictureDirectoryForm::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmSelectPictureDirectoryForm::cmdCancel_Click);
}

/// A click on a label does what its button does.
bool frmSelectPictureDirectoryForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        if (watched == lblSearchSubFolders)
            lblSearchSubFolders_Click();
        for (int index = lblButtons.first; index <= lblButtons.last; ++index) {
            if (watched == lblButtons[index])
                cmdFolder_Click(index);
        }
    }
    return FormDialog::eventFilter(watched, event);
}
