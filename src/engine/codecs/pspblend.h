#pragma once

#include <QRgba64>

/// A colour whose channels reach from 0 to 1.
struct PspColor
{
    float red = 0, green = 0, blue = 0;
};

/// What the upper colour makes of the lower one where both are opaque.
using PspBlend = PspColor (*)(PspColor below, PspColor above);

/// The function of a blend mode as the file numbers them; null for the normal mode and for those that are not known.
/// Sources: the published format description for the numbers, the W3C's compositing and blending for the formulas.
PspBlend pspBlend(int mode);
