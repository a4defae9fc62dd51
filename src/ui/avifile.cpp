#include "ui/avifile.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

constexpr int mostFrames = 4096;
constexpr int headerSize = 40; ///< of a BITMAPINFOHEADER
constexpr quint32 runLengthCode = 1; ///< BI_RLE8

/// Little-endian numbers; 0 behind the end.
quint32 number32(QByteArrayView bytes, qsizetype at)
{
    return at + 4 <= bytes.size() ? qFromLittleEndian<quint32>(bytes.data() + at) : 0;
}

int number16(QByteArrayView bytes, qsizetype at)
{
    return at + 2 <= bytes.size() ? qFromLittleEndian<quint16>(bytes.data() + at) : 0;
}

uchar byteAt(QByteArrayView bytes, qsizetype at)
{
    return static_cast<uchar>(bytes[at]);
}

/// Chunks one behind the other: a name of four letters, a length, the body, a byte to make it even. A body that the
/// file's end cuts off is told as far as it goes.
template <class Tell> void forEachChunk(QByteArrayView bytes, Tell tell)
{
    for (qsizetype at = 0; at + 8 <= bytes.size();) {
        const qsizetype length = number32(bytes, at + 4);
        const QByteArrayView body = bytes.sliced(at + 8, std::min(length, bytes.size() - at - 8));
        tell(bytes.sliced(at, 4), body);
        at += 8 + body.size() + (length & 1);
    }
}

bool isList(QByteArrayView name, QByteArrayView body, const char *type)
{
    return name == "LIST" && body.size() >= 4 && body.first(4) == type;
}

} // namespace

Result<AviFile> AviFile::open(const QByteArray &bytes)
{
    AviFile film;
    if (bytes.size() > largestFile)
        return Failure{QStringLiteral("the film is too large")};
    if (bytes.size() < 12 || !bytes.startsWith("RIFF") || bytes.mid(8, 4) != "AVI ")
        return Failure{QStringLiteral("no AVI file")};
    film.m_bytes = bytes;
    forEachChunk(QByteArrayView(film.m_bytes).sliced(12), [&film](QByteArrayView name, QByteArrayView body) {
        if (isList(name, body, "hdrl"))
            film.readHeaders(body.sliced(4));
        else if (isList(name, body, "movi"))
            film.readFrames(body.sliced(4));
    });
    if (film.m_size.isEmpty() || film.m_frames.isEmpty())
        return Failure{QStringLiteral("no film of bitmaps in the AVI file")};
    return film;
}

