#include "engine/codecs/completed.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/magickheaders.h"
#include "engine/limits.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr qsizetype greys = 256;
constexpr qsizetype pcxHeaderBytes = 128;
constexpr qsizetype pcxPaletteBytes = 1 + 3 * greys;
constexpr char pcxPaletteFollows = 0x0c;

/// What a cut file gets: only where there is a row to show, and no more than a decode may take.
bool isWorthFilling(qint64 missing, qint64 present, qint64 rowBytes)
{
    return missing > 0 && present >= rowBytes && rowBytes > 0 && missing <= limits::decodeBudget();
}

struct PcxRows
{
    qint64 rowBytes = 0; ///< all planes
    qint64 missing = 0;
    qint64 present = 0;
    size_t end = 0; ///< where they end in the file
    bool packed = false;
    bool deep = false; ///< full is white; else 0 is the first colour
};

/// How much of the PCX at `at` lies in front of `end`; nothing of one whose rows are longer than its pixels need.
PcxRows pcxRows(const ByteReader &reader, size_t at, size_t end)
{
    const qint64 height = reader.u16le(at + 10) - reader.u16le(at + 6) + 1;
    PcxRows rows;
    rows.packed = reader.u8(at + 2) == 1;
    rows.rowBytes = qint64(reader.u16le(at + 66)) * reader.u8(at + 65);
    rows.deep = reader.u8(at + 3) * reader.u8(at + 65) >= 24 || reader.u8(at + 3) * reader.u8(at + 65) == 1;
    constexpr int mostPadding = 64;
    const int width = reader.u16le(at + 8) - reader.u16le(at + 4) + 1;
    if (reader.u16le(at + 66) > (width * reader.u8(at + 3) + 7) / 8 + mostPadding)
        return {};
    const qint64 needed = height * rows.rowBytes;
    at += size_t(pcxHeaderBytes);
    while (rows.present < needed && at < end) {
        const quint8 byte = reader.u8(at);
        const bool isRun = rows.packed && (byte & 0xc0) == 0xc0;
        rows.present += isRun ? byte & 0x3f : 1;
        at += isRun ? 2 : 1;
    }
    rows.missing = needed - rows.present;
    rows.end = at;
    return rows;
}

/// The missing pixels, as the file would hold them.
QByteArray pcxFill(const PcxRows &rows)
{
    constexpr qint64 longestRun = 63;
    const char value = rows.deep ? '\xff' : '\0';
    if (!rows.packed)
        return QByteArray(qsizetype(rows.missing), value);
    // One run more than needed: the first of them ends the one that was cut.
    QByteArray fill;
    const qint64 runs = rows.missing / longestRun + 2;
    fill.reserve(qsizetype(2 * runs));
    for (qint64 i = 0; i < runs; ++i)
        fill.append('\xff').append(value);
    return fill;
}

QByteArray greyPalette()
{
    QByteArray palette(1, pcxPaletteFollows);
    for (qsizetype grey = 0; grey < greys; ++grey)
        palette.append(3, char(grey));
    return palette;
}

/// The adapter's sixteen colours, where the header's table is empty and its version says that it does not count.
void setPaletteOfEga(QByteArray &file)
{
    constexpr qsizetype tableAt = 16;
    constexpr qsizetype tableBytes = 48;
    constexpr char withoutPalette = 3;
    const ByteReader reader(file);
    const int bits = reader.u8(3) * reader.u8(65);
    if (file.size() < pcxHeaderBytes || file.at(1) != withoutPalette || bits < 2 || bits > 4
        || file.mid(tableAt, tableBytes).count('\0') < tableBytes)
        return;
    QByteArray table;
    for (int color = 0; color < 16; ++color) {
        const int light = color & 8 ? 0x55 : 0;
        const bool isBrown = color == 6;
        table.append(char((color & 4 ? 0xaa : 0) + light));
        table.append(char(isBrown ? 0x55 : (color & 2 ? 0xaa : 0) + light));
        table.append(char((color & 1 ? 0xaa : 0) + light));
    }
    file.replace(tableAt, tableBytes, table);
}

}

