#pragma once

#include <QColor>
#include <QImage>

class QMenuBar;

/// Shows a picture behind the texts of a menu bar from now on; a null one takes it away. Small pictures are laid side
/// by side, larger ones fill the bar with their middle. The picture fades into the palette's ground as far as the texts
/// need it, also when the palette changes.
void setMenuBarBackground(QMenuBar *bar, const QImage &picture);

/// The picture mixed with `ground` by the smallest of sixteen steps that lets a text of each of the two colours be read
/// on all of its pixels (contrast 4.5); only `ground` when nothing less does.
QImage fadedForText(const QImage &picture, const QColor &ground, const QColor &text, const QColor &otherText);
