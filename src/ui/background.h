#pragma once

#include <QColor>
#include <QString>
#include <QVector>

class QWidget;

/// Paints the gradient of a colour scheme behind a window's controls, now and at each later paint, and gives labels,
/// boxes and groups that stand on it a text colour that can be read there. An unknown name paints nothing.
void PaintFormBackground(QWidget *window, const QString &scheme);

/// Compares the colour menu's value with 1 to 6; each has nothing to do.
void ApplyColorMenu(int value);

/// Contrast of two colours, 1 to 21, by the relative luminance of WCAG 2.1.
double contrast(QRgb a, QRgb b);
/// `wanted` when it can be read on all `grounds` (contrast 4.5), else black or white, whichever can be read better.
QColor readableOn(const QVector<QRgb> &grounds, const QColor &wanted);
