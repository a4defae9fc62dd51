#include "engine/codecs/iffchunks.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>
#include <optional>

namespace {

constexpr size_t formHeader = 12; // "FORM", size, kind

quint32 idOf(const char (&text)[5])
{
    return quint32(uchar(text[0])) << 24 | quint32(uchar(text[1])) << 16 | quint32(uchar(text[2])) << 8
        | quint32(uchar(text[3]));
}

struct Chunk
{
    quint32 id = 0;
    size_t at = 0; ///< of its data
    size_t length = 0; ///< as far as the file goes
    bool isCut = false;
    bool is(const char (&text)[5]) const { return id == idOf(text); }
};

bool isChunkName(const ByteReader &bytes, size_t at)
{
    for (size_t i = 0; i < 4; ++i) {
        if (bytes.u8(at + i) < 0x20 || bytes.u8(at + i) > 0x7e)
            return false;
    }
    return true;
}

/// Gives one chunk after the other.
class ChunkWalk
{
public:
    ChunkWalk(const QByteArray &file, size_t first)
        : m_bytes(file)
        , m_at(first)
    {
    }
    std::optional<Chunk> next()
    {
        constexpr int mostChunks = 65536;
        if (!m_bytes.has(m_at, 8) || !isChunkName(m_bytes, m_at) || m_count++ >= mostChunks)
            return {};
        Chunk chunk{m_bytes.u32be(m_at), m_at + 8, m_bytes.u32be(m_at + 4), false};
        if (!m_bytes.has(chunk.at, chunk.length)) {
            chunk.length = m_bytes.size() - chunk.at;
            chunk.isCut = true;
        }
        const size_t end = chunk.at + chunk.length;
        // Some writers forgot the byte that makes a length even.
        const bool unpadded = isChunkName(m_bytes, end) && !isChunkName(m_bytes, end + 1);
        m_at = end + (chunk.length % 2 != 0 && !unpadded ? 1 : 0);
        return chunk;
    }

private:
    const ByteReader m_bytes;
    size_t m_at;
    int m_count = 0;
};

bool isPictureKind(const ByteReader &bytes, size_t form)
{
    return bytes.is(form, "FORM")
        && (bytes.is(form + 8, "ILBM") || bytes.is(form + 8, "PBM ") || bytes.is(form + 8, "ACBM"));
}

/// Where the FORM of the picture begins: at the start, or the first one inside a list or an animation.
std::optional<size_t> pictureForm(const QByteArray &file)
{
    const ByteReader bytes(file);
    if (isPictureKind(bytes, 0))
        return 0;
    if (!bytes.is(0, "LIST") && !bytes.is(0, "CAT ") && !(bytes.is(0, "FORM") && bytes.is(8, "ANIM")))
        return {};
    ChunkWalk walk(file, formHeader);
    while (const std::optional<Chunk> chunk = walk.next()) {
        if (isPictureKind(bytes, chunk->at - 8))
            return chunk->at - 8;
    }
    return {};
}

Bytes dataOf(const QByteArray &file, const Chunk &chunk)
{
    return bytesOf(file).subspan(chunk.at, chunk.length);
}

struct Chunks
{
    std::optional<Chunk> header, colors, viewMode, pixels, sham, ctbl, pchg, resolution;
};

Chunks collect(const QByteArray &file, size_t form)
{
    Chunks chunks;
    ChunkWalk walk(file, form + formHeader);
    const auto keepFirst = [](std::optional<Chunk> &place, const Chunk &chunk) {
        if (!place)
            place = chunk;
    };
    while (const std::optional<Chunk> chunk = walk.next()) {
        if (chunk->is("BMHD"))
            keepFirst(chunks.header, *chunk);
        else if (chunk->is("CMAP"))
            keepFirst(chunks.colors, *chunk);
        else if (chunk->is("CAMG"))
            keepFirst(chunks.viewMode, *chunk);
        else if (chunk->is("BODY") || chunk->is("ABIT"))
            keepFirst(chunks.pixels, *chunk);
        else if (chunk->is("SHAM"))
            keepFirst(chunks.sham, *chunk);
        else if (chunk->is("CTBL"))
            keepFirst(chunks.ctbl, *chunk);
        else if (chunk->is("PCHG"))
            keepFirst(chunks.pchg, *chunk);
        else if (chunk->is("DPI "))
            keepFirst(chunks.resolution, *chunk);
    }
    return chunks;
}

/// The colours of a CMAP. Old programs stored the four bits of each channel in the high half and left the low half 0;
/// such a map is stretched to the full range.
QList<QRgb> readColors(Bytes map)
{
    QList<QRgb> colors;
    const size_t count = std::min<size_t>(map.size() / 3, 256);
    const bool halfBytes = std::all_of(map.begin(), map.end(), [](uchar value) { return (value & 15) == 0; });
    const auto channel = [&](size_t at) { return int(halfBytes ? map[at] | map[at] >> 4 : map[at]); };
    colors.reserve(qsizetype(count));
    for (size_t i = 0; i < count * 3; i += 3)
        colors.append(qRgb(channel(i), channel(i + 1), channel(i + 2)));
    return colors;
}

enum ViewMode : quint32 { HalfBrightMode = 0x80, HoldAndModifyMode = 0x800 };

/// What the pixel values mean. Programs that wrote no view mode are known by the length of their colour map.
IffPicture::Colors meaningOf(const IffPicture &picture, std::optional<quint32> viewMode, qsizetype colorCount)
{
    using Colors = IffPicture::Colors;
    if (picture.planes > 8)
        return Colors::True;
    if (picture.layout == IffPicture::Layout::Chunky)
        return Colors::Palette;
    const quint32 mode = viewMode.value_or(0);
    const bool untold = !viewMode && picture.planes == 6 && colorCount > 0 && colorCount <= 16;
    if ((mode & HoldAndModifyMode && picture.planes >= 5) || untold)
        return Colors::HoldAndModify;
    if (picture.planes == 6 && (mode & HalfBrightMode || (colorCount > 0 && colorCount <= 32)))
        return Colors::HalfBright;
    return Colors::Palette;
}

/// As many colours as there are pixel values; greys where the file has no map.
QList<QRgb> completePalette(QList<QRgb> colors, const IffPicture &picture)
{
    int count = 1 << picture.planes;
    if (picture.colors == IffPicture::Colors::HoldAndModify)
        count = picture.planes > 6 ? 64 : 16;
    else if (picture.colors == IffPicture::Colors::HalfBright)
        count = 32;
    if (colors.isEmpty()) {
        for (int i = 0; i < count; ++i) {
            const int grey = i * 255 / (count - 1);
            colors.append(qRgb(grey, grey, grey));
        }
    }
    while (colors.size() < count)
        colors.append(qRgb(0, 0, 0));
    colors.resize(count);
    if (picture.colors == IffPicture::Colors::HalfBright) {
        for (int i = 0; i < count; ++i)
            colors.append(qRgb(qRed(colors[i]) / 2, qGreen(colors[i]) / 2, qBlue(colors[i]) / 2));
    }
    return colors;
}

Result<void> readHeader(const ByteReader &header, IffPicture &picture)
{
    picture.size = QSize(header.u16be(0), header.u16be(2));
    picture.planes = header.u8(8);
    picture.compression = header.u8(10);
    const bool known = (picture.planes >= 1 && picture.planes <= 8)
        || (picture.layout != IffPicture::Layout::Chunky && (picture.planes == 24 || picture.planes == 32));
    if (!known)
        return Failure{QStringLiteral("an IFF picture of %1 planes").arg(picture.planes)};
    if (picture.compression > IffPicture::Columns
        || (picture.compression == IffPicture::Columns && picture.layout == IffPicture::Layout::Chunky))
        return Failure{QStringLiteral("an IFF picture packed in an unknown way (%1)").arg(picture.compression)};
    enum Masking { Mask = 1, TransparentColor = 2 };
    picture.hasMask = header.u8(9) == Mask && picture.layout != IffPicture::Layout::Chunky;
    if (header.u8(9) == TransparentColor && picture.planes <= 8 && header.u16be(12) < 1 << picture.planes)
        picture.transparentIndex = header.u16be(12);
    // The pixels, and for the packings that hold whole planes those too.
    const bool whole = picture.compression == IffPicture::Columns;
    if (!limits::allows(picture.size, whole ? 4 + (picture.planes + 8) / 8 : 4))
        return Failure{tooLarge(picture.size)};
    return {};
}

IffPicture::Layout layoutOf(const ByteReader &bytes, size_t form)
{
    if (bytes.is(form + 8, "PBM "))
        return IffPicture::Layout::Chunky;
    return bytes.is(form + 8, "ACBM") ? IffPicture::Layout::Planes : IffPicture::Layout::Rows;
}

QString refusal(const QByteArray &file)
{
    if (file.startsWith("FOR4") || file.startsWith("FOR8"))
        return QStringLiteral("not an IFF picture but a FOR4 file, which has another layout");
    if (!file.startsWith("FORM") || !isChunkName(ByteReader(file), 8))
        return QStringLiteral("not an IFF file");
    return QStringLiteral("an IFF file of the kind \"%1\", which is no picture known here")
        .arg(QLatin1String(file.mid(8, 4)));
}

void append(QByteArray &text, Bytes data)
{
    QByteArray line(reinterpret_cast<const char *>(data.data()), qsizetype(data.size()));
    while (line.endsWith('\0'))
        line.chop(1);
    if (line.isEmpty() || text.size() + line.size() > limits::maximumMetadataBytes)
        return;
    text += (text.isEmpty() ? QByteArray() : QByteArray("\n")) + line;
}

/// The IPTC data inside the resource blocks that a JPEG would hold it in; data without blocks as it is.
Bytes iptcInside(Bytes data)
{
    const ByteReader bytes(data);
    size_t at = bytes.is(0, "Photoshop 3.0") ? 14 : 0;
    if (!bytes.is(at, "8BIM"))
        return data;
    constexpr int iptcResource = 0x0404;
    while (bytes.is(at, "8BIM")) {
        const size_t name = (size_t(bytes.u8(at + 6)) + 2) / 2 * 2;
        const size_t start = at + 6 + name + 4;
        const size_t length = bytes.u32be(start - 4);
        if (!bytes.has(start, length))
            break;
        if (bytes.u16be(at + 4) == iptcResource)
            return data.subspan(start, length);
        at = start + (length + 1) / 2 * 2;
    }
    return {};
}

}

