#include "engine/codecs/jpeg2000pixels.h"

#include "engine/picture.h"

#include <QRgba64>

#include <algorithm>
#include <vector>

#include <openjpeg.h>

namespace {

/// One component, read as 16-bit light at the coordinates of the picture.
class Plane
{
public:
    Plane(const opj_image_comp_t &component, QSize picture)
        : m_component(component)
        , m_largest((qint64(1) << component.prec) - 1)
        , m_offset(component.sgnd ? qint64(1) << (component.prec - 1) : 0)
        , m_columns(static_cast<size_t>(picture.width()))
        , m_height(picture.height())
    {
        for (int x = 0; x < picture.width(); ++x)
            m_columns[size_t(x)] =
                quint32(std::min<qint64>(qint64(x) * component.w / picture.width(), component.w - 1));
    }
    void startRow(int y)
    {
        m_row = m_component.data
            + size_t(std::min<qint64>(qint64(y) * m_component.h / m_height, m_component.h - 1)) * m_component.w;
    }
    int at(int x) const
    {
        const qint64 value = std::clamp<qint64>(qint64(m_row[m_columns[size_t(x)]]) + m_offset, 0, m_largest);
        return int((value * 65535 + m_largest / 2) / m_largest);
    }

private:
    const opj_image_comp_t &m_component;
    qint64 m_largest;
    qint64 m_offset;
    std::vector<quint32> m_columns;
    int m_height;
    const OPJ_INT32 *m_row = nullptr;
};

enum class Colors { Grey, Rgb, Ycc, Cmyk };

struct Shape
{
    QSize size;
    Colors colors = Colors::Grey;
    int alpha = -1; ///< component, -1 for none
    bool deep = false;
};

/// The number of components in front of the first that is marked as opacity. Where none is marked and the file names
/// its colours, one more than these need is opacity: many writers leave the mark out.
int colorComponents(const opj_image &image)
{
    int count = 0;
    while (count < int(image.numcomps) && image.comps[count].alpha == 0)
        ++count;
    if (count == int(image.numcomps) && image.color_space == OPJ_CLRSPC_GRAY && count == 2)
        return 1;
    if (count == int(image.numcomps) && image.color_space == OPJ_CLRSPC_SRGB && count == 4)
        return 3;
    return count;
}

bool isSubsampledChroma(const opj_image &image)
{
    return image.comps[0].dx == 1 && image.comps[1].dx == 2 && image.comps[2].dx == 2;
}

Shape shapeOf(const opj_image &image)
{
    Shape shape;
    for (quint32 i = 0; i < image.numcomps; ++i) {
        const opj_image_comp_t &component = image.comps[i];
        if (!component.data || component.w < 1 || component.h < 1)
            return {};
        shape.size = shape.size.expandedTo(QSize(int(component.w), int(component.h)));
        shape.deep = shape.deep || component.prec > 8;
    }
    const int colors = colorComponents(image);
    if (colors < int(image.numcomps))
        shape.alpha = colors;
    if (colors >= 4 && image.color_space == OPJ_CLRSPC_CMYK)
        shape.colors = Colors::Cmyk;
    else if (colors >= 3
        && (image.color_space == OPJ_CLRSPC_SYCC || image.color_space == OPJ_CLRSPC_EYCC || isSubsampledChroma(image)))
        shape.colors = Colors::Ycc;
    else if (colors >= 3)
        shape.colors = Colors::Rgb;
    return shape;
}

QRgba64 colorAt(const std::vector<Plane> &planes, const Shape &shape, int x)
{
    const int alpha = shape.alpha < 0 ? 0xffff : planes[size_t(shape.alpha)].at(x);
    const int first = planes[0].at(x);
    const auto color = [alpha](double r, double g, double b) {
        const auto whole = [](double value) { return quint16(std::clamp(value + 0.5, 0.0, 65535.0)); };
        return QRgba64::fromRgba64(whole(r), whole(g), whole(b), quint16(alpha));
    };
    switch (shape.colors) {
    case Colors::Grey:
        return color(first, first, first);
    case Colors::Rgb:
        return color(first, planes[1].at(x), planes[2].at(x));
    case Colors::Ycc: {
        const double cb = planes[1].at(x) - 32768.0;
        const double cr = planes[2].at(x) - 32768.0;
        return color(first + 1.402 * cr, first - 0.344136 * cb - 0.714136 * cr, first + 1.772 * cb);
    }
    case Colors::Cmyk: {
        const double light = (65535.0 - planes[3].at(x)) / 65535.0;
        return color(
            (65535.0 - first) * light, (65535.0 - planes[1].at(x)) * light, (65535.0 - planes[2].at(x)) * light);
    }
    }
    return {};
}

/// Whether every sample is a whole byte of its own pixel, as in nearly all files: then rows are plain loops.
bool isPlain(const opj_image &image, const Shape &shape)
{
    if (shape.deep || shape.colors == Colors::Ycc || shape.colors == Colors::Cmyk)
        return false;
    return std::all_of(image.comps, image.comps + image.numcomps, [&](const opj_image_comp_t &component) {
        return component.prec == 8 && !component.sgnd && int(component.w) == shape.size.width()
            && int(component.h) == shape.size.height();
    });
}

// The irreversible transform can leave the range a little.
quint32 byteOf(OPJ_INT32 sample)
{
    return quint32(std::clamp<OPJ_INT32>(sample, 0, 255));
}

void fillPlainRow(const opj_image &image, const Shape &shape, size_t start, uchar *row)
{
    const int width = shape.size.width();
    const OPJ_INT32 *const red = image.comps[0].data + start;
    if (shape.colors == Colors::Grey && shape.alpha < 0) {
        for (int x = 0; x < width; ++x)
            row[x] = uchar(byteOf(red[x]));
        return;
    }
    const bool grey = shape.colors == Colors::Grey;
    const OPJ_INT32 *const green = grey ? red : image.comps[1].data + start;
    const OPJ_INT32 *const blue = grey ? red : image.comps[2].data + start;
    QRgb *const to = reinterpret_cast<QRgb *>(row);
    for (int x = 0; x < width; ++x)
        to[x] = 0xff000000 | byteOf(red[x]) << 16 | byteOf(green[x]) << 8 | byteOf(blue[x]);
    if (shape.alpha < 0)
        return;
    const OPJ_INT32 *const alpha = image.comps[shape.alpha].data + start;
    for (int x = 0; x < width; ++x)
        to[x] = (to[x] & 0x00ffffff) | byteOf(alpha[x]) << 24;
}

QImage::Format formatOf(const Shape &shape)
{
    if (shape.deep)
        return QImage::Format_RGBA64;
    if (shape.alpha >= 0)
        return QImage::Format_ARGB32;
    return shape.colors == Colors::Grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32;
}

}

