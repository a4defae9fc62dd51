#include "engine/codecs/iff.h"

#include "engine/codecs/bitplanes.h"
#include "engine/codecs/iffchunks.h"
#include "engine/codecs/iffpalettes.h"
#include "engine/codecs/iffplanes.h"
#include "engine/codecs/pixels.h"

#include <algorithm>
#include <array>

namespace {

using Colors = IffPicture::Colors;

ImageInfo infoOf(const IffPicture &picture)
{
    return {picture.size, picture.planes, 1, iffCodec.name};
}

/// Whether every row has the same palette and a pixel is an index into it.
bool keepsIndices(const IffPicture &picture)
{
    return (picture.colors == Colors::Palette || picture.colors == Colors::HalfBright) && !picture.hasMask
        && !picture.hasRowPalettes();
}

QImage::Format formatOf(const IffPicture &picture)
{
    if (keepsIndices(picture)) {
        const bool isMono = picture.planes == 1 && picture.layout != IffPicture::Layout::Chunky;
        return isMono ? QImage::Format_Mono : QImage::Format_Indexed8;
    }
    const bool clear = picture.hasMask || picture.transparentIndex >= 0 || picture.planes == 32;
    return clear ? QImage::Format_ARGB32 : QImage::Format_RGB32;
}

/// Turns the rows of one picture into pixels. What kind of row it is is decided once, in draw().
class Painter
{
public:
    Painter(const IffPicture &picture, QImage &image)
        : m_picture(picture)
        , m_image(image)
        , m_rows(picture)
        , m_palettes(picture)
        , m_palette(picture.palette)
        , m_indices(std::max(picture.rowBytes() * 8, size_t(image.width())))
    {
        if (picture.transparentIndex >= 0 && picture.transparentIndex < m_palette.size())
            m_palette[picture.transparentIndex] &= 0x00ffffff;
    }

    /// The number of rows that the file holds something of.
    int draw();
    bool isDamaged() const { return m_rows.isDamaged(); }

private:
    const uchar *indices(int firstPlane = 0, int planes = 8);
    void drawIndices(int y);
    void drawColors(int y);
    void drawHeldAndModified(int y);
    void drawTrueColors(int y);
    void applyMask(int y);
    void makeOpaqueIfAllClear();
    QRgb *row(int y) { return reinterpret_cast<QRgb *>(m_image.scanLine(y)); }

