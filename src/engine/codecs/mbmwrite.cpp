#include "engine/codecs/encodepixels.h"
#include "engine/codecs/mbm.h"
#include "engine/codecs/mbmlayout.h"
#include "engine/codecs/runs.h"

#include <algorithm>
#include <cmath>

using namespace mbm;

namespace {

struct Stored
{
    int bits = 24;
    quint32 color = Colored;
    QByteArray rows;
};

/// The depth of grey, not less than the picture's own, that holds every colour of the table; 0 when there is none.
int greyBits(const QList<QRgb> &table, int least)
{
    for (const int bits : {1, 2, 4, 8}) {
        const QList<QRgb> known = greys(bits);
        if (bits >= least && std::all_of(table.begin(), table.end(), [&](QRgb color) { return known.contains(color); }))
            return bits;
    }
    return 0;
}

/// The rows of a picture with these greys, the first pixel in the lowest bits.
QByteArray greyRows(const QImage &indexed, int bits)
{
    std::array<uchar, 256> levels{};
    const QList<QRgb> table = indexed.colorTable();
    for (int i = 0; i < table.size(); ++i)
        levels[size_t(i)] = uchar(qRed(table[i]) >> (8 - bits));
    const size_t stride = rowBytes(size_t(indexed.width()), bits);
    QByteArray rows(qsizetype(stride) * indexed.height(), char(0xff));
    const int perByte = 8 / bits;
    for (int y = 0; y < indexed.height(); ++y) {
        const uchar *const from = indexed.constScanLine(y);
        uchar *const to = reinterpret_cast<uchar *>(rows.data()) + stride * size_t(y);
        for (int x = 0; x < indexed.width(); ++x) {
            const int shift = x % perByte * bits;
            const int mask = (1 << bits) - 1;
            uchar &byte = to[x / perByte];
            byte = uchar((byte & ~(mask << shift)) | levels[from[x]] << shift);
        }
    }
    return rows;
}

QByteArray colorRows(const QImage &rgb)
{
    const size_t stride = rowBytes(size_t(rgb.width()), 24);
    QByteArray rows(qsizetype(stride) * rgb.height(), char(0xff));
    for (int y = 0; y < rgb.height(); ++y) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        uchar *to = reinterpret_cast<uchar *>(rows.data()) + stride * size_t(y);
        for (int x = 0; x < rgb.width(); ++x, to += 3) {
            to[0] = uchar(qBlue(from[x]));
            to[1] = uchar(qGreen(from[x]));
            to[2] = uchar(qRed(from[x]));
        }
    }
    return rows;
}

Stored storedPixels(const Picture &picture)
{
    if (const QImage indexed = opaqueIndexed(picture); !indexed.isNull()) {
        if (const int bits = greyBits(indexed.colorTable(), std::min(picture.info.bitsPerPixel, 8)); bits > 0)
            return {bits, Grey, greyRows(indexed, bits)};
    }
    return {24, Colored, colorRows(opaqueRgb(picture))};
}

quint32 twips(int pixels, int dotsPerMeter)
{
    return dotsPerMeter > 0 ? quint32(std::lround(pixels * twipsPerMeter / dotsPerMeter)) : 0;
}

Result<QByteArray> write(const Picture &picture, bool compressed)
{
    Stored stored = storedPixels(picture);
    quint32 compression = Plain;
    if (compressed) {
        QByteArray packed;
        packRuns(bytesOf(stored.rows), RunCode::Symbian, stored.bits == 24 ? 3 : 1, packed);
        if (packed.size() < stored.rows.size()) {
            compression = stored.bits == 24 ? Runs24 : Runs8;
            stored.rows = packed;
        }
    }
    constexpr quint32 bitmapAt = 20;
    const qsizetype length = qsizetype(headerBytes) + stored.rows.size();
    const qsizetype tableAt = bitmapAt + length;
    if (tableAt > qsizetype(0xffffffffU))
        return Failure{QStringLiteral("the picture is too large for a multi-bitmap file")};
    ByteWriter out;
    for (const quint32 value : {fileStoreUid, multiBitmapUid, quint32(0), uidChecksum, quint32(tableAt)})
        out.u32le(value);
    const QImage &pixels = picture.pixels;
    for (const quint32 value :
        {quint32(length), quint32(headerBytes), quint32(pixels.width()), quint32(pixels.height()),
            twips(pixels.width(), pixels.dotsPerMeterX()), twips(pixels.height(), pixels.dotsPerMeterY()),
            quint32(stored.bits), stored.color, quint32(0), compression})
        out.u32le(value);
    out.bytes.append(stored.rows);
    out.u32le(1);
    out.u32le(bitmapAt);
    return out.bytes;
}

}

Result<QByteArray> encodeMbm(const Picture &picture, const EncodeOptions &)
{
    return write(picture, false);
}

Result<QByteArray> encodeMbmCompressed(const Picture &picture, const EncodeOptions &)
{
    return write(picture, true);
}