QImage jpeg2000Pixels(const opj_image &image)
{
    const Shape shape = shapeOf(image);
    if (shape.size.isEmpty())
        return {};
    QImage pixels = allocateImage(shape.size, formatOf(shape));
    if (pixels.isNull())
        return pixels;
    if (isPlain(image, shape)) {
        for (int y = 0; y < shape.size.height(); ++y)
            fillPlainRow(image, shape, size_t(y) * size_t(shape.size.width()), pixels.scanLine(y));
        return pixels;
    }
    std::vector<Plane> planes;
    for (quint32 i = 0; i < image.numcomps; ++i)
        planes.emplace_back(image.comps[i], shape.size);
    for (int y = 0; y < shape.size.height(); ++y) {
        for (Plane &plane : planes)
            plane.startRow(y);
        uchar *const row = pixels.scanLine(y);
        for (int x = 0; x < shape.size.width(); ++x) {
            if (pixels.format() == QImage::Format_Grayscale8) {
                row[x] = uchar(planes[0].at(x) / 257);
                continue;
            }
            const QRgba64 color = colorAt(planes, shape, x);
            if (pixels.format() == QImage::Format_RGBA64)
                reinterpret_cast<QRgba64 *>(row)[x] = color;
            else
                reinterpret_cast<QRgb *>(row)[x] = color.toArgb32();
        }
    }
    return pixels;
}
