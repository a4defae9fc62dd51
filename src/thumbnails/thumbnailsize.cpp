#include "thumbnails/thumbnailsize.h"

#include "app/settings.h"

namespace {
constexpr int defaultSize = 80;
}

bool isThumbnailSize(int size)
{
    return size >= smallestThumbnailSize && size <= largestThumbnailSize && size % thumbnailSizeStep == 0;
}

int currentThumbnailSize()
{
    const int stored = number(option("UserThumbnailSize", "80")).value_or(defaultSize);
    return isThumbnailSize(stored) ? stored : defaultSize;
}
