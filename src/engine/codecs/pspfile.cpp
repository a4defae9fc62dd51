#include "engine/codecs/pspfile.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

enum BlockId {
    ImageBlock = 0,
    CreatorBlock = 1,
    PaletteBlock = 2,
    LayerBankBlock = 3,
    LayerBlock = 4,
    ChannelBlock = 5,
    CompositeImageBlock = 9,
    CompositeBankBlock = 16,
    CompositeAttributesBlock = 17,
    JpegBlock = 18,
};

constexpr size_t fileHeader = 36;
constexpr int firstChunkedVersion = 4; ///< from here on every block begins with a chunk that tells its own length
constexpr size_t maximumLayers = 10'000;
constexpr int maximumPlace = 1'000'000; ///< pixels from the canvas' corner

struct Block
{
    int id = 0;
    size_t data = 0; ///< where its data begin
    size_t end = 0;
    size_t firstPart = 0; ///< length of what stands in front of pixels and inner blocks
};

class Parser
{
public:
    explicit Parser(Bytes bytes)
        : m_bytes(bytes)
        , m_reader(bytes)
    {
    }
    Result<PspFile> read();

private:
    bool chunked() const { return m_file.version >= firstChunkedVersion; }
    std::optional<Block> blockAt(size_t at, size_t end);
    template <class Call> void eachBlock(size_t at, size_t end, Call call);
    void readImage(const Block &block);
    void readCreator(const Block &block);
    QList<QRgb> paletteOf(const Block &block) const;
    void readLayer(const Block &block);
    size_t behindChannelCounts(size_t at, size_t end);
    PspChannel channelOf(const Block &block);
    void readComposites(const Block &bank);
    QRect rectangleAt(size_t at);
    Bytes part(size_t at, size_t count, size_t end);

    Bytes m_bytes;
    ByteReader m_reader;
    PspFile m_file;
};

/// The block that begins at `at`; its end is cut to what there is.
std::optional<Block> Parser::blockAt(size_t at, size_t end)
{
    const size_t header = chunked() ? 10 : 14;
    if (at + header > end || !m_reader.is(at, "~BK\0"))
        return {};
    Block block;
    block.id = m_reader.u16le(at + 4);
    block.data = at + header;
    const size_t length = m_reader.u32le(at + header - 4);
    block.firstPart = m_reader.u32le(chunked() ? block.data : at + 6);
    if (length > end - block.data)
        m_file.isCut = true;
    block.end = block.data + std::min(length, end - block.data);
    block.firstPart = std::min(block.firstPart, block.end - block.data);
    return block;
}

template <class Call> void Parser::eachBlock(size_t at, size_t end, Call call)
{
    while (const std::optional<Block> block = blockAt(at, end)) {
        call(*block);
        at = block->end;
    }
    // The beginning of a block that is not there.
    m_file.isCut |= at < end && m_reader.u8(at) == '~';
}

Bytes Parser::part(size_t at, size_t count, size_t end)
{
    if (at > end || count > end - at)
        m_file.isCut = true;
    at = std::min(at, end);
    return m_bytes.subspan(at, std::min(count, end - at));
}

