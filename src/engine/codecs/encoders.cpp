#include "engine/codecs/encoders.h"

#if __has_include("engine/codecs/ownencoders.h")
#include "engine/codecs/ownencoders.h"
#endif

#include <vector>

std::span<const Encoder> encoders()
{
    static const std::vector<Encoder> rows = [] {
        std::vector<Encoder> all{
            {TypeCode::Bmp, "BMP", encodeBmp},
            {TypeCode::Dcx, "DCX", encodeDcx},
            {TypeCode::Jpeg, "JPEG", encodeJpeg},
            {TypeCode::Pbm, "PNM", encodePbm},
            {TypeCode::Pcx, "PCX", encodePcx},
            {TypeCode::Pgm, "PNM", encodePgm},
            {TypeCode::Png, "PNG", encodePng},
            {TypeCode::PngInterlaced, "PNG", encodePngInterlaced},
            {TypeCode::Ppm, "PNM", encodePpm},
            {TypeCode::Sgi, "SGI", encodeSgi},
            {TypeCode::Tiff, "TIFF", encodeTiff},
            {TypeCode::TiffJpeg, "TIFF", encodeTiffJpeg},
            {TypeCode::Wbmp, "WBMP", encodeWbmp},
            {TypeCode::Xbm, "XBM", encodeXbm},
            {TypeCode::Xpm, "XPM", encodeXpm},
            {TypeCode::Xwd, "XWD", encodeXwd},
            {TypeCode::Jpeg2000, "JPEG 2000", encodeJpeg2000},
        };
#if __has_include("engine/codecs/ownencoders.h")
        const std::span<const Encoder> own = ownEncoders();
        all.insert(all.end(), own.begin(), own.end());
#endif
        return all;
    }();
    return rows;
}
