#pragma once

#include <QColor>
#include <QString>
#include <QVector>

/// Gradient backgrounds of windows: a scheme's name chooses the colours.
struct SchemeColors
{
    int startRed = 0, startGreen = 0, startBlue = 0;
    int endRed = 0, endGreen = 0, endBlue = 0;
    bool operator==(const SchemeColors &) const = default;
};

/// Flag of a scheme's name, without regard to case: a power of two in the order of the fifteen names; 0 when unknown.
int schemeFlag(const QString &name);

/// Colours of the bands for y = 0, 2, 4 ... up to `height`; empty for an unknown name or a height of 0. `other` are the
/// colours of "OTHER".
QVector<QRgb> schemeBands(const QString &name, int height, const SchemeColors &other);
