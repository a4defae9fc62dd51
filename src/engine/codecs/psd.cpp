#include "engine/codecs/psd.h"

#include "engine/codecs/pixels.h"
#include "engine/codecs/psdcolors.h"
#include "engine/limits.h"

#include <cmath>

using psd::Layout;

namespace {

Result<Layout> openPsd(const QByteArray &file)
{
    Result<Layout> layout = psd::readLayout(bytesOf(file));
    if (layout && !limits::allows(layout->size, layout->depth > 8 ? 8 : 4))
        return Failure{tooLarge(layout->size)};
    return layout;
}

ImageInfo infoOf(const Layout &layout)
{
    return {layout.size, layout.depth * layout.channels, 1, psdCodec.name};
}

int dotsPerMeter(double dotsPerInch)
{
    return int(std::lround(dotsPerInch / 0.0254));
}

bool sniffPsd(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "8BPS") && (bytes.u16be(4) == 1 || bytes.u16be(4) == 2);
}

Result<ImageInfo> probePsd(const EncodedFile &file, int)
{
    const Result<Layout> layout = openPsd(file.bytes);
    if (!layout)
        return layout.failure();
    return infoOf(*layout);
}

/// Whether the pixels still are what the document's profile describes.
bool keepsProfile(const Layout &layout)
{
    return layout.depth <= 16 && (layout.mode == psd::Grey || layout.mode == psd::Indexed || layout.mode == psd::Rgb);
}

Result<Picture> decodePsd(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Layout> layout = openPsd(file.bytes);
    if (!layout)
        return layout.failure();
    if (hint.page != 0)
        return Failure{QStringLiteral("a Photoshop document holds one picture")};
    const Result<psd::Planes> planes = psd::Planes::open(bytesOf(file.bytes), *layout);
    if (!planes)
        return planes.failure();
    Result<psd::Pixels> pixels = psd::readPixels(*planes, *layout);
    if (!pixels)
        return pixels.failure();
    Picture picture;
    picture.info = infoOf(*layout);
    picture.pixels = std::move(pixels->image);
    picture.partial = !pixels->complete;
    picture.pixels.setDotsPerMeterX(dotsPerMeter(layout->dotsPerInchX));
    picture.pixels.setDotsPerMeterY(dotsPerMeter(layout->dotsPerInchY));
    if (keepsProfile(*layout))
        picture.iccProfile = layout->iccProfile;
    picture.metadata = layout->metadata;
    return picture;
}

}

const Codec psdCodec{"PSD", "psd pdd psb", sniffPsd, probePsd, decodePsd};
