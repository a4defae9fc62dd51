#pragma once

#include "engine/codecs/bytes.h"
#include "engine/picture.h"
#include "engine/result.h"

#include <QList>
#include <QSize>

/// What the reader and the writer of Photoshop documents share.
namespace psd {

enum Mode { Bitmap = 0, Grey = 1, Indexed = 2, Rgb = 3, Cmyk = 4, Multichannel = 7, Duotone = 8, Lab = 9 };
enum Compression { Plain = 0, PackBits = 1, Zip = 2, PredictedZip = 3 };
enum Resource {
    Resolution = 1005,
    Iptc = 1028,
    IccProfile = 1039,
    TransparentIndex = 1047,
    Exif = 1058,
    Xmp = 1060,
};
inline constexpr size_t headerBytes = 26;
inline constexpr size_t paletteBytes = 768; ///< 256 of red, of green, of blue

/// A layer as large as the picture that is shown as it is: its channels are the picture before it was flattened.
struct PlainLayer
{
    struct Channel
    {
        size_t at = 0; ///< of the compression's number
        size_t length = 0;
    };
    QList<Channel> channels; ///< in the order of the flattened picture: colours, then transparency
};

struct Layout
{
    QSize size;
    bool isLarge = false; ///< PSB: wider lengths
    int channels = 0;
    int depth = 0; ///< bits a channel
    int mode = Rgb;
    bool hasMergedAlpha = false; ///< the first channel behind the colours is the transparency
    QList<QRgb> palette;
    int transparentIndex = -1;
    double dotsPerInchX = 0;
    double dotsPerInchY = 0;
    QByteArray iccProfile;
    Metadata metadata;
    PlainLayer layer; ///< without channels when there is no such layer
    size_t pixelsAt = 0; ///< of the compression's number
    int colorChannels() const;
    bool hasAlpha() const
    {
        return hasMergedAlpha && channels > colorChannels() && mode != Bitmap && mode != Indexed
            && mode != Multichannel;
    }
    int usedChannels() const { return colorChannels() + (hasAlpha() ? 1 : 0); }
    size_t rowBytes() const { return (size_t(size.width()) * size_t(depth) + 7) / 8; }
};

/// Header, resources and layer section. Fails when these do not lead to the pixels.
Result<Layout> readLayout(Bytes file);

}
