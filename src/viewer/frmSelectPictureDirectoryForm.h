#pragma once

#include "ui/controls.h"
#include "ui/form.h"
#include "ui/listbox.h"
#include "viewer/drivelist.h"
#include "viewer/foldertree.h"
#include "viewer/preview.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

class QLayout;

/// The folder dialog, modal by exec(). Its result is `ChosenFolder` of the globals: the folder with a separator at its
/// end, empty after Cancel.
class frmSelectPictureDirectoryForm : public FormDialog
{
    Q_OBJECT
public:
    explicit frmSelectPictureDirectoryForm(QWidget *parent = nullptr);

    CONTROL(lblInfo, QLabel);
    CONTROL_ARRAY(cmdFolder, QToolButton, 0, 3);
    CONTROL_ARRAY(lblButtons, QLabel, 0, 3);
    CONTROL(Drive1, DriveList);
    CONTROL(Dir1, FolderTree);
    CONTROL(File1, ListBox);
    CONTROL(imgThumbnail, QLabel);
    CONTROL(lblFileName, QLabel);
    CONTROL_ARRAY(lblFileInfo, QLabel, 0, 3);
    CONTROL(lblColors, QLabel);
    CONTROL(lblWidth, QLabel);
    CONTROL(lblFileSize, QLabel);
    CONTROL(lblHeight, QLabel);
    CONTROL(chkSearchSubs, QCheckBox);
    CONTROL(lblSearchSubFolders, QLabel);
    CONTROL(cmdSelectFileTypes, QPushButton);
    CONTROL(cmdOK, QPushButton);
    CONTROL(cmdCancel, QPushButton);

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;

    void Drive1_Change();
    void Dir1_Change();
    void File1_Click();
    void cmdFolder_Click(int index);
    void lblSearchSubFolders_Click();
    void cmdSelectFileTypes_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    /// The folder behind a jump button.
    static QString jumpFolder(int index);

    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLayout *makeJumpButtons();
    QLayout *makeFolderColumn();
    QLayout *makeFileColumn();
    QWidget *makePreview();
    QLayout *makeButtonRow();
    void placeFocus();
    void connectControls();
    void openStartFolder();
    bool openFolder(const QString &folder);
    void clearPreview();
    void showPreview(const FilePreview &preview);

    bool m_started = false; ///< the start folder has been picked
};
