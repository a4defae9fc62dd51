#pragma once

#include "actions/conversion.h"
#include "ui/controls.h"
#include "ui/form.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

class QLayout;

/// The options of batch conversion, modal by exec(). The controls are the options: the window only hides, and what it
/// says holds until the program ends.
class frmConvertFileType : public FormDialog
{
    Q_OBJECT
public:
    explicit frmConvertFileType(QWidget *parent = nullptr);

    CONTROL_ARRAY(optFileType, QCheckBox, 0, 22); ///< one per output format, by batch index
    CONTROL_ARRAY(lblFileType, QLabel, 0, 22);
    CONTROL(cmdSelectAllTypes, QPushButton);
    CONTROL(cmdClearAlTypesCommand, QPushButton);
    CONTROL(cmdInvertSelections, QPushButton);

    CONTROL_ARRAY(optWhichFiles, QRadioButton, 0, 1); ///< 0 the selected entries, 1 all
    CONTROL(chkOverWriteFiles, QCheckBox);
    CONTROL(lblOverWriteFiles, QLabel);
    CONTROL(chkOverwritePromptFirst, QCheckBox);
    CONTROL(lblOverwritePromptFirst, QLabel);
    CONTROL(chkDiffuseTwoColor, QCheckBox);
    CONTROL(lblDiffuseTwoColor, QLabel);
    CONTROL(chkGrayScale, QCheckBox);
    CONTROL(lblGrayScale, QLabel);
    CONTROL(chkGrayScale256, QCheckBox);
    CONTROL(lblGrayScale256, QLabel);
    CONTROL(chkAutoLevel, QCheckBox);
    CONTROL(lblAutoLevel, QLabel);
    CONTROL(chkAutoContrast, QCheckBox);
    CONTROL(lblAutoContrast, QLabel);
    CONTROL(chkEmoboss, QCheckBox);
    CONTROL(lblEmoboss, QLabel);

    CONTROL(chkUseImageFolder, QCheckBox);
    CONTROL(lblUseImageFolder, QLabel);
    CONTROL(txtImageFolder, QLineEdit); ///< takes no typing, only the arrow keys: cmdBrowse fills it
    CONTROL(cmdBrowse, QPushButton);
    CONTROL(chkAddConvertFolder, QCheckBox);
    CONTROL(lblAddConvertFolder, QLabel);
    CONTROL(chkCovertFolderForEachType, QCheckBox);
    CONTROL(lblCovertFolderForEachType, QLabel);

    CONTROL(cmdConvert, QPushButton);
    CONTROL(cmdCancel, QPushButton);

    bool Cancelled = false; ///< the dialog was cancelled; whoever has asked resets it

    /// What the controls say now, with those of frmPreferences that take part.
    ConversionOptions options() const;

    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;

    void cmdSelectAllTypes_Click();
    void cmdClearAlTypesCommand_Click();
    void cmdInvertSelections_Click();
    void chkGrayScale_Click();
    void chkAddConvertFolder_Click();
    void chkUseImageFolder_Click();
    void cmdBrowse_Click();
    void cmdConvert_Click();
    void cmdCancel_Click();

    void reject() override { cmdCancel_Click(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct LabelledBox
    {
        QCheckBox *box;
        QLabel *label;
    };
    void label(QCheckBox *box, QLabel *label, const QString &text);
    QLayout *pair(QCheckBox *box, int indent = 0) const;
    QLabel *labelOf(const QCheckBox *box) const;
    void setTexts();
    void layOut();
    QGroupBox *makeTypes();
    QGroupBox *makeOptions();
    QGroupBox *makeImageFolders();
    QGroupBox *makeConvertFolders();
    void setTabs();
    void connectControls();
    void enable(QCheckBox *box, bool on);

    QVector<LabelledBox> m_boxes;
};
