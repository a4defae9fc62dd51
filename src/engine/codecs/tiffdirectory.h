#pragma once

#include "engine/codecs/bytes.h"

#include <vector>

/// Offsets of a TIFF's directories in chain order, at most limits::maximumPages of them. The chain ends where the file
/// does, and where it would come back to a directory it has passed.
std::vector<quint64> tiffDirectories(Bytes file);
