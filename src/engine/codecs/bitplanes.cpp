#include "engine/codecs/bitplanes.h"

#include <QtEndian>

#include <array>

namespace {

/// Byte k of an entry, counted from the lowest, is bit 7 - k of the index: eight pixels of one plane at once.
constexpr std::array<quint64, 256> spreadBits = [] {
    std::array<quint64, 256> table{};
    for (size_t value = 0; value < 256; ++value) {
        for (size_t pixel = 0; pixel < 8; ++pixel) {
            if (value & 0x80U >> pixel)
                table[value] |= quint64(1) << 8 * pixel;
        }
    }
    return table;
}();

}

void mergePlanes(const uchar *planes, size_t rowBytes, int count, uchar *pixels)
{
    for (size_t at = 0; at < rowBytes; ++at) {
        quint64 eight = 0;
        for (int plane = 0; plane < count; ++plane)
            eight |= spreadBits[planes[size_t(plane) * rowBytes + at]] << plane;
        qToLittleEndian(eight, pixels + at * 8);
    }
}

void splitIntoPlanes(const uchar *pixels, size_t rowBytes, int count, uchar *planes)
{
    for (size_t at = 0; at < rowBytes; ++at) {
        const quint64 eight = qFromLittleEndian<quint64>(pixels + at * 8);
        // One bit of each byte; the factor brings that of byte k to bit 7 - k of the highest byte.
        for (int plane = 0; plane < count; ++plane)
            planes[size_t(plane) * rowBytes + at] =
                uchar((eight >> plane & 0x0101010101010101) * 0x8040201008040201 >> 56);
    }
}
