#include "engine/codecs/ownencoders.h"

#include "engine/codecs/iff.h"
#include "engine/codecs/mbm.h"
#include "engine/codecs/psd.h"
#include "engine/codecs/tga.h"

std::span<const Encoder> ownEncoders()
{
    // clang-format off
    static const Encoder rows[] = {
        {TypeCode::Iff, "IFF", encodeIff},
        {TypeCode::Mbm, "MBM", encodeMbm},
        {TypeCode::MbmCompressed, "MBM", encodeMbmCompressed},
        {TypeCode::Psd, "PSD", encodePsd},
        {TypeCode::Tga, "TGA", encodeTga},
        {TypeCode::TgaCompressed, "TGA", encodeTgaCompressed},
    };
    // clang-format on
    return rows;
}
