#include "engine/codecs/ownencoders.h"

#include "engine/codecs/mbm.h"
#include "engine/codecs/psd.h"
#include "engine/codecs/tga.h"

std::span<const Encoder> ownEncoders()
{
    // one row a line
    static const Encoder rows[] = {
        {TypeCode::Mbm, "MBM", encodeMbm}, {TypeCode::MbmCompressed, "MBM", encodeMbmCompressed},
        {TypeCode::Psd, "PSD", encodePsd}, {TypeCode::Tga, "TGA", encodeTga},
        {TypeCode::TgaCompressed, "TGA", encodeTgaCompressed},
        // more follow
    };
    return rows;
}
