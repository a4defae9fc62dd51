#pragma once

#include "engine/picture.h"
#include "engine/result.h"

#include <QString>

/// The output formats by the numbers that the program has always given them.
enum class TypeCode {
    Bmp = 2,
    Dcx = 3,
    Jpeg = 4,
    Pbm = 7,
    Pcx = 8,
    Pgm = 9,
    Png = 11,
    PngInterlaced = 12,
    Ppm = 13,
    Sgi = 15,
    Tga = 16,
    TgaCompressed = 17,
    Tiff = 18,
    TiffJpeg = 23,
    Psd = 31,
    Iff = 35,
    Wbmp = 41,
    Xbm = 43,
    Xpm = 44,
    Xwd = 45,
    Mbm = 50,
    MbmCompressed = 51,
    Jpeg2000 = 56
};

struct EncodeOptions
{
    bool jpegFastSave = false; ///< quicker transform, default Huffman tables, colours at half resolution
    int jpegQuality = 80; ///< 1 to 100
    double jp2Quality = 1.0; ///< 0.01 to 1.0; 1.0 is without loss
    /// Error diffusion where the format holds fewer colours than the picture: PBM and the other two-colour formats,
    /// and PGM. Without it a threshold decides, or the nearest grey.
    bool diffuse = false;
};

/// The bytes of a file of that format with all pixels of the picture.
///
/// A picture is written at the depth it has wherever the format knows that depth, else at the next larger one; a format
/// that knows only smaller ones reduces (see EncodeOptions::diffuse). Where a format has no transparency the picture is
/// laid over white. EXIF (its orientation set to upright, its stored thumbnail dropped), IPTC, XMP, comment, ICC
/// profile and resolution go along wherever the format holds them. Fails for an empty picture, for one that the format
/// cannot hold (a side too long), and for a decode that gave only reduced pixels.
Result<QByteArray> encode(const Picture &picture, TypeCode typeCode, const EncodeOptions &options = {});

/// encode() and an atomic write: an existing file is replaced as a whole or not at all. The name is taken as it is.
Result<void> encodeFile(
    const Picture &picture, const QString &path, TypeCode typeCode, const EncodeOptions &options = {});
