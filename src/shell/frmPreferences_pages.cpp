#include "shell/frmPreferences.h"

#include "app/mediatypes.h"
#include "shell/menubackgroundbox.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QTabBar>
#include <QVBoxLayout>

namespace {
/// A page that scrolls where the window is too small for it, and wants to be seen as a whole.
class PageArea : public QScrollArea
{
public:
    explicit PageArea(QWidget *page)
        : QScrollArea(page->parentWidget())
    {
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setWidget(page);
        // The ground of the tab, not one of its own.
        viewport()->setAutoFillBackground(false);
        page->setAutoFillBackground(false);
    }
    // With a little to spare: on scaled screens rounding takes a pixel here and there.
    QSize sizeHint() const override { return widget()->sizeHint() + QSize(8, 4); }
};

void chainTabs(const QVector<QWidget *> &controls)
{
    for (qsizetype i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls[i - 1], controls[i]);
}

QLabel *helpText(const QString &text, QWidget *owner)
{
    auto *label = new QLabel(text, owner);
    label->setWordWrap(true);
    return label;
}

template <class Layout> QGroupBox *group(const QString &title, QWidget *page, Layout *&layout)
{
    auto *box = new QGroupBox(title, page);
    layout = new Layout(box);
    return box;
}

template <class Array, std::size_t Count>
void placeTypes(const Array &boxes, const std::array<const char *, Count> &captions, QGridLayout *grid, int columns)
{
    int place = 0;
    for (QCheckBox *box : boxes) {
        box->setText(QLatin1String(captions[std::size_t(place)]));
        grid->addWidget(box, place / columns, place % columns);
        ++place;
    }
    for (int column = 0; column < columns; ++column)
        grid->setColumnStretch(column, 1);
}

void placeQuality(QGridLayout *grid, int row, const QString &caption, QLineEdit *text, QSpinBox *spin)
{
    auto *label = new QLabel(caption, text->parentWidget());
    label->setBuddy(text);
    QString name = caption;
    name.remove(u'&');
    text->setAccessibleName(name);
    text->setInputMethodHints(Qt::ImhDigitsOnly);
    text->setMaxLength(8);
    text->setMaximumWidth(text->fontMetrics().horizontalAdvance(QStringLiteral("0000000000")));
    spin->setRange(1, 100);
    spin->setValue(100);
    spin->setAccessibleName(name);
    // Only the arrows: the number stands in the field beside them.
    spin->setFocusPolicy(Qt::NoFocus);
    spin->setFixedWidth(spin->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 6);
    auto *pair = new QHBoxLayout;
    pair->setSpacing(0);
    pair->addWidget(text);
    pair->addWidget(spin);
    grid->addWidget(label, row, 0);
    grid->addLayout(pair, row, 1);
}
}

void frmPreferences::makeTabs()
{
    auto *rows = new QVBoxLayout(this);
    SSTab1->addTab(makeThumbnailPage(), tr("Thumbnail Options"));
    SSTab1->addTab(makeQualityPage(), tr("Quality / Size Options"));
    SSTab1->addTab(makeFileTypesPage(), tr("Select File Types"));
    SSTab1->addTab(new QWidget, tr("Associate File Types"));
    SSTab1->addTab(makeSummaryPage(), tr("Information Summary"));
    SSTab1->addTab(makeFolderPage(), tr("Default Folder Options"));
    // Until there is something on it. Ctrl+Tab stops at a hidden tab that is enabled.
    SSTab1->setTabVisible(AssociateFileTypes, false);
    SSTab1->setTabEnabled(AssociateFileTypes, false);
    SSTab1->setAccessibleName(tr("Groups of options"));
    rows->addWidget(SSTab1);

    cmdOK->setText(tr("&OK"));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    rows->addLayout(buttons);
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setAutoDefault(false);
    cmdOK->setDefault(true);
    const int allTabs = SSTab1->tabBar()->sizeHint().width() + 40;
    resize(sizeHint().expandedTo({qMax(760, allTabs), 500}).boundedTo(screen()->availableSize() - QSize(16, 48)));
}

