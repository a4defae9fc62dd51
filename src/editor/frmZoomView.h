#pragma once

#include "ui/form.h"

/// The window of the editor, Pixelon. When the program was started on the editor, closing it ends the program; else the
/// Main Viewer comes back.
class frmZoomView : public FormMainWindow
{
    Q_OBJECT
public:
    explicit frmZoomView(QWidget *parent = nullptr);

    void Form_Unload() override;
};
