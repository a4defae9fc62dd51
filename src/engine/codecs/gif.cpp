#include "engine/codecs/qtformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/gifframes.h"
#include "engine/codecs/metadatablocks.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

namespace {

/// What a walk over the blocks finds, without unpacking a pixel. Layout: the published GIF89a format.
struct Walk
{
    QSize canvas;
    int bits = 0;
    int frames = 0;
    bool firstFrameComplete = false;
};

size_t tableBytes(quint8 flags)
{
    return flags & 0x80 ? size_t(3) << ((flags & 7) + 1) : 0;
}

/// Behind the chain of sub-blocks that starts at `at`; past the end of the file when it is cut.
size_t behindSubBlocks(const ByteReader &bytes, size_t at)
{
    while (bytes.has(at, 1)) {
        const size_t length = bytes.u8(at);
        at += 1 + length;
        if (length == 0)
            return at;
    }
    return bytes.size() + 1;
}

Result<Walk> walkBlocks(const QByteArray &file)
{
    const ByteReader bytes(file);
    if ((!bytes.is(0, "GIF87a") && !bytes.is(0, "GIF89a")) || !bytes.has(0, 13))
        return Failure{QStringLiteral("not a GIF")};
    Walk walk;
    walk.canvas = QSize(bytes.u16le(6), bytes.u16le(8));
    walk.bits = (bytes.u8(10) & 7) + 1;
    size_t at = 13 + tableBytes(bytes.u8(10));
    while (bytes.has(at, 1) && walk.frames < limits::maximumPages) {
        const quint8 kind = bytes.u8(at);
        if (kind == 0x21) {
            at = behindSubBlocks(bytes, at + 2);
        } else if (kind == 0x2c && bytes.has(at, 10)) {
            if (walk.canvas.isEmpty())
                walk.canvas = QSize(bytes.u16le(at + 5), bytes.u16le(at + 7));
            // Without colours for all the frames, those of the first one tell.
            if (walk.frames == 0 && !(bytes.u8(10) & 0x80) && bytes.u8(at + 9) & 0x80)
                walk.bits = (bytes.u8(at + 9) & 7) + 1;
            at = behindSubBlocks(bytes, at + 10 + tableBytes(bytes.u8(at + 9)) + 1);
            if (walk.frames++ == 0)
                walk.firstFrameComplete = at <= bytes.size();
        } else {
            break;
        }
    }
    if (walk.frames == 0)
        return Failure{QStringLiteral("a GIF without a picture")};
    // Old writers left the canvas empty; then it is as large as the first frame.
    if (!limits::allows(walk.canvas, 8))
        return Failure{tooLarge(walk.canvas)};
    return walk;
}

ImageInfo infoOf(const Walk &walk)
{
    return {walk.canvas, walk.bits, walk.frames, gifCodec.name};
}

bool sniffGif(Bytes head)
{
    return ByteReader(head).is(0, "GIF87a") || ByteReader(head).is(0, "GIF89a");
}

Result<ImageInfo> probeGif(const EncodedFile &file, int)
{
    const Result<Walk> walk = walkBlocks(file.bytes);
    if (!walk)
        return walk.failure();
    return infoOf(*walk);
}

Result<Picture> decodeGif(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Walk> walk = walkBlocks(file.bytes);
    if (!walk)
        return walk.failure();
    if (hint.page < 0 || hint.page >= walk->frames)
        return Failure{QStringLiteral("the GIF has no frame %1").arg(hint.page)};
    Result<GifPicture> image = readGifFrame(file.bytes, walk->canvas, hint.page);
    if (!image)
        return image.failure();
    Picture picture;
    picture.info = infoOf(*walk);
    picture.pixels = std::move(image->pixels);
    picture.info.size = picture.pixels.size();
    picture.partial = !walk->firstFrameComplete || !image->complete;
    picture.metadata = gifMetadata(file.bytes);
    return picture;
}

}

const Codec gifCodec{"GIF", "gif", sniffGif, probeGif, decodeGif};
