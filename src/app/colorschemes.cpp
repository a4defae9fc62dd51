#include "app/colorschemes.h"

#include <algorithm>
#include <array>

namespace {
struct Scheme
{
    const char *name;
    bool red, green, blue; ///< the channels that move
    bool back; ///< falls from full instead of rising to it
};
// clang-format off
constexpr std::array<Scheme, 14> schemes{{
    {"RED", true, false, false, false},    {"BACKRED", true, false, false, true},
    {"BLUE", false, false, true, false},   {"BACKBLUE", false, false, true, true},
    {"GREEN", false, true, false, false},  {"BACKGREEN", false, true, false, true},
    {"YELLOW", true, true, false, false},  {"BACKYELLOW", true, true, false, true},
    {"CYAN", false, true, true, false},    {"BACKCYAN", false, true, true, true},
    {"MAGENTA", true, false, true, false}, {"BACKMAGENTA", true, false, true, true},
    {"GRAY", true, true, true, false},     {"BACKGRAY", true, true, true, true},
}};
// clang-format on
constexpr QLatin1String otherScheme("OTHER");

int schemeIndex(const QString &name)
{
    for (std::size_t i = 0; i < schemes.size(); ++i) {
        if (name.compare(QLatin1String(schemes[i].name), Qt::CaseInsensitive) == 0)
            return int(i);
    }
    return name.compare(otherScheme, Qt::CaseInsensitive) == 0 ? int(schemes.size()) : -1;
}

QRgb namedColor(const Scheme &scheme, int y, int height)
{
    const int raised = 255 * y / height;
    const int level = scheme.back ? 255 - raised : raised;
    return qRgb(scheme.red ? level : 0, scheme.green ? level : 0, scheme.blue ? level : 0);
}

// A channel moves by a share of the height at each band, and a band is two lines high: the ramp ends half-way.
int channel(int start, int end, int band, int height)
{
    return std::clamp(int(start + band * (double(end - start) / height)), 0, 255);
}
}

int schemeFlag(const QString &name)
{
    const int index = schemeIndex(name);
    return index < 0 ? 0 : 1 << index;
}

QVector<QRgb> schemeBands(const QString &name, int height, const SchemeColors &other)
{
    QVector<QRgb> bands;
    const int index = schemeIndex(name);
    if (index < 0 || height <= 0)
        return bands;
    bands.reserve(height / 2 + 1);
    for (int y = 0; y <= height; y += 2) {
        const int band = y / 2;
        if (index < int(schemes.size()))
            bands.append(namedColor(schemes[std::size_t(index)], y, height));
        else
            bands.append(qRgb(channel(other.startRed, other.endRed, band, height),
                channel(other.startGreen, other.endGreen, band, height),
                channel(other.startBlue, other.endBlue, band, height)));
    }
    return bands;
}
