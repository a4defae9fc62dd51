#pragma once

#include "ui/form.h"

/// The Browse Folder Viewer. When the program was started on it, closing it ends the program; else the Main Viewer
/// comes back.
class frmBrowseFolder : public FormMainWindow
{
    Q_OBJECT
public:
    explicit frmBrowseFolder(QWidget *parent = nullptr);

    void Form_Unload() override;
};
