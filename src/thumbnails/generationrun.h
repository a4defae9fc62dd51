#pragma once

#include "thumbnails/thumbnailwork.h"

class frmThumbNail;

/// What makes a thumbnail of a file with the options as they are now. `stores`: it is meant for the cache.
ThumbnailWork thumbnailWork(const QString &file, int size, const QColor &backColor, bool stores);

enum class GenerationSizes { Current, All };
/// Puts a thumbnail of every file of the DisplayList into the cache, whether or not the viewer uses it, and shows
/// frmMakeThumbNails meanwhile. Returns when it is over; does nothing while another one is under way.
void generateThumbnails(frmThumbNail &viewer, GenerationSizes sizes);
