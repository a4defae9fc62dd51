#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/smallformats.h"
#include "engine/limits.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

// Written from the published descriptions pbm(5), pgm(5), ppm(5) and pam(5).

namespace {

constexpr int mostPamLines = 1000;

struct Header
{
    QSize size;
    int channels = 1; ///< 2 and 4: the last one is opacity
    quint32 largest = 1;
    bool isText = false;
    bool isBitmap = false; ///< P1 and P4, where 1 is black
    bool isPam = false;
    size_t rowsAt = 0;

    size_t samples() const { return size_t(size.width()) * size_t(channels); }
    bool hasAlpha() const { return channels % 2 == 0; }
    bool isMono() const { return isBitmap || (isPam && channels == 1 && largest == 1); }
    bool isDeep() const { return bits() >= 48; }
    int sampleBytes() const { return largest > 255 ? 2 : 1; }
    /// The three old formats count as 1, 8 and 24 bits whatever their largest value is.
    int bits() const
    {
        if (isBitmap)
            return 1;
        return channels * (isPam && largest == 1 ? 1 : isPam && largest > 255 ? 16 : 8);
    }
    /// Bytes of one row at the least.
    size_t rowBytes() const
    {
        if (isText)
            return samples();
        return isBitmap ? (size_t(size.width()) + 7) / 8 : samples() * size_t(sampleBytes());
    }
};

bool isBlank(quint8 character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// Goes on to what is neither blank nor comment; false when no digit stands there.
bool findDigit(const ByteReader &bytes, size_t &at)
{
    while (isBlank(bytes.u8(at)) || bytes.u8(at) == '#') {
        const bool isComment = bytes.u8(at++) == '#';
        while (isComment && bytes.has(at, 1) && bytes.u8(at) != '\n' && bytes.u8(at) != '\r')
            ++at;
    }
    return bytes.u8(at) >= '0' && bytes.u8(at) <= '9';
}

/// The number behind blanks and comments; -1 when something else stands there.
int nextNumber(const ByteReader &bytes, size_t &at)
{
    if (!findDigit(bytes, at))
        return -1;
    int number = 0;
    while (bytes.u8(at) >= '0' && bytes.u8(at) <= '9')
        number = std::min(number * 10 + bytes.u8(at++) - '0', 1'000'000);
    return number;
}

bool isSound(const Header &header)
{
    return header.size.width() > 0 && header.size.height() > 0 && header.channels >= 1 && header.channels <= 4
        && header.largest >= 1 && header.largest <= 65535;
}

std::optional<Header> readPamHeader(Bytes file)
{
    Header header;
    header.isPam = true;
    header.channels = 0;
    header.largest = 0;
    auto at = file.begin() + 3;
    for (int i = 0; i < mostPamLines; ++i) {
        const auto end = std::find(at, file.end(), '\n');
        if (end == file.end())
            return {};
        const QByteArray line = QByteArray(reinterpret_cast<const char *>(&*at), end - at).simplified();
        at = end + 1;
        const qsizetype blank = line.indexOf(' ');
        const QByteArray word = blank < 0 ? line : line.left(blank);
        const int number = blank < 0 ? 0 : line.mid(blank + 1).toInt();
        if (word == "WIDTH")
            header.size.setWidth(number);
        else if (word == "HEIGHT")
            header.size.setHeight(number);
        else if (word == "DEPTH")
            header.channels = number;
        else if (word == "MAXVAL")
            header.largest = quint32(std::max(number, 0));
        else if (word == "ENDHDR")
            break;
    }
    header.rowsAt = size_t(at - file.begin());
    return isSound(header) ? std::optional(header) : std::nullopt;
}

std::optional<Header> readHeader(Bytes file)
{
    const ByteReader bytes(file);
    if (bytes.is(0, "P7\n"))
        return readPamHeader(file);
    const int kind = bytes.u8(1) - '0';
    if (bytes.u8(0) != 'P' || kind < 1 || kind > 6)
        return {};
    Header header;
    header.isText = kind <= 3;
    header.isBitmap = kind % 3 == 1;
    header.channels = kind % 3 == 0 ? 3 : 1;
    size_t at = 2;
    header.size.setWidth(nextNumber(bytes, at));
    header.size.setHeight(nextNumber(bytes, at));
    if (!header.isBitmap)
        header.largest = quint32(std::max(nextNumber(bytes, at), 0));
    if (!isBlank(bytes.u8(at)) || !isSound(header))
        return {};
    header.rowsAt = at + 1; // one blank and no more: the next byte may be a pixel that looks like one
    return header;
}

/// Reads row after row as numbers.
class SampleReader
{
public:
    SampleReader(Bytes file, const Header &header)
        : m_bytes(file)
        , m_header(header)
        , m_at(header.rowsAt)
    {
    }

    /// False when the file ends before the row does.
    bool read(std::vector<quint16> &row)
    {
        if (m_header.isText)
            return readText(row);
        if (!m_bytes.has(m_at, m_header.rowBytes()))
            return false;
        if (m_header.isBitmap) {
            for (size_t i = 0; i < row.size(); ++i)
                row[i] = m_bytes.u8(m_at + i / 8) >> (7 - i % 8) & 1;
        } else if (m_header.sampleBytes() == 1) {
            for (size_t i = 0; i < row.size(); ++i)
                row[i] = m_bytes.u8(m_at + i);
        } else {
            for (size_t i = 0; i < row.size(); ++i)
                row[i] = m_bytes.u16be(m_at + i * 2);
        }
        m_at += m_header.rowBytes();
        return true;
    }

private:
    bool readText(std::vector<quint16> &row)
    {
        for (quint16 &sample : row) {
            const int number = m_header.isBitmap ? nextBit() : nextNumber(m_bytes, m_at);
            if (number < 0)
                return false;
            sample = quint16(std::min(number, 65535));
        }
        return true;
    }

    /// The bits of P1 need no blanks between them.
    int nextBit() { return findDigit(m_bytes, m_at) ? m_bytes.u8(m_at++) != '0' : -1; }

    ByteReader m_bytes;
    Header m_header;
    size_t m_at;
};

/// What each number of the file is between 0 and `top`; numbers over the largest count as that.
std::vector<quint16> scaleTable(quint32 largest, quint32 top)
{
    std::vector<quint16> table(65536, quint16(top));
    for (quint32 i = 0; i < largest; ++i)
        table[i] = quint16((quint64(i) * top + largest / 2) / largest);
    return table;
}

QImage::Format formatFor(const Header &header)
{
    if (header.isMono())
        return QImage::Format_Mono;
    if (header.channels == 1)
        return QImage::Format_Grayscale8;
    if (header.isDeep())
        return QImage::Format_RGBA64;
    return header.hasAlpha() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
}

void putMonoRow(const std::vector<quint16> &row, bool oneIsBlack, std::span<uchar> to)
{
    std::fill(to.begin(), to.end(), uchar(0));
    for (size_t i = 0; i < row.size(); ++i)
        to[i / 8] |= uchar(((row[i] != 0) != oneIsBlack ? 0x80 : 0) >> i % 8);
}

void putDeepRow(const std::vector<quint16> &row, int channels, QRgba64 *to)
{
    const quint16 *from = row.data();
    for (size_t i = 0; i < row.size(); i += size_t(channels), from += channels)
        *to++ = QRgba64::fromRgba64(from[0], from[1], from[2], channels == 4 ? from[3] : quint16(0xffff));
}

void putRgbRow(const std::vector<quint16> &row, int channels, QRgb *to)
{
    const quint16 *from = row.data();
    if (channels == 3) {
        for (size_t i = 0; i < row.size(); i += 3, from += 3)
            *to++ = qRgb(from[0], from[1], from[2]);
    } else if (channels == 4) {
        for (size_t i = 0; i < row.size(); i += 4, from += 4)
            *to++ = qRgba(from[0], from[1], from[2], from[3]);
    } else {
        for (size_t i = 0; i < row.size(); i += 2, from += 2)
            *to++ = qRgba(from[0], from[0], from[0], from[1]);
    }
}

void putRow(const std::vector<quint16> &row, const Header &header, QImage &image, int y)
{
    uchar *const to = image.scanLine(y);
    switch (image.format()) {
    case QImage::Format_Mono:
        putMonoRow(row, header.isBitmap, {to, size_t(image.bytesPerLine())});
        break;
    case QImage::Format_Grayscale8:
        std::transform(row.begin(), row.end(), to, [](quint16 sample) { return uchar(sample); });
        break;
    case QImage::Format_RGBA64:
        putDeepRow(row, header.channels, reinterpret_cast<QRgba64 *>(to));
        break;
    default:
        putRgbRow(row, header.channels, reinterpret_cast<QRgb *>(to));
    }
}

Result<Header> openPnm(const EncodedFile &file)
{
    const std::optional<Header> header = readHeader(bytesOf(file.bytes));
    if (!header)
        return Failure{QStringLiteral("not a portable bitmap")};
    if (!limits::allows(header->size, header->isDeep() ? 8 : 4))
        return Failure{tooLarge(header->size)};
    return *header;
}

bool sniffPnm(Bytes head)
{
    return readHeader(head).has_value();
}

Result<ImageInfo> probePnm(const EncodedFile &file, int)
{
    const Result<Header> header = openPnm(file);
    if (!header)
        return header.failure();
    return ImageInfo{header->size, header->bits(), 1, pnmCodec.name};
}

Result<Picture> decodePnm(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Header> header = openPnm(file);
    if (!header)
        return header.failure();
    if (hint.page != 0)
        return Failure{QStringLiteral("the file has no picture %1").arg(hint.page)};
    if (!ByteReader(file.bytes).has(header->rowsAt, header->rowBytes()))
        return Failure{QStringLiteral("a portable bitmap without rows")};
    Picture picture;
    picture.info = {header->size, header->bits(), 1, pnmCodec.name};
    picture.pixels = allocateImage(header->size, formatFor(*header));
    if (picture.isNull())
        return Failure{outOfMemory(header->size)};
    const bool mono = header->isMono();
    if (mono)
        picture.pixels.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    const std::vector<quint16> scaled = scaleTable(header->largest, mono ? 1 : header->isDeep() ? 65535 : 255);
    SampleReader reader(bytesOf(file.bytes), *header);
    std::vector<quint16> row(header->samples());
    for (int y = 0; y < header->size.height(); ++y) {
        if (!reader.read(row)) {
            blankRows(picture.pixels, y);
            picture.partial = true;
            break;
        }
        for (quint16 &sample : row)
            sample = scaled[sample];
        putRow(row, *header, picture.pixels, y);
    }
    return picture;
}

}

const Codec pnmCodec{"PNM", "pnm pbm pgm ppm pam", sniffPnm, probePnm, decodePnm, true};
