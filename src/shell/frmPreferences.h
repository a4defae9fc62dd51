#pragma once

#include "engine/loadedpicture.h"
#include "ui/controls.h"
#include "ui/form.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>

#include <bitset>
#include <functional>
#include <initializer_list>
#include <memory>

/// The window of options. It stays loaded for the life of the program: a control's state is the live value of its
/// option, and each change is written at once by the control's own handler.
class frmPreferences : public FormDialog
{
    Q_OBJECT
public:
    explicit frmPreferences(QWidget *parent = nullptr);

    enum Tab { ThumbnailOptions, QualityOptions, FileTypes, AssociateFileTypes, InformationSummary, DefaultFolder };
    CONTROL(SSTab1, QTabWidget);

    // Thumbnail Options
    CONTROL(sldThumbNailSize, QSlider);
    CONTROL(lblThumbNailSizeValue, QLabel);
    CONTROL(chkThumbNailStyle, QCheckBox);
    CONTROL(lblThumbnailBackgroundColor, QPushButton);
    CONTROL(Image1, QLabel);
    CONTROL_ARRAY(optThumbnailCompression, QRadioButton, 0, 2);
    CONTROL(chkCacheThumbnails, QCheckBox);
    CONTROL(chkOverWriteThumbnails, QCheckBox);
    CONTROL(chkStretch, QCheckBox);

    // Quality / Size Options
    CONTROL(txtJPGQuality, QLineEdit);
    CONTROL(udJPGQuality, QSpinBox);
    CONTROL(txtJPG2000Quality, QLineEdit);
    CONTROL(udJPG2000Quality, QSpinBox);
    CONTROL(chkJPGFastSaves, QCheckBox);
    CONTROL_ARRAY(optPhotoCDSize, QRadioButton, 0, 4);
    CONTROL(chkDiffusePBM, QCheckBox);
    CONTROL(chkDiffusePGM, QCheckBox);
    CONTROL(chkDiffuseWBMP, QCheckBox);
    CONTROL(chkDiffuseXBM, QCheckBox);
    CONTROL(chkDiffuseXPM, QCheckBox);

    // Select File Types
    CONTROL_ARRAY(chkFileType, QCheckBox, 1, 29);
    CONTROL_ARRAY(chkPolyFileType, QCheckBox, 1, 21);
    CONTROL_ARRAY(chkAVFileType, QCheckBox, 0, 9);
    CONTROL(cmdMicrosoftFormats, QPushButton);
    CONTROL(cmdWebFormats, QPushButton);
    CONTROL(cmdPortableFormats, QPushButton);
    CONTROL(cmdDigitalCameraFormats, QPushButton);
    CONTROL(cmdSelectAllTypes, QPushButton);
    CONTROL(cmdClearAllTypes, QPushButton);
    CONTROL(cmdInvertSelections, QPushButton);
    CONTROL(cmdSelectAllAudioTypes, QPushButton);
    CONTROL(cmdClearAllAudioTypesCommand3, QPushButton);
    CONTROL(cmdInvertSelectionsAudio, QPushButton);

    // Associate File Types
    CONTROL_ARRAY(chkAssocFileType, QCheckBox, 1, 61); ///< without the one in the middle, missingAssociationBox
    CONTROL(cmdAssocSelectAll, QPushButton);
    CONTROL(cmdAssocClearAll, QPushButton);
    CONTROL(cmdAssocInvertAll, QPushButton);
    CONTROL(cmdMakeAssoc, QPushButton);

    // Information Summary
    CONTROL(chkCountFileTypes, QCheckBox);
    CONTROL(chkCountFileSize, QCheckBox);
    CONTROL(chkCountFileColorDepth, QCheckBox);
    CONTROL(cmdFileSummary, QPushButton);

    // Default Folder Options
    CONTROL_ARRAY(optDefaultOpenFolder, QRadioButton, 1, 2);
    CONTROL(txtImageFolder, QLineEdit);
    CONTROL(cmdBrowse, QPushButton);
    CONTROL(lblFolderNote, QLabel); ///< says that the folder is not there

    CONTROL(cmdOK, QPushButton);

    /// A box of the associations was changed since they were set; until then the boxes keep what was chosen.
    bool AssociationsChanged = false;
    /// Sounds for each type that has no owner any more; tests count.
    std::function<void()> beep;
    /// Up while the settings are moved into the controls: handlers show what changed and write nothing.
    bool LoadingSettings = false;

    /// The back colour of lblThumbnailBackgroundColor.
    QColor thumbnailBackColor() const;
    void setThumbnailBackColor(const QColor &color);

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;

    void cmdOK_Click();
    void cmdBrowse_Click();
    void lblThumbnailBackgroundColor_Click();
    /// Shows the size and builds the sample from the picture that `Picture1` of the support window holds.
    void sldThumbNailSize_Change();
    void cmdClearAllTypes_Click();
    /// Writes the associations, tells the desktop, and says so.
    void cmdMakeAssoc_Click();
    void optDefaultOpenFolder_Click();
    /// Puts a quality field that was left with no number of its range back into it.
    void txtJPGQuality_LostFocus();
    void txtJPG2000Quality_LostFocus();

    /// Escape behaves as cmdOK.
    void reject() override { cmdOK_Click(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeTabs();
    QWidget *makeThumbnailPage();
    QWidget *makeQualityPage();
    QWidget *makeFileTypesPage();
    QWidget *makeAssociationsPage();
    QWidget *makeSummaryPage();
    QWidget *makeFolderPage();
    QWidget *makeTypeButtons();
    void connectHandlers();
    void connectTypeButtons();
    void connectAssociations();
    void readAssociations();
    void showDesktopTypes();
    /// False when the window has gone meanwhile.
    bool offerAssociations();
    void connectQuality(QLineEdit *text, QSpinBox *spin);
    void writeBox(QCheckBox *box, const char *key);
    void writeOption(const char *key, const QString &value);
    void setTypes(std::initializer_list<int> fileTypes, std::initializer_list<int> polyFileTypes);
    void showStoredFolder();
    void showFolderNote();
    /// What the sample is made of: the picture of `Picture1`, no larger than `side` pixels.
    std::shared_ptr<const LoadedPicture> sampleSource(int side);
    /// The controls that nothing else writes when they change.
    void storeChanges();
    void storeQuality(QLineEdit *text, const char *key);
    std::weak_ptr<const LoadedPicture> m_sampleOf;
    std::shared_ptr<const LoadedPicture> m_sample;
    int m_sampleSide = 0;
    QColor m_thumbnailBackColor = Qt::black;
    int m_page = 0; ///< of SSTab1, that was shown last
    std::bitset<62> m_chosenBoxes; ///< of the associations, by index: those that were changed since they were read
};

/// The number at the beginning of a text, as a field is read: 0 when there is none.
double leadingNumber(const QString &text);

/// A colour as the settings keep it: one number with red in the low byte.
int colorNumber(const QColor &color);
QColor colorFromNumber(int number);
