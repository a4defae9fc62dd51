#pragma once

/// Window layout in twips where a rule says so: 15 twips are one pixel at scale 1.
inline constexpr int pixelsFromTwips(int twips)
{
    return twips / 15;
}
