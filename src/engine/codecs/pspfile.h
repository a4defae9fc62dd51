#pragma once

#include "engine/codecs/bytes.h"
#include "engine/result.h"

#include <QColor>
#include <QList>
#include <QRect>

#include <vector>

/// The parts of a Paint Shop Pro file, taken apart but not unpacked. Layout: the published format description, which
/// covers the file versions 3 to 8; later ones only add blocks.

struct PspChannel
{
    enum Kind { Color, TransparencyMask, UserMask, Other };
    Kind kind = Other;
    int number = 0; ///< of a colour: 0 the only one, 1 red, 2 green, 3 blue
    Bytes packed;
};

/// How the bytes of channels are to be understood.
struct PspCoding
{
    enum Compression { Raw, RunLengths, Lz77, Jpeg };
    int compression = Raw;
    int depth = 0; ///< of a pixel: 1, 4, 8 (palette or grey), 16 (grey), 24, 48
    bool isGrey = false;
    QList<QRgb> palette;

    bool isKnown() const;
    bool isIndexed() const { return depth <= 8; }
    int channelBits() const { return isIndexed() ? depth : depth % 3 == 0 ? depth / 3 : depth; }
};

struct PspLayer
{
    enum Type { Raster = 1, FloatingRaster = 2 };
    int type = Raster;
    bool isVisible = true;
    int opacity = 255;
    int blendMode = 0;
    bool blendsByRange = false; ///< shows through where the brightness is out of a range
    QRect place; ///< on the canvas, of what the channels hold
    QRect maskPlace; ///< the same of the user mask
    bool maskDisabled = false;
    std::vector<PspChannel> channels;

    bool isRaster() const { return type == Raster || type == FloatingRaster; }
};

/// A picture of the whole that the writing program stored beside the layers.
struct PspComposite
{
    QSize size;
    bool isThumbnail = false;
    PspCoding coding;
    std::vector<PspChannel> channels;
    Bytes jpeg; ///< instead of channels
};

struct PspTextField
{
    enum Keyword { Title = 0, Artist = 3, Copyright = 4, Description = 5 };
    int keyword = 0;
    Bytes text;
};

struct PspFile
{
    int version = 0;
    QSize size;
    int dotsPerMeter = 0;
    PspCoding coding;
    std::vector<PspLayer> layers; ///< lowest first
    std::vector<PspComposite> composites;
    std::vector<PspTextField> texts;
    bool isCut = false; ///< a block goes on behind the end of the file, or makes no sense
};

bool isPsp(Bytes bytes);

/// The spans in the answer point into `bytes`. Fails without readable image attributes; whatever else is missing is
/// left out.
Result<PspFile> readPspFile(Bytes bytes);