void Parser::readImage(const Block &block)
{
    const size_t at = block.data + (chunked() ? 4 : 0);
    if (block.end < at + 30)
        return;
    const quint32 width = m_reader.u32le(at);
    const quint32 height = m_reader.u32le(at + 4);
    m_file.size = QSize(int(std::min(width, 1'000'000U)), int(std::min(height, 1'000'000U)));
    const quint64 bits = m_reader.u64(at + 8, false);
    double resolution = 0;
    std::memcpy(&resolution, &bits, sizeof resolution);
    enum Unit { PerInch = 1, PerCentimeter = 2 };
    const int unit = m_reader.u8(at + 16);
    if (resolution > 0 && resolution < 100'000 && (unit == PerInch || unit == PerCentimeter))
        m_file.dotsPerMeter = int(std::lround(resolution * 100 / (unit == PerInch ? 2.54 : 1)));
    m_file.coding.compression = m_reader.u16le(at + 17);
    m_file.coding.depth = m_reader.u16le(at + 19);
    m_file.coding.isGrey = m_reader.u8(at + 27) != 0;
}

void Parser::readCreator(const Block &block)
{
    size_t at = block.data;
    while (at + 10 <= block.end && m_reader.is(at, "~FL\0")) {
        const size_t length = m_reader.u32le(at + 6);
        m_file.texts.push_back({m_reader.u16le(at + 4), part(at + 10, length, block.end)});
        at += 10 + length;
    }
}

QList<QRgb> Parser::paletteOf(const Block &block) const
{
    const size_t at = block.data + (chunked() ? block.firstPart : 4);
    const size_t claimed = m_reader.u32le(at - 4);
    const size_t count = std::min({claimed, size_t(256), (block.end - std::min(at, block.end)) / 4});
    QList<QRgb> palette;
    for (size_t i = 0; i < count; ++i)
        palette.append(qRgb(m_reader.u8(at + 4 * i + 2), m_reader.u8(at + 4 * i + 1), m_reader.u8(at + 4 * i)));
    return palette;
}

QRect Parser::rectangleAt(size_t at)
{
    const auto number = [&](size_t offset) { return qint64(qint32(m_reader.u32le(at + offset))); };
    const qint64 left = number(0), top = number(4), right = number(8), bottom = number(12);
    const auto absurd = [](qint64 value) { return value < -maximumPlace || value > maximumPlace; };
    if (absurd(left) || absurd(top) || absurd(right) || absurd(bottom) || right < left || bottom < top)
        return {};
    return QRect(int(left), int(top), int(right - left), int(bottom - top));
}

/// Behind the numbers of bitmaps and channels, where the channel blocks begin. From version 10 on a block of unknown
/// content stands in front of the numbers.
size_t Parser::behindChannelCounts(size_t at, size_t end)
{
    while (const std::optional<Block> skipped = blockAt(at, end))
        at = skipped->end;
    const size_t length = m_reader.u32le(at);
    return std::min(at + std::min(length, end), end);
}

PspChannel Parser::channelOf(const Block &block)
{
    const size_t at = block.data + (chunked() ? 4 : 0);
    PspChannel channel;
    switch (m_reader.u16le(at + 8)) {
    case 0: // of a layer
    case 8: // of a composite picture
        channel.kind = PspChannel::Color;
        break;
    case 1:
    case 9:
        channel.kind = PspChannel::TransparencyMask;
        break;
    case 2:
        channel.kind = PspChannel::UserMask;
        break;
    default:
        break;
    }
    channel.number = m_reader.u16le(at + 10);
    channel.packed = part(block.data + block.firstPart, m_reader.u32le(at), block.end);
    return channel;
}

void Parser::readLayer(const Block &block)
{
    constexpr size_t oldNameLength = 256;
    const size_t name = chunked() ? 6 + m_reader.u16le(block.data + 4) : oldNameLength;
    size_t at = block.data + name;
    constexpr size_t fields = 1 + 16 + 16 + 5 + 16 + 16 + 2;
    if (at + fields > block.end || m_file.layers.size() >= maximumLayers) {
        m_file.isCut = true;
        return;
    }
    PspLayer layer;
    layer.type = m_reader.u8(at) + (chunked() ? 0 : 1);
    const QRect whole = rectangleAt(at + 1);
    layer.place = rectangleAt(at + 17).translated(whole.topLeft());
    layer.opacity = m_reader.u8(at + 33);
    layer.blendMode = m_reader.u8(at + 34);
    layer.isVisible = (m_reader.u8(at + 35) & 1) != 0;
    layer.maskPlace = rectangleAt(at + 54).translated(rectangleAt(at + 38).topLeft());
    layer.maskDisabled = m_reader.u8(at + 71) != 0;
    // Five pairs of ranges: the first of each from black to white and both halves the full one when nothing is cut out.
    const size_t ranges = at + 75;
    const size_t used = std::min<size_t>(m_reader.u16le(at + 73), 5);
    for (size_t i = 0; i < 2 * used && ranges + 4 * i + 4 <= block.end; ++i)
        layer.blendsByRange |= m_reader.u32le(ranges + 4 * i) != 0xffff0000U;
    if (layer.isRaster()) {
        const size_t behind = block.data + block.firstPart;
        const size_t channels = chunked() ? behindChannelCounts(behind, block.end) : behind;
        eachBlock(channels, block.end, [&](const Block &inner) {
            if (inner.id == ChannelBlock)
                layer.channels.push_back(channelOf(inner));
        });
    }
    m_file.layers.push_back(std::move(layer));
}

void Parser::readComposites(const Block &bank)
{
    size_t next = 0; // the pictures follow in the order of their attributes
    std::vector<PspComposite> &composites = m_file.composites;
    eachBlock(bank.data + bank.firstPart, bank.end, [&](const Block &block) {
        const size_t at = block.data + 4;
        if (block.id == CompositeAttributesBlock) {
            PspComposite composite;
            composite.size =
                QSize(int(std::min(m_reader.u32le(at), 1'000'000U)), int(std::min(m_reader.u32le(at + 4), 1'000'000U)));
            composite.coding.depth = m_reader.u16le(at + 8);
            composite.coding.compression = m_reader.u16le(at + 10);
            composite.isThumbnail = m_reader.u16le(at + 18) != 0;
            if (composites.size() < maximumLayers)
                composites.push_back(std::move(composite));
        } else if ((block.id == JpegBlock || block.id == CompositeImageBlock) && next < composites.size()) {
            PspComposite &composite = composites[next++];
            if (block.id == JpegBlock) {
                composite.jpeg = part(block.data + block.firstPart, m_reader.u32le(at), block.end);
                return;
            }
            eachBlock(block.data + block.firstPart, block.end, [&](const Block &inner) {
                if (inner.id == PaletteBlock)
                    composite.coding.palette = paletteOf(inner);
                else if (inner.id == ChannelBlock)
                    composite.channels.push_back(channelOf(inner));
            });
        }
    });
}

Result<PspFile> Parser::read()
{
    if (!isPsp(m_bytes))
        return Failure{QStringLiteral("not a PSP")};
    m_file.version = m_reader.u16le(32);
    eachBlock(fileHeader, m_bytes.size(), [this](const Block &block) {
        switch (block.id) {
        case ImageBlock:
            if (m_file.size.isEmpty())
                readImage(block);
            break;
        case CreatorBlock:
            readCreator(block);
            break;
        case PaletteBlock:
            if (m_file.coding.palette.isEmpty())
                m_file.coding.palette = paletteOf(block);
            break;
        case LayerBankBlock:
            eachBlock(block.data, block.end, [this](const Block &inner) {
                if (inner.id == LayerBlock)
                    readLayer(inner);
            });
            break;
        case CompositeBankBlock:
            if (chunked())
                readComposites(block);
            break;
        default:
            break;
        }
    });
    if (m_file.size.isEmpty())
        return Failure{QStringLiteral("a PSP without image attributes")};
    return std::move(m_file);
}

}

bool PspCoding::isKnown() const
{
    return (depth == 1 || depth == 4 || depth == 8 || depth == 16 || depth == 24 || depth == 48) && compression >= Raw
        && compression <= Jpeg;
}

bool isPsp(Bytes bytes)
{
    return ByteReader(bytes).is(0, "Paint Shop Pro Image File\n\x1a");
}

Result<PspFile> readPspFile(Bytes bytes)
{
    return Parser(bytes).read();
}
