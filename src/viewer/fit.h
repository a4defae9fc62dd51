#pragma once

#include <QRect>
#include <QSize>

/// The size at which a picture stands in the pane: its size times `zoom`, then fitted on one axis. The comparisons are
/// strict where they look strict: with equal excesses, or one side equal and the other over, the size stays and the
/// picture is clipped.
QSize fitIntoPane(QSize picture, double zoom, QSize pane);

/// Centred in the pane (left and top may be negative), or the whole pane when stretched.
QRect placeInPane(QSize size, QSize pane, bool stretched);

/// Pixels of the screen in the units of a desktop that is scaled by `ratio`: the corner rounded, the size rounded up,
/// so that every pixel has room.
QRect onDesktop(const QRect &pixels, double ratio);

/// The eleven zoom items, 1 to 11: 25 % to 200 % by 25, then 300, 400, 500 %.
inline constexpr int zoomItemFirst = 1;
inline constexpr int zoomItemLast = 11;
inline constexpr int zoomItemAtStart = 4;
double zoomFactor(int item);
/// Captions of mnuEditZoomLevel(1..11), index 0 is item 1.
extern const char *const zoomCaptions[11];