QWidget *frmPreferences::makeThumbnailPage()
{
    auto *page = new QWidget(this);
    auto *rows = new QVBoxLayout(page);
    auto *columns = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    auto *right = new QVBoxLayout;
    rows->addLayout(columns);
    rows->addStretch();

    QGridLayout *look = nullptr;
    QGroupBox *lookBox = group(tr("Thumbnail Size"), page, look);
    sldThumbNailSize->setOrientation(Qt::Horizontal);
    sldThumbNailSize->setRange(60, 200);
    sldThumbNailSize->setSingleStep(10);
    sldThumbNailSize->setPageStep(20);
    sldThumbNailSize->setTickInterval(10);
    sldThumbNailSize->setTickPosition(QSlider::TicksBelow);
    sldThumbNailSize->setAccessibleName(tr("Thumbnail Size"));
    lblThumbNailSizeValue->setAlignment(Qt::AlignCenter);
    chkThumbNailStyle->setText(tr(" Style"));
    chkThumbNailStyle->setAccessibleName(tr("Thumbnail Style"));
    chkThumbNailStyle->setToolTip(tr("Draws a raised frame around each thumbnail"));
    lblThumbnailBackgroundColor->setText(tr("&Background Color..."));
    look->addWidget(sldThumbNailSize, 0, 0);
    look->addWidget(lblThumbNailSizeValue, 1, 0);
    look->addWidget(chkThumbNailStyle, 2, 0);
    look->addWidget(lblThumbnailBackgroundColor, 3, 0, Qt::AlignLeft);
    look->setRowStretch(4, 1);

    QVBoxLayout *sample = nullptr;
    QGroupBox *sampleBox = group(tr("Sample"), page, sample);
    Image1->setFixedSize(200, 200);
    Image1->setAlignment(Qt::AlignCenter);
    Image1->setAccessibleName(tr("Sample thumbnail of the current picture"));
    sample->addWidget(Image1, 0, Qt::AlignCenter);

    QGridLayout *compression = nullptr;
    QGroupBox *compressionBox = group(tr("Thumbnail Compression"), page, compression);
    const QString captions[] = {tr("Uncompressed"), tr("Standard Compression"), tr("High Compression")};
    const QString encodings[] = {
        tr("Uses Windows Bitmap Encoding"), tr("Uses JPEG Encoding"), tr("Uses JPEG 2000 Encoding")};
    for (int i = 0; i <= 2; ++i) {
        optThumbnailCompression[i]->setText(captions[i]);
        optThumbnailCompression[i]->setAccessibleDescription(encodings[i]);
        compression->addWidget(optThumbnailCompression[i], i, 0);
        compression->addWidget(new QLabel(encodings[i], compressionBox), i, 1);
    }
    compression->setColumnStretch(1, 1);

    QVBoxLayout *cache = nullptr;
    QGroupBox *cacheBox = group(tr("Thumbnail Cache"), page, cache);
    chkCacheThumbnails->setText(tr("Create and Cache Thumbnails in Thumbnail Viewer"));
    chkOverWriteThumbnails->setText(tr("Overwrite thumbnails already in cache"));
    cache->addWidget(chkCacheThumbnails);
    cache->addWidget(chkOverWriteThumbnails);

    QVBoxLayout *screen = nullptr;
    QGroupBox *screenBox = group(tr("Screen Options"), page, screen);
    screenBox->setObjectName(QStringLiteral("lblScreenOptions"));
    chkStretch->setText(tr("Stretc&h Viewer Image"));
    screen->addWidget(chkStretch);
    screen->addStretch();
    auto *menuBox = new MenuBackgroundBox(page);

    left->addWidget(lookBox, 1);
    left->addWidget(compressionBox);
    left->addWidget(menuBox);
    right->addWidget(sampleBox);
    right->addWidget(cacheBox);
    right->addWidget(screenBox, 1);
    columns->addLayout(left, 1);
    columns->addLayout(right);
    chainTabs({optThumbnailCompression[2], menuBox->cmdMenuPicture, menuBox->cmdNoMenuPicture,
        menuBox->cmdPreviousPattern, menuBox->cmdNextPattern, chkCacheThumbnails, chkOverWriteThumbnails, chkStretch});
    return new PageArea(page);
}

