#include "shell/frmPreferences.h"

#include "actions/frmSelectBatchDir.h"
#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/registrystore.h"
#include "ui/background.h"
#include "ui/guards.h"

#include <QEvent>
#include <QPainter>
#include <QRegularExpression>

namespace {
constexpr int smallestThumbnail = 60;
constexpr int thumbnailStep = 10;
constexpr int JP2Box = 15;

int checkedIndex(const auto &buttons, int first)
{
    int index = first;
    for (const QRadioButton *button : buttons) {
        if (button->isChecked())
            return index;
        ++index;
    }
    return first;
}

void invert(const auto &boxes)
{
    for (QCheckBox *box : boxes)
        box->setChecked(!box->isChecked());
}

void setAll(const auto &boxes, bool on)
{
    for (QCheckBox *box : boxes)
        box->setChecked(on);
}

void bringIntoRange(QLineEdit *text)
{
    const double value = leadingNumber(text->text());
    if (value < 1)
        text->setText(QStringLiteral("1"));
    else if (value > 100)
        text->setText(QStringLiteral("100"));
}
}

double leadingNumber(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*[+-]?(\\d+\\.?\\d*|\\.\\d+)"));
    return pattern.match(text).captured().trimmed().toDouble();
}

int colorNumber(const QColor &color)
{
    return color.red() | color.green() << 8 | color.blue() << 16;
}

QColor colorFromNumber(int number)
{
    return QColor(number & 255, number >> 8 & 255, number >> 16 & 255);
}

frmPreferences::frmPreferences(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Preferences"));
    makeTabs();
}

void frmPreferences::Form_Load()
{
    setAll(chkFileType, true);
    setAll(chkPolyFileType, true);
    setAll(chkAVFileType, true);
    for (QCheckBox *box :
        {chkThumbNailStyle, chkCacheThumbnails, chkCountFileTypes, chkCountFileSize, chkCountFileColorDepth})
        box->setChecked(true);
    optThumbnailCompression[1]->setChecked(true);
    optPhotoCDSize[2]->setChecked(true);
    optDefaultOpenFolder[1]->setChecked(true);
    sldThumbNailSize->setValue(100);
    txtJPGQuality->setText(QStringLiteral("100"));
    txtJPG2000Quality->setText(QStringLiteral("100"));
    setThumbnailBackColor(Qt::black);
    optDefaultOpenFolder_Click();
    connectHandlers();
}

void frmPreferences::Form_Activate()
{
    if (const auto level = number(option("ThumbnailCompressionLevel", "1")); level && *level >= 0 && *level <= 2) {
        const ScopedFlag showing(LoadingSettings);
        optThumbnailCompression[*level]->setChecked(true);
    }
    for (QLineEdit *quality : {txtJPGQuality, txtJPG2000Quality}) {
        if (quality->text().isEmpty())
            quality->setText(QStringLiteral("100"));
    }
    showStoredFolder();
    sldThumbNailSize_Change();
    readAssociations();
    if (GetMediaKind(globals.CurrentMediaFile) != kindMotion) {
        form<checkjpg>().Picture1.setPicture(form<checkjpg>().Gvbox2.picture());
        sldThumbNailSize_Change();
    }
    PaintFormBackground(this, QStringLiteral("OTHER"));
}

// With "Use Last Opened Folder" the box shows that folder, and it becomes the stored choice too.
void frmPreferences::showStoredFolder()
{
    const int choice = number(option("DefaultOpenFolder", "1")).value_or(0);
    if (choice == 1 || choice == 2) {
        const ScopedFlag showing(LoadingSettings);
        optDefaultOpenFolder[choice]->setChecked(true);
    }
    if (optDefaultOpenFolder[1]->isChecked()) {
        const QString last = GetSetting({}, QStringLiteral("Options"), QStringLiteral("LastVisitedFolder"),
            form<checkjpg>().WindowsSystemFolders1.desktop());
        txtImageFolder->setText(last);
    }
    saveOption("UserChoiceOpenFolder", txtImageFolder->text());
    showFolderNote();
}

void frmPreferences::Form_QueryUnload(bool &cancel)
{
    if (globals.ProgramExiting)
        return;
    cancel = true;
    cmdOK_Click();
}

void frmPreferences::cmdOK_Click()
{
    if (!offerAssociations())
        return;
    // Enter leaves the focus in a field.
    bringIntoRange(txtJPGQuality);
    bringIntoRange(txtJPG2000Quality);
    AssociationsChanged = false;
    hide();
}

