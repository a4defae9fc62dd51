#pragma once

#include <QImage>

#include <atomic>

/// Where a process wants large pictures to be made, and where it counts their rows: a decoder process lets its client
/// take the finished rows while the others are decoded.
struct PictureMemory
{
    /// A picture to fill, or a null one: allocateImage() then does as ever.
    QImage (*allocate)(QSize size, QImage::Format format) = nullptr;
    /// The start of the pixels that are watched; changes with each picture.
    const std::atomic<const uchar *> *watched = nullptr;
    void (*publish)(int rows) = nullptr;
};

/// Empty until set: every process but a decoder leaves it so.
void setPictureMemory(const PictureMemory &memory);

/// Says that rows [0, rows) of the picture with these pixels will not change any more.
void publishRows(const uchar *pixels, int rows);
