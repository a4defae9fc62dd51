#include "engine/codecs/metafile.h"

#include "engine/codecs/wmfplayer.h"
#include "engine/limits.h"

#include <optional>

namespace {

constexpr int mostRecords = 1000000;
constexpr quint32 placeableKey = 0x9ac6cdd7;
constexpr size_t placeableBytes = 22;
constexpr size_t headerBytes = 18;
constexpr int setWindowExtent = 0x020c;
/// Without the placeable header nobody says how large a unit is; taken for pixels, drawings get no larger than this.
constexpr int longestPlainSide = 2048;

struct Header
{
    std::optional<QRectF> window; ///< in logical units, as far as it is known before the records are played
    QSize natural;
    size_t recordsAt = 0;
};

/// The records one after another; `visit` says whether to go on. True when the file's own end was reached.
template <class Visit> bool forEachRecord(const QByteArray &file, size_t at, Visit visit)
{
    const ByteReader reader(file);
    for (int count = 0; count < mostRecords && reader.has(at, 6); ++count) {
        const quint64 size = quint64(reader.u32le(at)) * 2;
        const quint32 function = reader.u16le(at + 4);
        if (size >= 6 && function == 0)
            return true;
        if (size < 6 || !reader.has(at, size))
            return false;
        if (!visit(MetafileRecord(function, bytesOf(file).subspan(at, size))))
            return false;
        at += size;
    }
    return false;
}

bool playRecords(const QByteArray &file, size_t at, MetafileContext &context)
{
    WmfPlayer player(context);
    return forEachRecord(file, at, [&](const MetafileRecord &record) {
        player.play(record);
        return context.spend(200.0 + double(record.size()));
    });
}

/// Where a file draws that says nothing of its window: played once without being seen.
QRectF paintedBounds(const QByteArray &file, size_t at)
{
    QImage canvas(1, 1, QImage::Format_RGB32);
    canvas.fill(Qt::white);
    VectorWork work;
    MetafileContext context(canvas, {}, work);
    ignore(playRecords(file, at, context));
    return context.paintedBounds();
}

Result<Header> placeableHeader(const MetafileRecord &file)
{
    Header header;
    const QRectF box(file.point16(6), file.point16(10));
    const double inch = file.u16(14) == 0 ? 1440 : file.u16(14);
    header.window = box;
    header.natural = naturalVectorSize(QSizeF(std::abs(box.width()), std::abs(box.height())) * 96 / inch);
    header.recordsAt = placeableBytes;
    return header;
}

Header plainHeader(const QByteArray &file)
{
    Header header;
    std::optional<QSizeF> extent;
    ignore(forEachRecord(file, headerBytes, [&extent](const MetafileRecord &record) {
        if (int(record.type) == setWindowExtent)
            extent = QSizeF(record.i16(8), record.i16(6));
        return !extent;
    }));
    if (extent && extent->width() != 0 && extent->height() != 0) {
        header.window = QRectF(QPointF(), *extent);
    } else {
        const QRectF painted = paintedBounds(file, headerBytes);
        if (!painted.isEmpty())
            header.window = painted;
    }
    if (header.window)
        header.natural = naturalVectorSize(
            QSizeF(std::abs(header.window->width()), std::abs(header.window->height())), longestPlainSide);
    return header;
}

bool isPlainHeader(const ByteReader &reader, size_t at)
{
    const int type = reader.u16le(at);
    const int version = reader.u16le(at + 4);
    return (type == 1 || type == 2) && reader.u16le(at + 2) == 9 && (version == 0x100 || version == 0x300);
}

Result<Header> readHeader(const QByteArray &file)
{
    const ByteReader reader(file);
    const bool placeable = reader.u32le(0) == placeableKey;
    if (!isPlainHeader(reader, placeable ? placeableBytes : 0))
        return Failure{QStringLiteral("not a WMF")};
    Result<Header> header = placeable ? placeableHeader(MetafileRecord(0, bytesOf(file))) : plainHeader(file);
    // A placeable header may be empty; the drawing then says more.
    if (header && header->natural.isEmpty() && placeable)
        header = plainHeader(file.mid(placeableBytes));
    header->recordsAt = headerBytes + (placeable ? placeableBytes : 0);
    if (!limits::allows(header->natural, 8))
        return Failure{QStringLiteral("a WMF without a size")};
    return header;
}

ImageInfo infoOf(const Header &header)
{
    return {header.natural, 24, 1, wmfCodec.name};
}

bool sniffWmf(Bytes head)
{
    const ByteReader reader(head);
    if (reader.u32le(0) == placeableKey)
        return true;
    return isPlainHeader(reader, 0) && reader.u16le(16) == 0 && reader.has(0, headerBytes);
}

Result<ImageInfo> probeWmf(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return infoOf(*header);
}

Result<Picture> decodeWmf(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    const QRectF bounds(QPointF(), QSizeF(header->natural));
    return drawnMetafile(infoOf(*header), bounds, hint.target, [&](MetafileContext &context) {
        MetafileMapping &mapping = context.state().mapping;
        mapping.mode = MapMode::Anisotropic;
        mapping.viewportExtent = {bounds.width(), bounds.height()};
        mapping.windowOrigin = header->window->topLeft();
        mapping.windowExtent = {header->window->width(), header->window->height()};
        return playRecords(file.bytes, header->recordsAt, context);
    });
}

}

const Codec wmfCodec{"WMF", "wmf", sniffWmf, probeWmf, decodeWmf};
