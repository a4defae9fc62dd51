#pragma once

#include "ui/controls.h"
#include "ui/form.h"
#include "ui/pathlabel.h"
#include "viewer/drivelist.h"
#include "viewer/foldertree.h"

#include <QLabel>
#include <QPushButton>

/// The folder picker of conversion, copy and move, modal by exec(). Its result is `lblDirectoryName->text()`: the
/// folder with a separator at its end, empty after Cancel. Callers may set the title before they show it.
class frmSelectBatchDir : public FormDialog
{
    Q_OBJECT
public:
    explicit frmSelectBatchDir(QWidget *parent = nullptr);

    CONTROL(Drive1, DriveList);
    CONTROL(Dir1, FolderTree);
    CONTROL(lblDirectoryName, PathLabel);
    CONTROL_ARRAY(lblFileInfo, QLabel, 0, 3); ///< captions of the three above, and what the folder's volume has free
    CONTROL(cmdCreateDirectory, QPushButton);
    CONTROL(cmdOK, QPushButton);
    CONTROL(cmdCancel, QPushButton);

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;

    void Drive1_Change();
    void Dir1_Change();
    void cmdCreateDirectory_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void layOut();
    void openFolder(const QString &folder);
    void openStartFolder();
    void showFreeSpace();

    bool m_opened = false; ///< since it was shown, the start folder has been picked
};
