#pragma once

#include "app/colorschemes.h"
#include "ui/controls.h"
#include "ui/form.h"

#include <QLabel>
#include <QScrollBar>

/// The colours of the scheme "OTHER": three scroll bars for the start colour, three for the end colour.
class frmGradient : public FormDialog
{
    Q_OBJECT
public:
    explicit frmGradient(QWidget *parent = nullptr);

    CONTROL(sldRed1, QScrollBar); ///< start colour
    CONTROL(sldGreen1, QScrollBar);
    CONTROL(sldBlue1, QScrollBar);
    CONTROL(sldRed2, QScrollBar); ///< end colour
    CONTROL(sldGreen2, QScrollBar);
    CONTROL(sldBlue2, QScrollBar);
    CONTROL(Picture1, QLabel);
    CONTROL(Picture2, QLabel);

    SchemeColors colors() const;
};
