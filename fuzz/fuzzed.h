#pragma once

#include "engine/decodehere.h"

#include <cstddef>
#include <cstdint>

/// What all fuzzers share: small limits, so that memory is no finding, and the checks of what comes back.
namespace fuzzed {

/// Called once by each fuzzer: limits, a GUI object without a screen, quiet libraries.
int begin();

EncodedFile fileOf(const uint8_t *data, size_t size, const char *extension);

/// Stops the program when a picture is not what its header promises: an empty one, pixels of a format that no picture
/// may have, an index without a colour.
void check(const Picture &picture);

/// Stops the program when the header's numbers and the decode's differ.
void checkSame(const ImageInfo &probed, const ImageInfo &decoded);

}
