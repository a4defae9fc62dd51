#pragma once

#include <QImage>

struct ThumbnailJob;

/// Whether two pictures of one size show the same, as far as a lossy format keeps it.
bool looksAlike(const QImage &a, const QImage &b);

/// The picture to show in place of `shown` on a screen of more pixels: that of `sharp`, a job of the same file and look
/// as `plain` at a larger edge; both are done. Null when it is no better: the file's picture is too small, or `plain`
/// does not look like what is shown, as after a change of the file or of the look.
QImage sharperThumbnail(const ThumbnailJob &plain, const ThumbnailJob &sharp, const QImage &shown);
