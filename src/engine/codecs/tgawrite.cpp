#include "engine/codecs/encodepixels.h"
#include "engine/codecs/runs.h"
#include "engine/codecs/tga.h"
#include "engine/codecs/tgalayout.h"
#include "engine/limits.h"

#include <algorithm>
#include <vector>

using namespace tga;

namespace {

struct Stored
{
    QImage image; ///< Grayscale8, Indexed8, RGB32 or ARGB32
    QList<QRgb> palette;
    bool hasAlpha = false;
    Kind kind() const
    {
        if (image.format() == QImage::Format_Grayscale8)
            return Grey;
        return palette.isEmpty() ? TrueColor : Palette;
    }
    int pixelBytes() const { return kind() != TrueColor ? 1 : hasAlpha ? 4 : 3; }
};

Stored storedPixels(const Picture &picture)
{
    if (picture.pixels.format() == QImage::Format_Grayscale8)
        return {picture.pixels, {}, false};
    // Many readers refuse palettes with transparency, or pass it over.
    if (hasTransparency(picture))
        return {rgbOrArgb(picture), {}, true};
    if (const QImage indexed = opaqueIndexed(picture); !indexed.isNull())
        return {indexed, indexed.colorTable(), false};
    return {opaqueRgb(picture), {}, false};
}

void appendHeader(ByteWriter &out, const Stored &stored, bool packed)
{
    const bool hasPalette = stored.kind() == Palette;
    out.u8(0);
    out.u8(hasPalette);
    out.u8(quint32(stored.kind() | (packed ? RunLengths : 0)));
    out.u16le(0);
    out.u16le(quint32(stored.palette.size()));
    out.u8(hasPalette ? 24 : 0);
    out.u32le(0);
    out.u16le(quint32(stored.image.width()));
    out.u16le(quint32(stored.image.height()));
    out.u8(quint32(stored.pixelBytes() * 8));
    out.u8(FromTop | (stored.hasAlpha ? 8 : 0));
    for (const QRgb color : stored.palette) {
        for (const int channel : {qBlue(color), qGreen(color), qRed(color)})
            out.u8(quint32(channel));
    }
}

void convertRow(const Stored &stored, const uchar *from, std::vector<uchar> &to)
{
    const int step = stored.pixelBytes();
    if (step == 1) {
        std::copy_n(from, to.size(), to.begin());
        return;
    }
    const QRgb *const colors = reinterpret_cast<const QRgb *>(from);
    uchar *pixel = to.data();
    for (int x = 0; x < stored.image.width(); ++x, pixel += step) {
        pixel[0] = uchar(qBlue(colors[x]));
        pixel[1] = uchar(qGreen(colors[x]));
        pixel[2] = uchar(qRed(colors[x]));
        if (step == 4)
            pixel[3] = uchar(qAlpha(colors[x]));
    }
}

void appendPixels(ByteWriter &out, const Stored &stored, bool packed)
{
    const size_t step = size_t(stored.pixelBytes());
    std::vector<uchar> row(size_t(stored.image.width()) * step);
    if (!packed)
        out.bytes.reserve(out.bytes.size() + qsizetype(row.size()) * stored.image.height());
    for (int y = 0; y < stored.image.height(); ++y) {
        convertRow(stored, stored.image.constScanLine(y), row);
        if (packed)
            packRuns(row, RunCode::Targa, step, out.bytes);
        else
            out.bytes.append(reinterpret_cast<const char *>(row.data()), qsizetype(row.size()));
    }
}

/// The comment in the format's four lines of 80 characters; false when it does not fit.
bool commentFits(const QByteArray &comment, QByteArray &area)
{
    area = QByteArray(commentLine * commentLines, '\0');
    const QList<QByteArray> lines = comment.split('\n');
    if (lines.size() > qsizetype(commentLines))
        return false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].size() >= qsizetype(commentLine) || lines[i].contains('\0'))
            return false;
        area.replace(i * qsizetype(commentLine), lines[i].size(), lines[i]);
    }
    return true;
}

void appendExtension(ByteWriter &out, const Stored &stored, const QByteArray &comment)
{
    QByteArray lines;
    const bool hasComment = !comment.isEmpty() && commentFits(comment, lines);
    if (!stored.hasAlpha && !hasComment)
        return;
    const qsizetype at = out.bytes.size();
    out.u16le(extensionBytes);
    out.fill(qsizetype(extensionBytes) - 2);
    if (hasComment)
        out.bytes.replace(at + qsizetype(commentAt), lines.size(), lines);
    out.bytes[at + qsizetype(alphaKindAt)] = char(stored.hasAlpha ? Straight : 0);
    out.u32le(quint32(at));
    out.u32le(0);
    out.text(signature);
    out.u8(0);
}

Result<QByteArray> write(const Picture &picture, bool packed)
{
    const Stored stored = storedPixels(picture);
    if (stored.image.width() > limits::maximumSide || stored.image.height() > limits::maximumSide)
        return Failure{QStringLiteral("a TGA has no more than 65535 pixels to a side")};
    ByteWriter out;
    appendHeader(out, stored, packed);
    appendPixels(out, stored, packed);
    if (out.bytes.size() <= qsizetype(0xffffffffU))
        appendExtension(out, stored, picture.metadata.comment);
    return out.bytes;
}

}

Result<QByteArray> encodeTga(const Picture &picture, const EncodeOptions &)
{
    return write(picture, false);
}

Result<QByteArray> encodeTgaCompressed(const Picture &picture, const EncodeOptions &)
{
    return write(picture, true);
}