QWidget *frmPreferences::makeQualityPage()
{
    auto *page = new QWidget(this);
    auto *grid = new QGridLayout(page);

    QGridLayout *quality = nullptr;
    QGroupBox *qualityBox = group(tr("Save Quality"), page, quality);
    placeQuality(quality, 0, tr("&JPEG Quality:"), txtJPGQuality, udJPGQuality);
    placeQuality(quality, 1, tr("JPEG &2000 Quality:"), txtJPG2000Quality, udJPG2000Quality);
    quality->addWidget(new QLabel(tr("Value Range (1-100)"), qualityBox), 0, 2);
    quality->addWidget(new QLabel(tr("Value Range (1-100)"), qualityBox), 1, 2);
    chkJPGFastSaves->setText(tr("JPEG Fast Saves"));
    quality->addWidget(chkJPGFastSaves, 2, 0, 1, 3);
    quality->addWidget(
        helpText(tr("JPEG and JPEG 2000 Save Quality settings of the save value DO NOT result in the same "
                    "image quality."),
            qualityBox),
        3, 0, 1, 3);
    quality->setColumnStretch(2, 1);
    quality->setRowStretch(4, 1);

    QVBoxLayout *sizes = nullptr;
    QGroupBox *sizesBox = group(tr("Photo CD Size"), page, sizes);
    for (int i = 0; i <= 4; ++i) {
        optPhotoCDSize[i]->setText(QLatin1String(photoCDSizeCaptions[std::size_t(i)]));
        sizes->addWidget(optPhotoCDSize[i]);
    }
    sizes->addStretch();

    QGridLayout *diffuse = nullptr;
    QGroupBox *diffuseBox = group(tr("Diffuse 1bit b/w file saves:"), page, diffuse);
    chkDiffusePBM->setText(tr("for (*.PBM)"));
    chkDiffusePGM->setText(tr("for (*.PGM)"));
    chkDiffuseWBMP->setText(tr("for (*.WBMP)"));
    chkDiffuseXBM->setText(tr("for (*.XBM)"));
    chkDiffuseXPM->setText(tr("for (*.XPM)"));
    int column = 0;
    for (QCheckBox *box : {chkDiffusePBM, chkDiffusePGM, chkDiffuseWBMP, chkDiffuseXBM, chkDiffuseXPM}) {
        box->setAccessibleName(diffuseBox->title() + QLatin1Char(' ') + box->text());
        diffuse->addWidget(box, 0, column++);
    }
    diffuse->addWidget(helpText(tr("Diffuse 1bit b/w file saves results in a more even image when saving from a "
                                   "previously color image."),
                           diffuseBox),
        1, 0, 1, 5);

    grid->addWidget(qualityBox, 0, 0);
    grid->addWidget(sizesBox, 0, 1);
    grid->addWidget(diffuseBox, 1, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setRowStretch(2, 1);
    return new PageArea(page);
}

QWidget *frmPreferences::makeTypeButtons()
{
    auto *row = new QWidget(this);
    auto *columns = new QGridLayout(row);
    columns->setContentsMargins({});
    cmdMicrosoftFormats->setText(tr("&Microsoft Formats"));
    cmdWebFormats->setText(tr("&Web Formats"));
    cmdPortableFormats->setText(tr("&PortableFormats"));
    cmdDigitalCameraFormats->setText(tr("&Digital Camera Formats"));
    cmdSelectAllTypes->setText(tr("Select All &Types"));
    cmdClearAllTypes->setText(tr("C&lear All Types"));
    cmdInvertSelections->setText(tr("&Invert Selections"));
    int place = 0;
    for (QPushButton *button : {cmdMicrosoftFormats, cmdWebFormats, cmdPortableFormats, cmdDigitalCameraFormats,
             cmdSelectAllTypes, cmdClearAllTypes, cmdInvertSelections}) {
        columns->addWidget(button, place / 4, place % 4);
        ++place;
    }
    return row;
}

QWidget *frmPreferences::makeFileTypesPage()
{
    auto *page = new QWidget(this);
    auto *rows = new QVBoxLayout(page);

    QVBoxLayout *pictures = nullptr;
    QGroupBox *picturesBox = group(tr("Picture Types"), page, pictures);
    auto *fileTypes = new QGridLayout;
    placeTypes(chkFileType, fileTypeCaptions, fileTypes, 11);
    auto *polyTypes = new QGridLayout;
    placeTypes(chkPolyFileType, polyFileTypeCaptions, polyTypes, 11);
    pictures->addLayout(fileTypes);
    auto *line = new QFrame(picturesBox);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    pictures->addWidget(line);
    pictures->addLayout(polyTypes);
    pictures->addSpacing(6);
    pictures->addWidget(makeTypeButtons());

    QVBoxLayout *audio = nullptr;
    QGroupBox *audioBox = group(tr("Audio and Video Types"), page, audio);
    auto *audioTypes = new QGridLayout;
    placeTypes(chkAVFileType, avFileTypeCaptions, audioTypes, 2);
    audio->addLayout(audioTypes);
    cmdSelectAllAudioTypes->setText(tr("Select &All Audio Types"));
    cmdClearAllAudioTypesCommand3->setText(tr("&Clear All Audio Types"));
    cmdInvertSelectionsAudio->setText(tr("I&nvert Audio Selections"));
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {cmdSelectAllAudioTypes, cmdClearAllAudioTypesCommand3, cmdInvertSelectionsAudio})
        buttons->addWidget(button);
    audio->addSpacing(6);
    audio->addLayout(buttons);

    QVector<QWidget *> order;
    for (QCheckBox *box : chkFileType)
        order.append(box);
    for (QCheckBox *box : chkPolyFileType)
        order.append(box);
    order.append({cmdMicrosoftFormats, cmdWebFormats, cmdPortableFormats, cmdDigitalCameraFormats, cmdSelectAllTypes,
        cmdClearAllTypes, cmdInvertSelections});
    for (QCheckBox *box : chkAVFileType)
        order.append(box);
    chainTabs(order);

    rows->addWidget(picturesBox);
    rows->addWidget(audioBox);
    rows->addStretch();
    return new PageArea(page);
}