void frmPreferences::cmdBrowse_Click()
{
    const QPointer<frmPreferences> self(this);
    auto &picker = form<frmSelectBatchDir>();
    const QString usualTitle = picker.windowTitle();
    picker.setParent(this, picker.windowFlags());
    picker.setWindowTitle(tr("Default Open Folder:"));
    picker.exec();
    if (!self || globals.ProgramExiting || !isLoaded<frmSelectBatchDir>())
        return;
    form<frmSelectBatchDir>().setWindowTitle(usualTitle);
    const QString folder = form<frmSelectBatchDir>().lblDirectoryName->text();
    if (folder.isEmpty()) // cancelled
        return;
    txtImageFolder->setText(folder);
    writeOption("UserChoiceOpenFolder", folder);
    showFolderNote();
}

// Whoever opens a folder that is not there stays where it is: no reason to refuse a drive that is away today. Nor to
// wait for one while the program starts.
void frmPreferences::showFolderNote()
{
    if (LoadingSettings)
        return;
    const bool missing = optDefaultOpenFolder[2]->isChecked() && !folderExists(txtImageFolder->text());
    lblFolderNote->setText(
        missing ? tr("This folder is not there now. Until it is, dialogs begin in another one.") : QString());
}

void frmPreferences::optDefaultOpenFolder_Click()
{
    const bool own = optDefaultOpenFolder[2]->isChecked();
    txtImageFolder->setEnabled(own);
    cmdBrowse->setEnabled(own);
    showFolderNote();
}

QColor frmPreferences::thumbnailBackColor() const
{
    return m_thumbnailBackColor;
}

void frmPreferences::setThumbnailBackColor(const QColor &color)
{
    m_thumbnailBackColor = color;
    QPixmap swatch(32, 16);
    swatch.fill(color);
    QPainter(&swatch).drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    lblThumbnailBackgroundColor->setIcon(swatch);
    lblThumbnailBackgroundColor->setIconSize(swatch.size());
    lblThumbnailBackgroundColor->setAccessibleDescription(color.name());
    sldThumbNailSize_Change();
}

void frmPreferences::lblThumbnailBackgroundColor_Click()
{
    const auto color = dialogs().chooseColor(this, m_thumbnailBackColor);
    if (!color)
        return;
    setThumbnailBackColor(*color);
    writeOption("ThumbnailBackGroundColor", QString::number(colorNumber(*color)));
}

void frmPreferences::cmdClearAllTypes_Click()
{
    setAll(chkFileType, false);
    setAll(chkPolyFileType, false);
}

void frmPreferences::txtJPGQuality_LostFocus()
{
    bringIntoRange(txtJPGQuality);
}

void frmPreferences::txtJPG2000Quality_LostFocus()
{
    bringIntoRange(txtJPG2000Quality);
}

bool frmPreferences::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        if (watched == txtJPGQuality)
            txtJPGQuality_LostFocus();
        else if (watched == txtJPG2000Quality)
            txtJPG2000Quality_LostFocus();
    }
    return FormDialog::eventFilter(watched, event);
}

void frmPreferences::writeOption(const char *key, const QString &value)
{
    if (!LoadingSettings)
        saveOption(key, value);
}

void frmPreferences::writeBox(QCheckBox *box, const char *key)
{
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) { writeOption(key, QString::number(int(on))); });
}

