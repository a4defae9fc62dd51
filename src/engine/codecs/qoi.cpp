#include "engine/codecs/modernformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

namespace {

constexpr size_t headerBytes = 14;

bool sniffQoi(Bytes head)
{
    return ByteReader(head).is(0, "qoif");
}

Result<ImageInfo> probeQoi(const EncodedFile &file, int)
{
    const ByteReader bytes(file.bytes);
    const int channels = bytes.u8(12);
    if (!bytes.is(0, "qoif") || !bytes.has(0, headerBytes) || (channels != 3 && channels != 4))
        return Failure{QStringLiteral("not a QOI")};
    constexpr quint32 beyond = limits::maximumSide + 1;
    const QSize size(int(qMin(bytes.u32be(4), beyond)), int(qMin(bytes.u32be(8), beyond)));
    if (!limits::allows(size))
        return Failure{tooLarge(size)};
    return ImageInfo{size, channels * 8, 1, qoiCodec.name};
}

/// Reads one code a time: a colour, how often it stands, and the table of the colours seen.
class Unpacker
{
public:
    Unpacker(const QByteArray &file, bool alpha)
        : m_bytes(file)
        , m_solid(alpha ? 0 : 0xff000000)
    {
    }
    /// False where the file ends within the pixels.
    bool fill(QRgb *to, qsizetype count)
    {
        for (qsizetype i = 0; i < count; ++i) {
            if (m_run > 0)
                --m_run;
            else if (!readCode())
                return false;
            to[i] = m_color | m_solid;
        }
        return true;
    }

private:
    bool readCode()
    {
        if (!m_bytes.has(m_at, 1))
            return false;
        const quint8 code = m_bytes.u8(m_at++);
        const int rest = code & 0x3f;
        if (code == 0xfe || code == 0xff) {
            if (!m_bytes.has(m_at, code == 0xff ? 4 : 3))
                return false;
            m_color = qRgba(m_bytes.u8(m_at), m_bytes.u8(m_at + 1), m_bytes.u8(m_at + 2),
                code == 0xff ? m_bytes.u8(m_at + 3) : qAlpha(m_color));
            m_at += code == 0xff ? 4 : 3;
        } else if (code < 0x40) {
            m_color = m_seen[rest];
        } else if (code < 0x80) {
            change((rest >> 4) - 2, (rest >> 2 & 3) - 2, (rest & 3) - 2);
        } else if (code < 0xc0) {
            const quint8 more = m_bytes.u8(m_at++);
            const int green = rest - 32;
            change(green - 8 + (more >> 4), green, green - 8 + (more & 15));
        } else {
            m_run = rest;
        }
        m_seen[(qRed(m_color) * 3 + qGreen(m_color) * 5 + qBlue(m_color) * 7 + qAlpha(m_color) * 11) % 64] = m_color;
        return true;
    }

    void change(int red, int green, int blue)
    {
        m_color = qRgba((qRed(m_color) + red) & 255, (qGreen(m_color) + green) & 255, (qBlue(m_color) + blue) & 255,
            qAlpha(m_color));
    }

    ByteReader m_bytes;
    size_t m_at = headerBytes;
    QRgb m_color = qRgb(0, 0, 0);
    const QRgb m_solid; ///< laid over every colour of a file that says it is opaque
    QRgb m_seen[64] = {};
    int m_run = 0;
};

Result<Picture> decodeQoi(const EncodedFile &file, const DecodeHint &)
{
    const Result<ImageInfo> info = probeQoi(file, -1);
    if (!info)
        return info.failure();
    Picture picture;
    picture.info = *info;
    const bool alpha = info->bitsPerPixel == 32;
    picture.pixels = allocateImage(info->size, alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (picture.isNull())
        return Failure{outOfMemory(info->size)};
    Unpacker unpacker(file.bytes, alpha);
    for (int y = 0; y < info->size.height() && !picture.partial; ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(picture.pixels.scanLine(y));
        picture.partial = !unpacker.fill(row, info->size.width());
        if (picture.partial)
            blankRows(picture.pixels, y);
    }
    return picture;
}

}

const Codec qoiCodec{"QOI", "qoi", sniffQoi, probeQoi, decodeQoi};