CompletedFile completedPcx(const QByteArray &bytes)
{
    CompletedFile file{bytes, false};
    setPaletteOfEga(file.bytes);
    const ByteReader reader(bytes);
    const bool wantsPalette = reader.u8(3) == 8 && reader.u8(65) == 1;
    const bool hasPalette = wantsPalette && bytes.size() >= pcxHeaderBytes + pcxPaletteBytes
        && bytes[bytes.size() - pcxPaletteBytes] == pcxPaletteFollows;
    const qsizetype end = bytes.size() - (hasPalette ? pcxPaletteBytes : 0);
    const PcxRows rows = pcxRows(reader, 0, size_t(end));
    file.wasCut = isWorthFilling(rows.missing, rows.present, rows.rowBytes);
    if (file.wasCut)
        file.bytes.insert(end, pcxFill(rows));
    if (!wantsPalette || hasPalette)
        return file;
    // A palette that was cut keeps the colours that it has.
    const QByteArray there = rows.missing <= 0 ? bytes.mid(qsizetype(rows.end)) : QByteArray();
    if (there.startsWith(pcxPaletteFollows) && there.size() < pcxPaletteBytes) {
        file.wasCut = true;
        file.bytes.append(greyPalette().mid(there.size()));
    } else if (file.wasCut || rows.missing <= 0) {
        file.bytes.append(greyPalette());
    }
    return file;
}

CompletedFile completedDcx(const QByteArray &bytes)
{
    const ByteReader reader(bytes);
    constexpr size_t mostPictures = 1023;
    size_t last = 0;
    for (size_t i = 0; i < mostPictures && reader.u32le(4 + 4 * i) != 0; ++i) {
        if (reader.has(reader.u32le(4 + 4 * i), size_t(pcxHeaderBytes)))
            last = std::max(last, size_t(reader.u32le(4 + 4 * i)));
    }
    if (last == 0)
        return {bytes, false};
    const CompletedFile picture = completedPcx(bytes.mid(qsizetype(last)));
    return {bytes.left(qsizetype(last)) + picture.bytes, picture.wasCut};
}

CompletedFile completedMac(const QByteArray &bytes)
{
    constexpr int rowBytes = 72;
    constexpr int rows = 720;
    const ByteReader reader(bytes);
    size_t at = 512 + (reader.is(65, "PNTG") ? 128 : 0);
    int present = 0;
    while (present < rowBytes * rows && at < reader.size()) {
        const int code = reader.u8(at);
        present += code < 128 ? code + 1 : code > 128 ? 257 - code : 0;
        at += code < 128 ? size_t(code) + 2 : code > 128 ? 2 : 1;
    }
    const int missing = rowBytes * rows - present;
    const qsizetype literals = qsizetype(at) - bytes.size(); // of a stretch that was cut
    if (!isWorthFilling(missing + std::max<qint64>(literals, 0), present, rowBytes))
        return {bytes, false};
    QByteArray whole = bytes;
    if (literals > 0)
        whole.append(literals, '\0');
    for (int left = missing; left > 0;) {
        // Runs end where a row does.
        const int run = left % rowBytes ? left % rowBytes : rowBytes;
        if (run == 1)
            whole.append(2, '\0');
        else
            whole.append(char(257 - run)).append('\0');
        left -= run;
    }
    return {whole, true};
}

CompletedFile completedWbmp(const QByteArray &bytes)
{
    const std::optional<MagickHeader> header = wbmpHeader(ByteReader(bytes), -1);
    qsizetype at = 2;
    for (int numbers = 0; numbers < 2 && at < bytes.size(); ++at)
        numbers += uchar(bytes[at]) & 0x80 ? 0 : 1;
    const qint64 rowBytes = header ? (header->size.width() + 7) / 8 : 0;
    const qint64 present = bytes.size() - at;
    const qint64 missing = header ? rowBytes * header->size.height() - present : 0;
    if (!isWorthFilling(missing, present, rowBytes))
        return {bytes, false};
    return {bytes + QByteArray(qsizetype(missing), '\xff'), true};
}

CompletedFile completedArt(const QByteArray &bytes)
{
    constexpr qsizetype headerBytes = 8;
    const std::optional<MagickHeader> header = artHeader(ByteReader(bytes), -1);
    const qint64 rowBytes = header ? (header->size.width() + 15) / 16 * 2 : 0;
    const qint64 present = bytes.size() - headerBytes;
    const qint64 missing = header ? rowBytes * header->size.height() - present : 0;
    if (!isWorthFilling(missing, present, rowBytes))
        return {bytes, false};
    return {bytes + QByteArray(qsizetype(missing), '\xff'), true};
}

CompletedFile completedUtah(const QByteArray &bytes)
{
    // The code that ends the picture, often enough to be met behind the longest stretch of pixels that can be cut.
    constexpr char end = 7;
    constexpr qsizetype longestStretch = 0x10000;
    if (bytes.endsWith(end) || bytes.endsWith(QByteArray(1, end) + '\0'))
        return {bytes, false};
    return {bytes + QByteArray(longestStretch + 4, end), true};
}