QWidget *frmPreferences::makeSummaryPage()
{
    auto *page = new QWidget(this);
    auto *rows = new QVBoxLayout(page);
    QVBoxLayout *counting = nullptr;
    QGroupBox *countingBox = group(tr("Information Summary"), page, counting);
    chkCountFileTypes->setText(tr("Count File Types"));
    chkCountFileSize->setText(tr("Count File Size"));
    chkCountFileColorDepth->setText(tr("Count File Color Depth"));
    for (QCheckBox *box : {chkCountFileTypes, chkCountFileSize, chkCountFileColorDepth})
        counting->addWidget(box);
    counting->addWidget(helpText(tr("Enabling 'Count File Count Depth' will slow down the scan since each file MUST be "
                                    "loaded to obtain the color informtion."),
        countingBox));
    cmdFileSummary->setText(tr("Gra&phic Image File Information Summary"));
    cmdFileSummary->setVisible(false); // its window is not part of this build
    rows->addWidget(countingBox);
    rows->addWidget(cmdFileSummary, 0, Qt::AlignLeft);
    rows->addStretch();
    return new PageArea(page);
}

QWidget *frmPreferences::makeFolderPage()
{
    auto *page = new QWidget(this);
    auto *rows = new QVBoxLayout(page);
    QGridLayout *folder = nullptr;
    QGroupBox *folderBox = group(tr("Default Open Folder:"), page, folder);
    optDefaultOpenFolder[1]->setText(tr("Use Last Opened Folder"));
    optDefaultOpenFolder[2]->setText(tr("Use This Folder"));
    txtImageFolder->setAccessibleName(tr("Default Open Folder"));
    cmdBrowse->setText(tr("&Browse..."));
    folder->addWidget(optDefaultOpenFolder[1], 0, 0, 1, 2);
    folder->addWidget(optDefaultOpenFolder[2], 1, 0, 1, 2);
    folder->addWidget(txtImageFolder, 2, 0);
    folder->addWidget(cmdBrowse, 2, 1);
    lblFolderNote->setWordWrap(true);
    folder->addWidget(lblFolderNote, 3, 0, 1, 2);
    rows->addWidget(folderBox);
    rows->addStretch();
    return new PageArea(page);
}
