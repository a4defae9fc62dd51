#include "engine/codecs/pict.h"

#include "engine/codecs/jpeg.h"
#include "engine/codecs/packbits.h"
#include "engine/codecs/pictfile.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QPainter>

#include <algorithm>

namespace {

/// The packed rows of one bitmap, one after another.
class RowReader
{
public:
    explicit RowReader(const PictBits &bits)
        : m_bits(bits)
        , m_row(std::max(bits.rowBytes, size_t(bits.size.width()) * 4) + 4, '\0')
    {
    }
    /// The next row unpacked; null when the input ends before it.
    const uchar *next();

private:
    bool unpackWords(Bytes packed);

    const PictBits &m_bits;
    std::vector<uchar> m_row;
    size_t m_at = 0;
};

/// As PackBits, of two bytes each.
bool RowReader::unpackWords(Bytes packed)
{
    size_t filled = 0;
    for (size_t at = 0; at < packed.size() && filled < m_bits.rowBytes;) {
        const uchar control = packed[at++];
        if (control == 128)
            continue;
        const bool isRun = control > 128;
        for (size_t count = isRun ? 257U - control : control + 1U; count > 0 && filled + 2 <= m_bits.rowBytes;
             --count) {
            if (at + 2 > packed.size())
                return false;
            m_row[filled++] = packed[at];
            m_row[filled++] = packed[at + 1];
            at += isRun ? 0 : 2;
        }
        at += isRun ? 2 : 0;
    }
    return filled >= size_t(m_bits.size.width()) * 2;
}

const uchar *RowReader::next()
{
    const Bytes data = m_bits.data;
    if (m_bits.packing == PictBits::Raw || m_bits.packing == PictBits::PixelsOfThree) {
        const size_t length = m_bits.packing == PictBits::Raw ? m_bits.rowBytes : size_t(m_bits.size.width()) * 3;
        if (m_at + length > data.size())
            return nullptr;
        m_at += length;
        return data.data() + (m_at - length);
    }
    const ByteReader bytes(data);
    const bool isLong = m_bits.rowBytes > 250;
    const size_t length = isLong ? bytes.u16be(m_at) : bytes.u8(m_at);
    m_at += isLong ? 2 : 1;
    if (m_at + length > data.size())
        return nullptr;
    const Bytes packed = data.subspan(m_at, length);
    m_at += length;
    if (m_bits.packing == PictBits::PackedWords)
        return unpackWords(packed) ? m_row.data() : nullptr;
    const size_t wanted = m_bits.packing == PictBits::PackedPlanes
        ? size_t(m_bits.size.width()) * size_t(m_bits.components)
        : (size_t(m_bits.size.width()) * size_t(m_bits.depth) + 7) / 8;
    size_t at = 0;
    return unpackBits(packed, at, std::span(m_row).first(wanted)) ? m_row.data() : nullptr;
}

void convertIndices(const PictBits &bits, const uchar *from, uchar *row)
{
    const int perByte = 8 / bits.depth;
    const int mask = (1 << bits.depth) - 1;
    for (int x = 0; x < bits.size.width(); ++x)
        row[x] = uchar(from[x / perByte] >> (8 - bits.depth - x % perByte * bits.depth) & mask);
}

QRgb fromFiveBits(int word)
{
    const auto wide = [&](int shift) { return (word >> shift & 31) * 255 / 31; };
    return qRgb(wide(10), wide(5), wide(0));
}

void convertRow(const PictBits &bits, const uchar *from, QRgb *row)
{
    const int width = bits.size.width();
    if (bits.depth == 16) {
        for (int x = 0; x < width; ++x)
            row[x] = fromFiveBits(from[2 * x] << 8 | from[2 * x + 1]);
    } else if (bits.packing == PictBits::PackedPlanes) {
        // The alpha in front is only room that the writers left.
        const uchar *const red = from + (bits.components - 3) * width;
        for (int x = 0; x < width; ++x)
            row[x] = qRgb(red[x], red[x + width], red[x + 2 * width]);
    } else {
        const int step = bits.depth == 24 || bits.packing == PictBits::PixelsOfThree ? 3 : 4;
        from += step - 3;
        for (int x = 0; x < width; ++x, from += step)
            row[x] = qRgb(from[0], from[1], from[2]);
    }
}

struct Drawn
{
    QImage image; ///< null when nothing can be had
    bool isDamaged = false;
};

Drawn drawRows(const PictBits &bits)
{
    const QImage::Format format = bits.depth == 1 ? QImage::Format_Mono
        : bits.depth <= 8                         ? QImage::Format_Indexed8
                                                  : QImage::Format_RGB32;
    Drawn drawn{allocateImage(bits.size, format), false};
    if (drawn.image.isNull())
        return drawn;
    if (bits.depth <= 8)
        drawn.image.setColorTable(bits.palette);
    RowReader rows(bits);
    int y = 0;
    for (; y < bits.size.height(); ++y) {
        const uchar *const from = rows.next();
        if (!from)
            break;
        uchar *const row = drawn.image.scanLine(y);
        if (bits.depth == 1)
            std::copy_n(from, (bits.size.width() + 7) / 8, row);
        else if (bits.depth <= 8)
            convertIndices(bits, from, row);
        else
            convertRow(bits, from, reinterpret_cast<QRgb *>(row));
    }
    drawn.isDamaged = y < bits.size.height();
    if (y == 0)
        return {};
    blankRows(drawn.image, y);
    return drawn;
}

Drawn drawQuickTime(PictBits bits)
{
    if (bits.codec == "jpeg") {
        const QByteArray jpeg(reinterpret_cast<const char *>(bits.data.data()), qsizetype(bits.data.size()));
        const Result<Picture> picture = decodeStoredJpeg(jpeg, {});
        return picture && picture->info.size == bits.size ? Drawn{picture->pixels, picture->partial} : Drawn{};
    }
    if (bits.codec != "raw " || (bits.depth != 16 && bits.depth != 24 && bits.depth != 32))
        return {};
    bits.packing = PictBits::Raw;
    bits.rowBytes = size_t(bits.size.width()) * size_t(bits.depth / 8);
    return drawRows(bits);
}

Drawn draw(const PictBits &bits)
{
    Drawn drawn = bits.packing == PictBits::QuickTime ? drawQuickTime(bits) : drawRows(bits);
    if (!drawn.image.isNull() && bits.source != drawn.image.rect())
        drawn.image = drawn.image.copy(bits.source);
    return drawn;
}

struct Opened
{
    PictFile file;
    QSize size;
    int bits = 24;
    bool isOneBitmap = false; ///< that fills the frame: then it is the picture, whatever the frame's measures
};

Result<Opened> openPict(const QByteArray &bytes)
{
    Result<PictFile> file = readPictFile(bytesOf(bytes));
    if (!file)
        return file.failure();
    Opened opened;
    opened.file = *std::move(file);
    std::vector<PictBits> &bitmaps = opened.file.bitmaps;
    // What follows a picture by QuickTime is for programs that do not know it.
    if (bitmaps.front().packing == PictBits::QuickTime)
        bitmaps.resize(1);
    const PictBits &first = bitmaps.front();
    opened.isOneBitmap = bitmaps.size() == 1 && first.target.contains(opened.file.frame);
    opened.size = opened.isOneBitmap ? first.source.size() : opened.file.frame.size();
    opened.bits = opened.isOneBitmap ? first.depth : 24;
    if (!limits::allows(opened.size, 8))
        return Failure{tooLarge(opened.size)};
    return opened;
}

ImageInfo infoOf(const Opened &opened)
{
    return {opened.size, opened.bits, 1, pictCodec.name};
}

/// All bitmaps at their places, as a photograph in strips needs it.
Drawn drawAll(const PictFile &file)
{
    Drawn all{allocateImage(file.frame.size(), QImage::Format_RGB32), false};
    if (all.image.isNull())
        return all;
    all.image.fill(Qt::white);
    QPainter painter(&all.image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    qint64 pixels = 0;
    bool any = false;
    for (const PictBits &bits : file.bitmaps) {
        // Many large bitmaps on top of each other would cost more than a picture may.
        const QSize shown = bits.target.intersected(file.frame).size();
        pixels += qint64(bits.size.width()) * bits.size.height() + qint64(shown.width()) * shown.height();
        const Drawn drawn = pixels <= limits::maximumPixels ? draw(bits) : Drawn{};
        all.isDamaged |= drawn.isDamaged || drawn.image.isNull();
        any |= !drawn.image.isNull();
        painter.drawImage(bits.target.translated(-file.frame.topLeft()), drawn.image);
    }
    painter.end();
    return any ? all : Drawn{};
}

bool sniffPict(Bytes head)
{
    return isPict(head);
}

Result<ImageInfo> probePict(const EncodedFile &file, int)
{
    const Result<Opened> opened = openPict(file.bytes);
    if (!opened)
        return opened.failure();
    return infoOf(*opened);
}

Result<Picture> decodePict(const EncodedFile &file, const DecodeHint &)
{
    const Result<Opened> opened = openPict(file.bytes);
    if (!opened)
        return opened.failure();
    Drawn drawn = opened->isOneBitmap ? draw(opened->file.bitmaps.front()) : drawAll(opened->file);
    if (drawn.image.isNull())
        return Failure{QStringLiteral("a QuickDraw picture whose bitmap cannot be unpacked")};
    Picture picture;
    picture.info = infoOf(*opened);
    picture.partial = drawn.isDamaged || opened->file.isCut;
    picture.pixels = std::move(drawn.image);
    return picture;
}

}

const Codec pictCodec{"PICT", "pic pict pct", sniffPict, probePict, decodePict};