Result<IffPicture> openIff(const QByteArray &file)
{
    const std::optional<size_t> form = pictureForm(file);
    if (!form)
        return Failure{refusal(file)};
    const Chunks chunks = collect(file, *form);
    constexpr size_t headerBytes = 20;
    if (!chunks.header || chunks.header->length < headerBytes || !chunks.pixels)
        return Failure{QStringLiteral("an IFF file without a picture in it")};
    IffPicture picture;
    picture.layout = layoutOf(ByteReader(file), *form);
    if (const Result<void> read = readHeader(ByteReader(dataOf(file, *chunks.header)), picture); !read)
        return read.failure();
    const QList<QRgb> colors = chunks.colors ? readColors(dataOf(file, *chunks.colors)) : QList<QRgb>();
    std::optional<quint32> viewMode;
    if (chunks.viewMode && chunks.viewMode->length >= 4)
        viewMode = ByteReader(file).u32be(chunks.viewMode->at);
    picture.colors = meaningOf(picture, viewMode, colors.size());
    if (picture.colors != IffPicture::Colors::True) {
        picture.palette = completePalette(colors, picture);
        if (chunks.pchg)
            picture.pchg = dataOf(file, *chunks.pchg);
        else if (chunks.sham && chunks.sham->length > 2)
            picture.sham = dataOf(file, *chunks.sham).subspan(2);
        else if (chunks.ctbl)
            picture.sham = dataOf(file, *chunks.ctbl);
    }
    picture.pixels = dataOf(file, *chunks.pixels);
    picture.isCut = chunks.pixels->isCut;
    if (chunks.resolution && chunks.resolution->length >= 4)
        picture.dotsPerInch = QSize(ByteReader(file).u16be(chunks.resolution->at), //
            ByteReader(file).u16be(chunks.resolution->at + 2));
    else
        picture.dotsPerInch = QSize(0, 0);
    return picture;
}

