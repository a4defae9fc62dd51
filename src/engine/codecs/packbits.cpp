#include "engine/codecs/packbits.h"

#include <algorithm>

bool unpackBits(Bytes packed, size_t &at, std::span<uchar> out, PackBitsSpill *spill)
{
    PackBitsSpill own;
    PackBitsSpill &pending = spill ? *spill : own;
    size_t filled = 0;
    while (filled < out.size()) {
        if (pending.count == 0) {
            if (at >= packed.size())
                return false;
            const uchar control = packed[at++];
            if (control == 128)
                continue;
            pending.isRun = control > 128;
            pending.count = pending.isRun ? 257u - control : control + 1u;
            if (pending.isRun) {
                if (at >= packed.size()) {
                    pending.count = 0;
                    return false;
                }
                pending.value = packed[at++];
            }
        }
        size_t count = std::min(pending.count, out.size() - filled);
        if (pending.isRun) {
            std::fill_n(out.begin() + std::ptrdiff_t(filled), count, pending.value);
        } else {
            count = std::min(count, packed.size() - at);
            if (count == 0)
                return false;
            std::copy_n(packed.begin() + std::ptrdiff_t(at), count, out.begin() + std::ptrdiff_t(filled));
            at += count;
        }
        filled += count;
        pending.count -= count;
    }
    if (!spill && !pending.isRun)
        at = std::min(packed.size(), at + pending.count);
    return true;
}

void packBits(Bytes row, QByteArray &out)
{
    constexpr size_t longest = 128;
    size_t at = 0;
    while (at < row.size()) {
        size_t run = 1;
        while (at + run < row.size() && run < longest && row[at + run] == row[at])
            ++run;
        if (run >= 2) {
            out.append(char(257 - run));
            out.append(char(row[at]));
            at += run;
            continue;
        }
        // As they are, up to the next three equal bytes: a pair would not pay for the new control byte.
        size_t plain = 1;
        while (at + plain < row.size() && plain < longest
            && !(at + plain + 2 < row.size() && row[at + plain] == row[at + plain + 1]
                && row[at + plain] == row[at + plain + 2]))
            ++plain;
        out.append(char(plain - 1));
        out.append(reinterpret_cast<const char *>(row.data() + at), qsizetype(plain));
        at += plain;
    }
}
