#include "engine/ops/colorset.h"

#include "engine/picture.h"

#include <QRgba64>

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

namespace {

/// Numbers that are found again, by open addressing. 0 marks a free place and is kept apart.
template <class Key> class NumberSet
{
public:
    explicit NumberSet(int limit)
        : m_limit(limit)
        , m_places(std::bit_ceil(size_t(std::min(limit, 512)) * 4 + 4))
    {
    }

    /// False once there are more than the limit.
    bool add(Key key)
    {
        if (key == 0) {
            m_count += m_hasZero ? 0 : 1;
            m_hasZero = true;
            return m_count <= m_limit;
        }
        Key &place = placeOf(m_places, key);
        if (place == key)
            return true;
        place = key;
        if (size_t(++m_count) * 2 > m_places.size())
            grow();
        return m_count <= m_limit;
    }
    int count() const { return m_count; }
    std::vector<Key> keys() const
    {
        std::vector<Key> all;
        std::copy_if(m_places.begin(), m_places.end(), std::back_inserter(all), [](Key key) { return key != 0; });
        if (m_hasZero)
            all.push_back(0);
        return all;
    }

private:
    static Key &placeOf(std::vector<Key> &places, Key key)
    {
        const size_t mask = places.size() - 1;
        size_t at = size_t((quint64(key) * 0x9e3779b97f4a7c15ULL) >> 32) & mask;
        while (places[at] != 0 && places[at] != key)
            at = (at + 1) & mask;
        return places[at];
    }
    void grow()
    {
        std::vector<Key> larger(m_places.size() * 4);
        for (const Key key : m_places) {
            if (key != 0)
                placeOf(larger, key) = key;
        }
        m_places = std::move(larger);
    }
    int m_limit;
    int m_count = 0;
    bool m_hasZero = false;
    std::vector<Key> m_places;
};

// The fourth byte of RGB32 says nothing.
QRgb colorOf(QRgb pixel, bool hasAlpha)
{
    if (!hasAlpha)
        return pixel | 0xff000000;
    return qAlpha(pixel) == 0 ? 0 : pixel;
}

/// Adds every pixel of RGB32 or ARGB32 until there are too many.
void addPixels(const QImage &image, NumberSet<QRgb> &set)
{
    const bool hasAlpha = image.format() == QImage::Format_ARGB32;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        QRgb last = ~row[0];
        for (int x = 0; x < image.width(); ++x) {
            if (row[x] == last)
                continue;
            last = row[x];
            if (!set.add(colorOf(last, hasAlpha)))
                return;
        }
    }
}

std::array<bool, 256> usedValues(const QImage &image)
{
    std::array<bool, 256> used{};
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const row = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x)
            used[row[x]] = true;
    }
    return used;
}

/// The colour of each byte of Indexed8 or Grayscale8.
std::array<QRgb, 256> colorsOfValues(const QImage &image)
{
    std::array<QRgb, 256> colors;
    const bool grey = image.format() == QImage::Format_Grayscale8;
    const QList<QRgb> table = image.colorTable();
    for (int i = 0; i < 256; ++i)
        colors[size_t(i)] = grey ? qRgb(i, i, i) : colorOf(i < table.size() ? table[i] : qRgb(0, 0, 0), true);
    return colors;
}

void addValues(const QImage &image, NumberSet<QRgb> &set)
{
    const QImage bytes = image.format() == QImage::Format_Mono ? image.convertToFormat(QImage::Format_Indexed8) : image;
    const std::array<bool, 256> used = usedValues(bytes);
    const std::array<QRgb, 256> colors = colorsOfValues(bytes);
    for (size_t i = 0; i < 256; ++i) {
        if (used[i] && !set.add(colors[i]))
            return;
    }
}

NumberSet<QRgb> setOf(const QImage &image, int limit)
{
    NumberSet<QRgb> set(limit);
    if (image.depth() == 32)
        addPixels(image, set);
    else
        addValues(image, set);
    return set;
}

int deepCount(const QImage &image, int limit)
{
    NumberSet<quint64> set(limit);
    for (int y = 0; y < image.height(); ++y) {
        const QRgba64 *const row = reinterpret_cast<const QRgba64 *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (!set.add(row[x].isTransparent() ? 0 : quint64(row[x])))
                return set.count();
        }
    }
    return set.count();
}

/// The place of each colour of a table of at most 256.
class ColorPlaces
{
public:
    explicit ColorPlaces(const QList<QRgb> &colors)
    {
        for (int i = 0; i < colors.size(); ++i)
            m_places[findPlace(colors[i])] = {colors[i], i};
    }
    int placeOf(QRgb color) const { return std::max(0, m_places[findPlace(color)].index); }

private:
    struct Place
    {
        QRgb color = 0;
        int index = -1;
    };
    size_t findPlace(QRgb color) const
    {
        size_t at = (color * 0x9e3779b1U) >> 22;
        while (m_places[at].index >= 0 && m_places[at].color != color)
            at = (at + 1) % m_places.size();
        return at;
    }
    std::array<Place, 1024> m_places;
};

}

QList<QRgb> colorsOf(const QImage &image, int limit)
{
    const std::vector<QRgb> keys = setOf(image, limit).keys();
    QList<QRgb> colors(keys.begin(), keys.end());
    std::sort(colors.begin(), colors.end(),
        [](QRgb a, QRgb b) { return qGray(a) != qGray(b) ? qGray(a) < qGray(b) : a < b; });
    return colors;
}

int colorCountOf(const QImage &image, int limit)
{
    return image.format() == QImage::Format_RGBA64 ? deepCount(image, limit) : setOf(image, limit).count();
}

QImage indexedBy(const QImage &image, const QList<QRgb> &colors)
{
    const ColorPlaces places(colors);
    QImage indexed = allocateImage(image.size(), QImage::Format_Indexed8);
    if (indexed.isNull())
        return {};
    indexed.setColorTable(colors);
    if (image.depth() == 32) {
        const bool hasAlpha = image.format() == QImage::Format_ARGB32;
        for (int y = 0; y < image.height(); ++y) {
            const QRgb *const from = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            std::transform(from, from + image.width(), indexed.scanLine(y),
                [&](QRgb pixel) { return uchar(places.placeOf(colorOf(pixel, hasAlpha))); });
        }
        return indexed;
    }
    const QImage bytes = image.format() == QImage::Format_Mono ? image.convertToFormat(QImage::Format_Indexed8) : image;
    std::array<uchar, 256> map;
    std::ranges::transform(
        colorsOfValues(bytes), map.begin(), [&](QRgb color) { return uchar(places.placeOf(color)); });
    for (int y = 0; y < bytes.height(); ++y) {
        const uchar *const from = bytes.constScanLine(y);
        std::transform(from, from + bytes.width(), indexed.scanLine(y), [&](uchar value) { return map[value]; });
    }
    return indexed;
}
