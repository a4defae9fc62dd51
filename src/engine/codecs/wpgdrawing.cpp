#include "engine/codecs/wpgdrawing.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>

#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwpg/libwpg.h>

namespace {

constexpr int nominalDepth = 24; ///< a drawing has none; it is painted in true colour
constexpr double longestSide = 8192;
constexpr int mostSvgBytes = 64 * 1024 * 1024;

bool sniffWpg(Bytes head)
{
    return ByteReader(head).is(0, "\xffWPC");
}

/// The drawing as SVG; a file of several pages gives its first.
Result<QByteArray> svgOf(const QByteArray &bytes)
{
    if (!sniffWpg(bytesOf(bytes)))
        return Failure{QStringLiteral("not a WPG")};
    librevenge::RVNGStringStream stream(
        reinterpret_cast<const unsigned char *>(bytes.constData()), static_cast<unsigned>(bytes.size()));
    librevenge::RVNGStringVector pages;
    librevenge::RVNGSVGDrawingGenerator generator(pages, "");
    if (!libwpg::WPGraphics::isSupported(&stream) || !libwpg::WPGraphics::parse(&stream, &generator)
        || pages.size() == 0)
        return Failure{QStringLiteral("the WPG holds no drawing")};
    const librevenge::RVNGString &page = pages[0];
    if (page.size() > mostSvgBytes)
        return Failure{QStringLiteral("the WPG's drawing is too long")};
    return QByteArray(page.cstr(), qsizetype(page.size()));
}

/// A length in pixels at 96 dots an inch from "5.25in", "300pt", "120"; 0 when it is none.
double pixels(const QByteArray &text)
{
    constexpr double dotsPerInch = 96;
    const struct
    {
        const char *unit;
        double dots;
    } units[] = {{"in", dotsPerInch}, {"pt", dotsPerInch / 72}, {"mm", dotsPerInch / 25.4}, {"cm", dotsPerInch / 2.54},
        {"px", 1}};
    for (const auto &[unit, dots] : units) {
        if (text.endsWith(unit))
            return text.chopped(2).toDouble() * dots;
    }
    return text.toDouble();
}

/// An attribute of the first element "svg".
QByteArray rootAttribute(const QByteArray &svg, const char *name)
{
    const qsizetype root = svg.indexOf("<svg");
    const qsizetype end = root < 0 ? -1 : svg.indexOf('>', root);
    const QByteArray head = svg.mid(root, end < 0 ? 0 : end - root);
    const qsizetype at = head.indexOf(QByteArray(" ") + name + "=\"");
    if (at < 0)
        return {};
    const qsizetype first = head.indexOf('"', at) + 1;
    return head.mid(first, head.indexOf('"', first) - first);
}

Result<QSize> naturalSize(const QByteArray &svg)
{
    QSizeF size(pixels(rootAttribute(svg, "width")), pixels(rootAttribute(svg, "height")));
    if (!(size.width() > 0 && size.height() > 0 && size.width() < 1e6 && size.height() < 1e6))
        return Failure{QStringLiteral("the WPG's drawing has no size")};
    if (const double longest = std::max(size.width(), size.height()); longest > longestSide)
        size *= longestSide / longest;
    const QSize whole = QSize(int(std::ceil(size.width())), int(std::ceil(size.height()))).expandedTo({1, 1});
    if (!limits::allows(whole, 8))
        return Failure{tooLarge(whole)};
    return whole;
}

ImageInfo infoOf(QSize size)
{
    return {size, nominalDepth, 1, wpgDrawingCodec.name};
}

Result<ImageInfo> probeWpg(const EncodedFile &file, int)
{
    const Result<QByteArray> svg = svgOf(file.bytes);
    if (!svg)
        return svg.failure();
    const Result<QSize> size = naturalSize(*svg);
    if (!size)
        return size.failure();
    return infoOf(*size);
}

Result<Picture> decodeWpg(const EncodedFile &file, const DecodeHint &hint)
{
    // Without it Qt ends the program at the first letter.
    if (!qGuiApp)
        return Failure{QStringLiteral("drawings need a GUI application")};
    if (hint.page != 0)
        return Failure{QStringLiteral("a WPG has one picture")};
    const Result<QByteArray> svg = svgOf(file.bytes);
    if (!svg)
        return svg.failure();
    const Result<QSize> natural = naturalSize(*svg);
    if (!natural)
        return natural.failure();
    QSize size = *natural;
    if (!hint.target.isEmpty() && (hint.target.width() < size.width() || hint.target.height() < size.height()))
        size = size.scaled(hint.target, Qt::KeepAspectRatio).expandedTo({1, 1});
    QSvgRenderer renderer(*svg);
    if (!renderer.isValid())
        return Failure{QStringLiteral("the WPG's drawing cannot be painted")};
    Picture picture;
    picture.info = infoOf(*natural);
    picture.pixels = allocateImage(size, QImage::Format_RGB32);
    if (picture.pixels.isNull())
        return Failure{outOfMemory(size)};
    picture.pixels.fill(Qt::white);
    QPainter painter(&picture.pixels);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return picture;
}

}

const Codec wpgDrawingCodec{"WPG drawing", "wpg", sniffWpg, probeWpg, decodeWpg};
