#include "engine/codecs/tiffdirectory.h"

#include "engine/limits.h"

#include <algorithm>

std::vector<quint64> tiffDirectories(Bytes file)
{
    const ByteReader bytes(file);
    const bool bigEndian = bytes.is(0, "MM");
    const bool wide = bytes.u16(2, bigEndian) == 43;
    std::vector<quint64> offsets;
    quint64 at = wide ? bytes.u64(8, bigEndian) : bytes.u32(4, bigEndian);
    while (at != 0 && bytes.has(at, 2) && offsets.size() < size_t(limits::maximumPages)) {
        if (std::find(offsets.begin(), offsets.end(), at) != offsets.end())
            break;
        offsets.push_back(at);
        const quint64 entries = wide ? bytes.u64(at, bigEndian) : bytes.u16(at, bigEndian);
        if (entries > file.size())
            break;
        const quint64 next = wide ? at + 8 + 20 * entries : at + 2 + 12 * entries;
        at = wide ? bytes.u64(next, bigEndian) : bytes.u32(next, bigEndian);
    }
    return offsets;
}
