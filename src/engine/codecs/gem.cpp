#include "engine/codecs/gem.h"

#include "engine/codecs/gemplayer.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/vectorcanvas.h"
#include "engine/limits.h"

namespace {

constexpr int nominalDepth = 24; ///< a drawing has none; it is painted in true colour

Result<GemHeader> readHeader(const EncodedFile &file)
{
    const std::optional<GemHeader> header = gemHeader(ByteReader(file.bytes));
    if (!header)
        return Failure{QStringLiteral("not a GEM metafile")};
    if (!limits::allows(header->size, 8))
        return Failure{tooLarge(header->size)};
    return *header;
}

ImageInfo infoOf(const GemHeader &header)
{
    return {header.size, nominalDepth, 1, gemCodec.name};
}

bool sniffGem(Bytes head)
{
    return gemHeader(ByteReader(head)).has_value();
}

Result<ImageInfo> probeGem(const EncodedFile &file, int)
{
    const Result<GemHeader> header = readHeader(file);
    if (!header)
        return header.failure();
    return infoOf(*header);
}

Result<Picture> decodeGem(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<GemHeader> header = readHeader(file);
    if (!header)
        return header.failure();
    if (hint.page != 0)
        return Failure{QStringLiteral("a GEM metafile has one picture")};
    Result<QImage> canvas = vectorGround(renderedVectorSize(header->size, hint.target), Qt::white);
    if (!canvas)
        return canvas.failure();
    QPainter painter(&*canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    const QTransform reduced = QTransform::fromScale(
        double(canvas->width()) / header->size.width(), double(canvas->height()) / header->size.height());
    GemPlayer player(painter, header->toPixels * reduced);
    const ByteReader bytes(file.bytes);
    size_t at = header->bytes;
    while (const std::optional<GemRecord> record = nextGemRecord(bytes, at))
        player.play(*record);
    painter.end();
    // A whole file ends with its mark.
    const bool isCut = !bytes.has(at, 2) || bytes.u16le(at) != 0xffff;
    return vectorPicture(*canvas, infoOf(*header), isCut || player.leftOut());
}

}

const Codec gemCodec{"GEM", "gem", sniffGem, probeGem, decodeGem};