void AviFile::readHeaders(QByteArrayView list)
{
    forEachChunk(list, [this](QByteArrayView name, QByteArrayView body) {
        if (name == "avih" && body.size() >= 4)
            m_frameTime = int(number32(body, 0) / 1000);
        else if (isList(name, body, "strl"))
            readStream(body.sliced(4));
    });
    m_frameTime = std::clamp(m_frameTime, 10, 10'000);
}

void AviFile::readStream(QByteArrayView list)
{
    const int stream = m_streams++;
    bool video = false;
    forEachChunk(list, [&](QByteArrayView name, QByteArrayView body) {
        if (name == "strh") {
            video = m_video < 0 && body.size() >= 28 && body.first(4) == "vids";
            const quint32 scale = number32(body, 20);
            const quint32 rate = number32(body, 24);
            if (video && scale > 0 && rate > 0)
                m_frameTime = int(std::min<quint64>(quint64(scale) * 1000 / rate, 10'000));
        } else if (name == "strf" && video) {
            m_video = stream;
            readFormat(body);
        }
    });
}

void AviFile::readFormat(QByteArrayView format)
{
    const auto start = qsizetype(number32(format, 0));
    const auto width = static_cast<qint32>(number32(format, 4));
    const auto height = static_cast<qint32>(number32(format, 8));
    const quint32 code = number32(format, 16);
    m_bitsPerPixel = number16(format, 14);
    m_runs = code == runLengthCode && m_bitsPerPixel == 8;
    const bool plain = code == 0 && (m_bitsPerPixel == 8 || m_bitsPerPixel == 24 || m_bitsPerPixel == 32);
    if (start < headerSize || (!plain && !m_runs) || width < 1 || width > largestSide || height == 0
        || height < -largestSide || height > largestSide)
        return;
    m_size = QSize(width, std::abs(height));
    m_topDown = height < 0;
    quint32 colors = number32(format, 32);
    colors = colors == 0 || colors > 256 ? 256 : colors;
    m_palette.fill(qRgb(0, 0, 0), 256);
    bool hasOpacity = false;
    for (quint32 i = 0; i < colors && start + qsizetype(i) * 4 + 4 <= format.size(); ++i) {
        m_palette[i] = number32(format, start + qsizetype(i) * 4);
        hasOpacity = hasOpacity || qAlpha(m_palette[i]) != 0;
    }
    for (QRgb &color : m_palette)
        color = hasOpacity ? qPremultiply(color) : color | 0xff000000U;
}

void AviFile::readFrames(QByteArrayView list)
{
    forEachChunk(list, [this](QByteArrayView name, QByteArrayView body) {
        if (isList(name, body, "rec "))
            return readFrames(body.sliced(4));
        bool isNumber = false;
        const int stream = name.first(2).toByteArray().toInt(&isNumber);
        const QByteArrayView kind = name.sliced(2);
        if (isNumber && stream == m_video && (kind == "db" || kind == "dc") && m_frames.size() < mostFrames)
            m_frames.append(body);
    });
}

void AviFile::drawFrame(int index, QImage &picture) const
{
    if (picture.size() != m_size || picture.format() != QImage::Format_ARGB32_Premultiplied) {
        picture = QImage(m_size, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
    }
    if (index < 0 || index >= m_frames.size() || picture.isNull())
        return;
    if (m_runs)
        drawRuns(m_frames[index], picture);
    else
        drawRows(m_frames[index], picture);
}

/// The place of a line of the file, which begins at the bottom.
uchar *AviFile::row(int line, QImage &picture) const
{
    return picture.scanLine(m_topDown ? line : m_size.height() - 1 - line);
}

void AviFile::drawRows(QByteArrayView bytes, QImage &picture) const
{
    const qsizetype stride = (qsizetype(m_size.width()) * m_bitsPerPixel + 31) / 32 * 4;
    for (int line = 0; line < m_size.height() && (line + 1) * stride <= bytes.size(); ++line) {
        const QByteArrayView from = bytes.sliced(line * stride, stride);
        auto *to = reinterpret_cast<QRgb *>(row(line, picture));
        const int bytesPerPixel = m_bitsPerPixel / 8;
        for (int x = 0; x < m_size.width(); ++x) {
            const qsizetype at = qsizetype(x) * bytesPerPixel;
            to[x] = bytesPerPixel == 1 ? m_palette[byteAt(from, at)]
                                       : qRgb(byteAt(from, at + 2), byteAt(from, at + 1), byteAt(from, at));
        }
    }
}

/// Run-length code of 8 bits: a count and a colour; or 0 and 0 for the next line, 1 for the end, 2 and two numbers for
/// a step to the right and up, 3 and more for so many colours as they are, filled up to an even number of bytes.
void AviFile::drawRuns(QByteArrayView bytes, QImage &picture) const
{
    int x = 0;
    int line = 0;
    const auto put = [&](uchar color) {
        if (x < m_size.width() && line < m_size.height())
            reinterpret_cast<QRgb *>(row(line, picture))[x] = m_palette[color];
        x = std::min(x + 1, m_size.width());
    };
    qsizetype at = 0;
    while (at + 2 <= bytes.size() && line < m_size.height()) {
        const int count = byteAt(bytes, at);
        const uchar value = byteAt(bytes, at + 1);
        at += 2;
        if (count > 0) {
            for (int i = 0; i < count; ++i)
                put(value);
        } else if (value == 0) {
            x = 0;
            ++line;
        } else if (value == 1) {
            return;
        } else if (value == 2) {
            if (at + 2 > bytes.size())
                return;
            x = std::min(x + byteAt(bytes, at), m_size.width());
            line += byteAt(bytes, at + 1);
            at += 2;
        } else {
            for (int i = 0; i < value && at + i < bytes.size(); ++i)
                put(byteAt(bytes, at + i));
            at += (value + 1) & ~1;
        }
    }
}
