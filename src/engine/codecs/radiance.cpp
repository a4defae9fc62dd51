#include "engine/codecs/pic.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/exif.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace {

// Layout: "The RADIANCE Picture File Format", published with that program.
struct Header
{
    QSize stored;
    int orientation = 1; ///< as EXIF counts
    size_t pixels = 0;
};

constexpr qsizetype maximumHeader = 4096;

/// "-Y 92 +X 54": which way rows and pixels go, and how many there are.
std::optional<Header> resolutionOf(const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    if (words.size() != 4)
        return {};
    static constexpr std::pair<const char *, int> ways[] = {
        {"-Y+X", 1}, {"-Y-X", 2}, {"+Y-X", 3}, {"+Y+X", 4}, {"+X-Y", 5}, {"-X-Y", 6}, {"-X+Y", 7}, {"+X+Y", 8}};
    for (const auto &[way, orientation] : ways) {
        if (words[0] + words[2] == way)
            return Header{{words[3].toInt(), words[1].toInt()}, orientation, 0};
    }
    return {};
}

/// Lines of text, an empty one, and the one with the resolution. The oldest files lack the name in front, so that the
/// resolution is what such a file is known by.
std::optional<Header> findHeader(Bytes file)
{
    const QByteArray head(reinterpret_cast<const char *>(file.data()), qMin(qsizetype(file.size()), maximumHeader));
    const qsizetype empty = head.indexOf("\n\n");
    const qsizetype end = empty < 0 ? -1 : head.indexOf('\n', empty + 2);
    if (end < 0 || head.left(end).contains('\0'))
        return {};
    std::optional<Header> header = resolutionOf(head.mid(empty + 2, end - empty - 2).trimmed());
    if (header)
        header->pixels = size_t(end) + 1;
    return header;
}

Result<Header> readHeader(const QByteArray &file)
{
    const std::optional<Header> header = findHeader(bytesOf(file));
    if (!header)
        return Failure{QStringLiteral("not a Radiance picture")};
    if (file.left(qsizetype(header->pixels)).contains("FORMAT=32-bit_rle_xyze"))
        return Failure{QStringLiteral("a Radiance picture in XYZ colours")};
    if (!limits::allows(header->stored, 8))
        return Failure{tooLarge(header->stored)};
    return *header;
}

struct Light
{
    uchar red = 0, green = 0, blue = 0, exponent = 0;
};

class Scanlines
{
public:
    Scanlines(const QByteArray &file, size_t at)
        : m_bytes(file)
        , m_at(at)
    {
    }
    /// False when the input ends before the row.
    bool read(std::vector<Light> &row);

private:
    bool readChannels(std::vector<Light> &row);
    bool readPixels(std::vector<Light> &row);

    const ByteReader m_bytes;
    size_t m_at;
};

bool Scanlines::read(std::vector<Light> &row)
{
    const bool byChannels = m_bytes.u16be(m_at) == 0x0202 && m_bytes.u16be(m_at + 2) == row.size() && row.size() >= 8
        && row.size() < 0x8000;
    return byChannels ? readChannels(row) : readPixels(row);
}

/// The newer way: each channel of the row as runs and literals.
bool Scanlines::readChannels(std::vector<Light> &row)
{
    m_at += 4;
    for (uchar Light::*const channel : {&Light::red, &Light::green, &Light::blue, &Light::exponent}) {
        size_t x = 0;
        while (x < row.size()) {
            if (!m_bytes.has(m_at, 2))
                return false;
            const size_t control = m_bytes.u8(m_at++);
            const bool isRun = control > 128;
            const size_t end = x + (isRun ? control - 128 : control);
            if (control == 0 || end > row.size() || !m_bytes.has(m_at, isRun ? 1 : control))
                return false;
            for (; x < end; ++x)
                row[x].*channel = m_bytes.u8(isRun ? m_at : m_at++);
            m_at += isRun ? 1 : 0;
        }
    }
    return true;
}

/// The older way: pixel after pixel; 1 1 1 n repeats the last one, and another such counts 256 times as much.
bool Scanlines::readPixels(std::vector<Light> &row)
{
    int shift = 0;
    for (size_t x = 0; x < row.size(); m_at += 4) {
        if (!m_bytes.has(m_at, 4))
            return false;
        const Light light{m_bytes.u8(m_at), m_bytes.u8(m_at + 1), m_bytes.u8(m_at + 2), m_bytes.u8(m_at + 3)};
        if (light.red != 1 || light.green != 1 || light.blue != 1) {
            row[x++] = light;
            shift = 0;
            continue;
        }
        if (x == 0 || shift > 16)
            return false;
        const size_t end = std::min(x + (size_t(light.exponent) << shift), row.size());
        std::fill(row.begin() + std::ptrdiff_t(x), row.begin() + std::ptrdiff_t(end), row[x - 1]);
        x = end;
        shift += 8;
    }
    return true;
}

/// The screen's value of each mantissa under each exponent.
std::vector<std::array<uchar, 256>> tones()
{
    constexpr double gamma = 2.2;
    std::vector<std::array<uchar, 256>> table(256);
    for (size_t exponent = 1; exponent < 256; ++exponent) {
        const double unit = std::ldexp(1.0, int(exponent) - (128 + 8));
        for (size_t mantissa = 0; mantissa < 256; ++mantissa) {
            const double light = std::min((double(mantissa) + 0.5) * unit, 1.0);
            table[exponent][mantissa] = uchar(std::pow(light, 1 / gamma) * 255 + 0.5);
        }
    }
    return table;
}

ImageInfo infoOf(const Header &header)
{
    return {uprightSize(header.stored, header.orientation), 32, 1, radianceCodec.name};
}

bool sniffRadiance(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "#?RADIANCE") || bytes.is(0, "#?RGBE") || findHeader(head).has_value();
}

Result<ImageInfo> probeRadiance(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return infoOf(*header);
}

Result<Picture> decodeRadiance(const EncodedFile &file, const DecodeHint &)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    QImage image = allocateImage(header->stored, QImage::Format_RGB32);
    if (image.isNull())
        return Failure{outOfMemory(header->stored)};
    static const std::vector<std::array<uchar, 256>> table = tones();
    Scanlines scanlines(file.bytes, header->pixels);
    std::vector<Light> lights(size_t(header->stored.width()));
    int rows = 0;
    for (; rows < image.height() && scanlines.read(lights); ++rows) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(rows));
        std::transform(lights.begin(), lights.end(), row, [](Light light) {
            const std::array<uchar, 256> &values = table[light.exponent];
            return qRgb(values[light.red], values[light.green], values[light.blue]);
        });
    }
    if (rows == 0)
        return Failure{QStringLiteral("a Radiance picture without a whole row")};
    blankRows(image, rows);
    Picture picture;
    picture.info = infoOf(*header);
    picture.partial = rows < image.height();
    picture.pixels = uprighted(image, header->orientation);
    if (picture.isNull())
        return Failure{outOfMemory(picture.info.size)};
    return picture;
}

}

const Codec radianceCodec{"Radiance", "pic hdr", sniffRadiance, probeRadiance, decodeRadiance};