IffMetadata readIffMetadataChunks(const QByteArray &file)
{
    IffMetadata found;
    const std::optional<size_t> form = pictureForm(file);
    if (!form)
        return found;
    const auto keepFirst = [](QByteArray &place, Bytes data) {
        if (place.isEmpty() && data.size() <= size_t(limits::maximumMetadataBytes))
            place = QByteArray(reinterpret_cast<const char *>(data.data()), qsizetype(data.size()));
    };
    ChunkWalk walk(file, *form + formHeader);
    while (const std::optional<Chunk> chunk = walk.next()) {
        const Bytes data = dataOf(file, *chunk);
        if (chunk->isCut)
            break;
        if (chunk->is("NAME") || chunk->is("AUTH") || chunk->is("ANNO") || chunk->is("(c) "))
            append(found.metadata.comment, data);
        else if (chunk->is("EXIF") && ByteReader(data).is(0, "Exif\0\0"))
            keepFirst(found.metadata.exif, data.subspan(6));
        else if (chunk->is("IPTC"))
            keepFirst(found.metadata.iptc, iptcInside(data));
        else if (chunk->is("XMP0"))
            keepFirst(found.metadata.xmp, data);
        else if (chunk->is("ICCP"))
            keepFirst(found.iccProfile, data);
    }
    return found;
}
