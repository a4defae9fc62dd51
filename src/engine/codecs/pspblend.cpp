#include "engine/codecs/pspblend.h"

#include <algorithm>
#include <cmath>

namespace {

using Channel = float (*)(float below, float above);

float multiplied(float below, float above)
{
    return below * above;
}

float screened(float below, float above)
{
    return below + above - below * above;
}

float darker(float below, float above)
{
    return std::min(below, above);
}

float lighter(float below, float above)
{
    return std::max(below, above);
}

float hardLight(float below, float above)
{
    return above <= 0.5F ? multiplied(below, 2 * above) : screened(below, 2 * above - 1);
}

float overlaid(float below, float above)
{
    return hardLight(above, below);
}

float softLight(float below, float above)
{
    if (above <= 0.5F)
        return below - (1 - 2 * above) * below * (1 - below);
    const float lifted = below <= 0.25F ? ((16 * below - 12) * below + 4) * below : std::sqrt(below);
    return below + (2 * above - 1) * (lifted - below);
}

float difference(float below, float above)
{
    return std::abs(below - above);
}

float excluded(float below, float above)
{
    return below + above - 2 * below * above;
}

float dodged(float below, float above)
{
    return below <= 0 ? 0 : above >= 1 ? 1 : std::min(1.0F, below / (1 - above));
}

float burned(float below, float above)
{
    return below >= 1 ? 1 : above <= 0 ? 0 : 1 - std::min(1.0F, (1 - below) / above);
}

template <Channel channel> PspColor each(PspColor below, PspColor above)
{
    return {channel(below.red, above.red), channel(below.green, above.green), channel(below.blue, above.blue)};
}

float luminosity(PspColor color)
{
    return 0.3F * color.red + 0.59F * color.green + 0.11F * color.blue;
}

float saturation(PspColor color)
{
    return std::max({color.red, color.green, color.blue}) - std::min({color.red, color.green, color.blue});
}

PspColor withLuminosity(PspColor color, float wanted)
{
    const float change = wanted - luminosity(color);
    PspColor moved{color.red + change, color.green + change, color.blue + change};
    const float middle = luminosity(moved);
    const float lowest = std::min({moved.red, moved.green, moved.blue});
    const float highest = std::max({moved.red, moved.green, moved.blue});
    float scale = 1;
    if (lowest < 0)
        scale = middle / (middle - lowest);
    if (highest > 1)
        scale = std::min(scale, (1 - middle) / (highest - middle));
    const auto pulled = [&](float value) { return middle + (value - middle) * scale; };
    return {pulled(moved.red), pulled(moved.green), pulled(moved.blue)};
}

PspColor withSaturation(PspColor color, float wanted)
{
    const float own = saturation(color);
    const float lowest = std::min({color.red, color.green, color.blue});
    const auto spread = [&](float value) { return own > 0 ? (value - lowest) * wanted / own : 0; };
    return {spread(color.red), spread(color.green), spread(color.blue)};
}

PspColor hue(PspColor below, PspColor above)
{
    return withLuminosity(withSaturation(above, saturation(below)), luminosity(below));
}

PspColor saturate(PspColor below, PspColor above)
{
    return withLuminosity(withSaturation(below, saturation(above)), luminosity(below));
}

PspColor colored(PspColor below, PspColor above)
{
    return withLuminosity(above, luminosity(below));
}

PspColor lit(PspColor below, PspColor above)
{
    return withLuminosity(below, luminosity(above));
}

}

PspBlend pspBlend(int mode)
{
    // 9, dissolve, scatters pixels by chance: it stays a plain mix. 17 to 20 are the newer forms of 3 to 6.
    static constexpr PspBlend modes[] = {nullptr, each<darker>, each<lighter>, hue, saturate, colored, lit,
        each<multiplied>, each<screened>, nullptr, each<overlaid>, each<hardLight>, each<softLight>, each<difference>,
        each<dodged>, each<burned>, each<excluded>, hue, saturate, colored, lit};
    return mode >= 0 && mode < int(std::size(modes)) ? modes[mode] : nullptr;
}
