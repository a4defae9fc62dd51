#pragma once

#include <QString>

class QWidget;

/// Paints the gradient of a colour scheme behind a window's controls, now and at each later paint.
void PaintFormBackground(QWidget *window, const QString &scheme);

/// Compares the colour menu's value with 1 to 6; each has nothing to do.
void ApplyColorMenu(int value);
