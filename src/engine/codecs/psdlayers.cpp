#include "engine/codecs/psdlayers.h"

#include <algorithm>
#include <optional>

namespace psd {

namespace {

/// Reads on and on inside a section; behind its end everything is 0 and `isCut` tells it.
class Cursor
{
public:
    Cursor(Bytes file, size_t begin, size_t end, bool isLarge)
        : m_bytes(file.first(std::min(end, file.size())))
        , m_at(begin)
        , m_isLarge(isLarge)
    {
    }

    size_t at() const { return m_at; }
    size_t left() const { return m_at <= m_bytes.size() ? m_bytes.size() - m_at : 0; }
    bool isCut() const { return m_at > m_bytes.size(); }
    template <size_t N> bool is(const char (&text)[N]) const { return m_bytes.is(m_at, text); }
    void skip(quint64 count) { m_at = count > left() ? m_bytes.size() + 1 : m_at + size_t(count); }
    quint8 u8() { return m_bytes.u8(moved(1)); }
    quint16 u16() { return m_bytes.u16be(moved(2)); }
    quint32 u32() { return m_bytes.u32be(moved(4)); }
    /// A length that takes twice the room in large documents.
    quint64 length() { return m_isLarge ? m_bytes.u64(moved(8), true) : u32(); }

private:
    size_t moved(size_t count)
    {
        const size_t before = m_at;
        skip(count);
        return before;
    }

    ByteReader m_bytes;
    size_t m_at;
    bool m_isLarge;
};

/// The channels of the next layer record when the layer is as large as the picture and nothing is done to it.
std::optional<PlainLayer> readPlainLayer(Cursor &cursor, const Layout &layout)
{
    const bool fillsPicture = cursor.u32() == 0 && cursor.u32() == 0 && cursor.u32() == quint32(layout.size.height())
        && cursor.u32() == quint32(layout.size.width());
    const int count = cursor.u16();
    const int colors = layout.colorChannels();
    if (!fillsPicture || count != colors + 1 || cursor.isCut())
        return {};
    constexpr int transparency = -1;
    QList<int> ids;
    QList<size_t> lengths;
    for (int i = 0; i < count; ++i) {
        ids.append(qint16(cursor.u16()));
        lengths.append(size_t(cursor.length()));
    }
    const bool isNormal = cursor.is("8BIMnorm");
    cursor.skip(8);
    const bool isOpaque = cursor.u8() == 255;
    const bool isClipped = cursor.u8() != 0;
    constexpr int hidden = 2;
    const int flags = cursor.u8();
    cursor.skip(1);
    Cursor extra = cursor;
    const size_t extraBytes = cursor.u32();
    const size_t end = cursor.at() + extraBytes;
    extra.skip(4);
    const quint32 maskBytes = extra.u32();
    extra.skip(maskBytes);
    extra.skip(extra.u32()); // how it blends by brightness; writers put the neutral values here
    const size_t name = extra.u8() + size_t(1);
    extra.skip((name + 3) / 4 * 4 - 1);
    // What stands behind the name may change the look: effects, adjustments, vector masks.
    const bool isBare = maskBytes == 0 && extra.at() >= end;
    cursor.skip(extraBytes);
    if (!isNormal || !isOpaque || isClipped || flags & hidden || !isBare || cursor.isCut())
        return {};

    QList<PlainLayer::Channel> stored;
    size_t at = cursor.at();
    for (const size_t length : lengths) {
        if (length < 2 || length > cursor.left())
            return {};
        stored.append({at, length});
        cursor.skip(length);
        at += length;
    }
    PlainLayer layer;
    for (int channel = 0; channel <= colors; ++channel) {
        const qsizetype index = ids.indexOf(channel == colors ? transparency : channel);
        if (index < 0)
            return {};
        layer.channels.append(stored[index]);
    }
    return layer;
}

/// The layer information: a count, below 0 when the flattened picture has transparency, and the layers.
void readLayerInformation(Cursor cursor, Layout &layout)
{
    const int count = qint16(cursor.u16());
    if (count >= 0 || cursor.isCut())
        return;
    layout.hasMergedAlpha = true;
    if (count == -1 && (layout.mode == Rgb || layout.mode == Grey))
        layout.layer = readPlainLayer(cursor, layout).value_or(PlainLayer());
}

bool hasWideLength(const Cursor &cursor)
{
    return cursor.is("LMsk") || cursor.is("Lr16") || cursor.is("Lr32") || cursor.is("Layr") || cursor.is("Mt16")
        || cursor.is("Mt32") || cursor.is("Mtrn") || cursor.is("Alph") || cursor.is("FMsk") || cursor.is("lnk2")
        || cursor.is("FEid") || cursor.is("FXid") || cursor.is("PxSD");
}

/// The blocks behind the layers. Documents of 16 and 32 bits keep their layers in one of these.
void readBlocks(Cursor cursor, Bytes file, Layout &layout)
{
    while (cursor.is("8BIM") || cursor.is("8B64")) {
        cursor.skip(4);
        const bool holdsLayers = cursor.is("Lr16") || cursor.is("Lr32") || cursor.is("Layr");
        const bool tellsTransparency = cursor.is("Mt16") || cursor.is("Mt32") || cursor.is("Mtrn");
        const bool wide = hasWideLength(cursor);
        cursor.skip(4);
        const quint64 length = wide ? cursor.length() : cursor.u32();
        if (cursor.isCut() || length > cursor.left())
            return;
        if (tellsTransparency)
            layout.hasMergedAlpha = true;
        if (holdsLayers)
            readLayerInformation(Cursor(file, cursor.at(), cursor.at() + size_t(length), layout.isLarge), layout);
        cursor.skip((length + 3) / 4 * 4);
    }
}

}

void readLayers(Bytes file, size_t begin, size_t end, Layout &layout)
{
    Cursor cursor(file, begin, end, layout.isLarge);
    if (cursor.left() == 0)
        return;
    const quint64 length = cursor.length();
    if (cursor.isCut() || length > cursor.left())
        return;
    if (length > 0)
        readLayerInformation(Cursor(file, cursor.at(), cursor.at() + size_t(length), layout.isLarge), layout);
    cursor.skip(length);
    // Then the mask that lies over all layers, whose length is never wide.
    if (cursor.left() < 4)
        return;
    cursor.skip(cursor.u32());
    readBlocks(cursor, file, layout);
}

}
