#pragma once

/// Edge of a thumbnail in pixels: 60 to 200 in steps of 10.
inline constexpr int smallestThumbnailSize = 60;
inline constexpr int largestThumbnailSize = 200;
inline constexpr int thumbnailSizeStep = 10;

bool isThumbnailSize(int size);

/// The size that the Thumbnail Viewer shows: the stored one, 80 when that is no size.
int currentThumbnailSize();
