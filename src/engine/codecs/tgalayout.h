#pragma once

#include "engine/codecs/bytes.h"
#include "engine/result.h"

#include <QSize>

/// Numbers of the TGA format that its reader and its writer share.
namespace tga {

inline constexpr size_t headerBytes = 18;
inline constexpr size_t footerBytes = 26;
inline constexpr char signature[] = "TRUEVISION-XFILE."; ///< in the footer, with its closing zero
inline constexpr size_t extensionBytes = 495;
inline constexpr size_t commentAt = 43; ///< in the extension area: four lines of 80 characters and a zero
inline constexpr size_t commentLine = 81;
inline constexpr size_t commentLines = 4;
inline constexpr size_t alphaKindAt = 494; ///< in the extension area

enum Kind { Palette = 1, TrueColor = 2, Grey = 3, RunLengths = 8 };
enum Descriptor { AlphaBits = 0x0f, FromRight = 0x10, FromTop = 0x20, Interleaved = 0xc0 };
enum AlphaKind { Straight = 3, Multiplied = 4 }; ///< other kinds mean that there is nothing to see in it

struct Layout
{
    QSize size;
    int kind = TrueColor;
    bool isPacked = false;
    int bits = 0; ///< of a stored pixel
    int descriptor = 0;
    size_t mapAt = 0;
    int mapFirst = 0;
    int mapLength = 0;
    int mapBits = 0;
    Bytes pixels; ///< up to the end of the file
    bool hasAlpha = false; ///< in pixels, or with a palette in its entries
    bool hasTrustedAlpha = false; ///< the file says so in so many words
    bool isMultiplied = false;
    QByteArray comment;
    size_t pixelBytes() const { return size_t(bits + 7) / 8; }
};

/// The header with all that can be checked, and what the extension area tells.
Result<Layout> readLayout(Bytes file);

}