void frmPreferences::connectHandlers()
{
    writeBox(chkThumbNailStyle, "ThumbnailStyle");
    writeBox(chkCacheThumbnails, "CacheThumbnails");
    writeBox(chkOverWriteThumbnails, "OverWriteCacheThumbnails");
    writeBox(chkJPGFastSaves, "JPEGFastSave");
    writeBox(chkDiffusePBM, "DiffusePBM");
    writeBox(chkDiffusePGM, "DiffusePGM");
    writeBox(chkDiffuseWBMP, "DiffuseWBMP");
    writeBox(chkDiffuseXBM, "DiffuseXBM");
    writeBox(chkDiffuseXPM, "DiffuseXPM");
    connect(chkThumbNailStyle, &QCheckBox::toggled, this, &frmPreferences::sldThumbNailSize_Change);
    connect(
        lblThumbnailBackgroundColor, &QPushButton::clicked, this, &frmPreferences::lblThumbnailBackgroundColor_Click);

    const auto writeSize = [this] { writeOption("ThumbnailSize", QString::number(sldThumbNailSize->value())); };
    connect(sldThumbNailSize, &QSlider::valueChanged, this, [this, writeSize](int value) {
        const int step = (value - smallestThumbnail + thumbnailStep / 2) / thumbnailStep;
        const int onStep = smallestThumbnail + step * thumbnailStep;
        if (onStep != value) {
            sldThumbNailSize->setValue(onStep);
            return;
        }
        sldThumbNailSize_Change();
        if (!sldThumbNailSize->isSliderDown()) // a drag writes once, at its end
            writeSize();
    });
    connect(sldThumbNailSize, &QSlider::sliderReleased, this, writeSize);

    for (QRadioButton *button : optThumbnailCompression)
        connect(button, &QRadioButton::toggled, this, [this](bool on) {
            if (on)
                writeOption("ThumbnailCompressionLevel", QString::number(checkedIndex(optThumbnailCompression, 0)));
        });
    for (QRadioButton *button : optDefaultOpenFolder)
        connect(button, &QRadioButton::toggled, this, [this](bool on) {
            optDefaultOpenFolder_Click();
            if (on)
                writeOption("DefaultOpenFolder", QString::number(checkedIndex(optDefaultOpenFolder, 1)));
        });
    connect(txtImageFolder, &QLineEdit::editingFinished, this, [this] {
        writeOption("UserChoiceOpenFolder", txtImageFolder->text());
        showFolderNote();
    });
    connect(cmdBrowse, &QPushButton::clicked, this, &frmPreferences::cmdBrowse_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmPreferences::cmdOK_Click);
    connectQuality(txtJPGQuality, udJPGQuality);
    connectQuality(txtJPG2000Quality, udJPG2000Quality);
    connectTypeButtons();
    connectAssociations();
    storeChanges();
}

// The text leads: a number of the range moves the spin control, which in turn writes whole numbers only when it is
// pressed.
void frmPreferences::connectQuality(QLineEdit *text, QSpinBox *spin)
{
    connect(text, &QLineEdit::textChanged, spin, [spin](const QString &typed) {
        const double value = leadingNumber(typed);
        const QSignalBlocker quiet(spin);
        if (value >= 1 && value <= 100)
            spin->setValue(int(value));
    });
    connect(spin, &QSpinBox::valueChanged, text, [text](int value) { text->setText(QString::number(value)); });
    text->installEventFilter(this);
}

void frmPreferences::setTypes(std::initializer_list<int> fileTypes, std::initializer_list<int> polyFileTypes)
{
    cmdClearAllTypes_Click();
    for (const int index : fileTypes)
        chkFileType[index]->setChecked(true);
    for (const int index : polyFileTypes)
        chkPolyFileType[index]->setChecked(true);
}

void frmPreferences::connectTypeButtons()
{
    // All boxes of a button are one change of the store.
    const auto onClick = [this](QPushButton *button, auto work) {
        connect(button, &QPushButton::clicked, this, [work] { ignore(registryStore().transaction(work)); });
    };
    onClick(cmdMicrosoftFormats, [this] { setTypes({2, 3, 5, 6, 8, 10, 13, 16, 25, 28}, {}); });
    onClick(cmdWebFormats, [this] { setTypes({8, 13, 21}, {}); });
    onClick(cmdPortableFormats, [this] { setTypes({17, 19, 21, 22, 23}, {}); });
    onClick(cmdDigitalCameraFormats, [this] {
        setTypes({13, 27}, {12, 13, 14, 15, 16, 17, 18, 19, 20, 21});
        chkPolyFileType[JP2Box]->setChecked(false); // a format of cameras by its place in the row only
    });
    onClick(cmdClearAllTypes, [this] { cmdClearAllTypes_Click(); });
    onClick(cmdSelectAllTypes, [this] {
        setAll(chkFileType, true);
        setAll(chkPolyFileType, true);
    });
    onClick(cmdInvertSelections, [this] {
        invert(chkFileType);
        invert(chkPolyFileType);
    });
    onClick(cmdSelectAllAudioTypes, [this] { setAll(chkAVFileType, true); });
    onClick(cmdClearAllAudioTypesCommand3, [this] { setAll(chkAVFileType, false); });
    onClick(cmdInvertSelectionsAudio, [this] { invert(chkAVFileType); });
}
