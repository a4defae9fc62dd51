#include "engine/codecs/ownencoders.h"

#include "engine/codecs/iff.h"

std::span<const Encoder> ownEncoders()
{
    static constexpr Encoder encoders[] = {
        {TypeCode::Iff, "IFF", encodeIff},
        // one row a line
    };
    return encoders;
}
