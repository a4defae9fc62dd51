#pragma once

#include "engine/codecs/bytes.h"

#include <QList>
#include <QRgb>

/// What the header of a GEM bit image says about colours.
struct GemHeader
{
    enum class Palette {
        None, ///< what Ventura's ninth word or the number of planes makes of it
        PerThousand, ///< XIMG: red, green, blue from 0 to 1000
        Hardware ///< STTT and HyperPaint: the words of the machine, 0RGB
    };
    int planes = 0;
    Palette palette = Palette::None;
    size_t paletteAt = 0;
    int paletteEntries = 0; ///< as far as the header goes
    int colorModel = 0; ///< XIMG: 0 red, green, blue; 1 cyan, magenta, yellow
    bool isVentura = false; ///< a ninth word says what the planes are
    bool isGrey = false;
    bool isVenturaTrueColor = false; ///< three bytes a pixel, whatever the number of planes says
    bool isFifteenBits = false; ///< five bits a channel though there are 16 planes
};

/// Fields that do not stand in the file are 0.
GemHeader readGemHeader(const ByteReader &bytes);

/// As many colours as the planes can tell apart, in the order of the pixel values.
QList<QRgb> gemPalette(const GemHeader &header, const ByteReader &bytes);