    const IffPicture &m_picture;
    QImage &m_image;
    IffRows m_rows;
    IffRowPalettes m_palettes;
    QList<QRgb> m_palette;
    std::vector<uchar> m_indices;
};

/// The row's pixels, one byte each, from up to eight planes.
const uchar *Painter::indices(int firstPlane, int planes)
{
    if (m_picture.layout == IffPicture::Layout::Chunky)
        return m_rows.plane(0);
    mergePlanes(m_rows.plane(firstPlane), m_picture.rowBytes(), std::min(planes, m_picture.planes), m_indices.data());
    return m_indices.data();
}

void Painter::drawIndices(int y)
{
    const size_t width = size_t(m_image.width());
    if (m_image.format() == QImage::Format_Mono)
        std::copy_n(m_rows.plane(0), (width + 7) / 8, m_image.scanLine(y));
    else
        std::copy_n(indices(), width, m_image.scanLine(y));
}

void Painter::drawColors(int y)
{
    const uchar *const from = indices();
    QRgb *const to = row(y);
    const QRgb *const palette = m_palette.constData();
    const uchar largest = uchar(m_palette.size() - 1);
    std::transform(from, from + m_image.width(), to, [&](uchar index) { return palette[std::min(index, largest)]; });
}

// The two highest of six or eight bits (the highest of five or seven) say which channel of the pixel before changes, or
// that the rest is an index. A row begins with the first colour.
void Painter::drawHeldAndModified(int y)
{
    const uchar *const from = indices();
    QRgb *const to = row(y);
    const int dataBits = m_picture.planes > 6 ? 6 : 4;
    const int dataMask = (1 << dataBits) - 1;
    const QRgb *const palette = m_palette.constData();
    QRgb color = palette[0] | 0xff000000;
    for (int x = 0; x < m_image.width(); ++x) {
        const int data = from[x] & dataMask;
        const QRgb level = QRgb(dataBits == 4 ? data * 17 : data << 2 | data >> 4);
        switch (from[x] >> dataBits) {
        case 0:
            to[x] = palette[data];
            color = palette[data] | 0xff000000;
            continue;
        case 1:
            color = (color & 0xffffff00) | level;
            break;
        case 2:
            color = (color & 0xff00ffff) | level << 16;
            break;
        default:
            color = (color & 0xffff00ff) | level << 8;
        }
        to[x] = color;
    }
}

void Painter::drawTrueColors(int y)
{
    QRgb *const to = row(y);
    std::fill_n(to, m_image.width(), m_picture.planes == 32 ? 0 : 0xff000000);
    constexpr std::array<int, 4> shifts{16, 8, 0, 24};
    for (int channel = 0; channel < m_picture.planes / 8; ++channel) {
        const uchar *const from = indices(channel * 8);
        for (int x = 0; x < m_image.width(); ++x)
            to[x] |= QRgb(from[x]) << shifts[size_t(channel)];
    }
}

void Painter::applyMask(int y)
{
    const uchar *const mask = m_rows.plane(m_picture.planes);
    QRgb *const to = row(y);
    for (int x = 0; x < m_image.width(); ++x) {
        if (!(mask[x / 8] & 0x80 >> x % 8))
            to[x] &= 0x00ffffff;
    }
}

int Painter::draw()
{
    void (Painter::*drawRow)(int) = &Painter::drawColors;
    if (keepsIndices(m_picture))
        drawRow = &Painter::drawIndices;
    else if (m_picture.colors == Colors::HoldAndModify)
        drawRow = &Painter::drawHeldAndModified;
    else if (m_picture.colors == Colors::True)
        drawRow = &Painter::drawTrueColors;
    int y = 0;
    for (; y < m_image.height() && m_rows.next(); ++y) {
        if (m_picture.hasRowPalettes())
            m_palettes.advanceTo(y, {m_palette.data(), size_t(m_palette.size())});
        (this->*drawRow)(y);
        if (m_picture.hasMask)
            applyMask(y);
    }
    if (keepsIndices(m_picture))
        m_image.setColorTable(m_palette);
    blankRows(m_image, y);
    if (m_picture.planes == 32 && !m_picture.hasMask && y == m_image.height())
        makeOpaqueIfAllClear();
    return y;
}

// Programs that knew no transparency left its planes empty.
void Painter::makeOpaqueIfAllClear()
{
    for (int y = 0; y < m_image.height(); ++y) {
        const QRgb *const pixels = reinterpret_cast<const QRgb *>(m_image.constScanLine(y));
        if (std::any_of(pixels, pixels + m_image.width(), [](QRgb pixel) { return qAlpha(pixel) != 0; }))
            return;
    }
    for (int y = 0; y < m_image.height(); ++y)
        std::for_each(row(y), row(y) + m_image.width(), [](QRgb &pixel) { pixel |= 0xff000000; });
}

bool sniffIff(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "FORM") || ((bytes.is(0, "LIST") || bytes.is(0, "CAT ")) && bytes.is(8, "ILBM"));
}

Result<ImageInfo> probeIff(const EncodedFile &file, int)
{
    const Result<IffPicture> picture = openIff(file.bytes);
    if (!picture)
        return picture.failure();
    return infoOf(*picture);
}

Result<Picture> decodeIff(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<IffPicture> opened = openIff(file.bytes);
    if (!opened)
        return opened.failure();
    if (hint.page != 0)
        return Failure{QStringLiteral("the IFF file has no picture %1").arg(hint.page)};
    Picture picture;
    picture.info = infoOf(*opened);
    picture.pixels = allocateImage(opened->size, formatOf(*opened));
    if (picture.isNull())
        return Failure{outOfMemory(opened->size)};
    Painter painter(*opened, picture.pixels);
    if (painter.draw() == 0)
        return Failure{QStringLiteral("an IFF picture without a single row")};
    picture.partial = painter.isDamaged() || opened->isCut;
    completeColorTable(picture.pixels);
    picture.pixels.setDotsPerMeterX(qRound(opened->dotsPerInch.width() / 0.0254));
    picture.pixels.setDotsPerMeterY(qRound(opened->dotsPerInch.height() / 0.0254));
    IffMetadata texts = readIffMetadataChunks(file.bytes);
    picture.metadata = std::move(texts.metadata);
    picture.iccProfile = std::move(texts.iccProfile);
    return picture;
}

}

Metadata readIffMetadata(const QByteArray &file)
{
    return readIffMetadataChunks(file).metadata;
}

const Codec iffCodec{"IFF", "iff lbm ilbm", sniffIff, probeIff, decodeIff};
