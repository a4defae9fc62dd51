#pragma once

#include "engine/codecs/encodedepth.h"

#include <optional>
#include <vector>

/// How a picture lies in a PNG.
struct PngLayout
{
    static constexpr int paletteColors = 3; ///< the colour type of pictures with a palette
    int bits = 8; ///< a channel
    int colorType = 2; ///< bits as the format has them: 1 palette, 2 colours, 4 alpha
    PalettePixels indexed; ///< of palettes and of grey up to 8 bits
    QImage image; ///< of all others
    bool turned = false; ///< one bit of grey whose table has white first

    explicit PngLayout(const Picture &picture);
    bool isGrey() const { return (colorType & 2) == 0; }
    QSize size() const { return indexed.isNull() ? image.size() : indexed.pixels.size(); }
    int channels() const;
    qsizetype rowBytes() const { return (qsizetype(size().width()) * channels() * bits + 7) / 8; }
};

/// The rows' channels in the file's order, 16 bits with the highest byte first.
class PngRows
{
public:
    explicit PngRows(const PngLayout &layout);
    /// Stays what it is until the next call.
    const uchar *make(int y);

private:
    void takeBytes(const QRgb *from);
    void takeDeep(const QRgba64 *from);

    const PngLayout &m_layout;
    const int m_channels;
    std::vector<uchar> m_row;
};

/// All pixels as the zlib stream that the IDAT chunks of a picture without interlacing hold. None for a picture so
/// large that its rows had better be packed one by one.
std::optional<QByteArray> packedPngPixels(const PngLayout &layout);
