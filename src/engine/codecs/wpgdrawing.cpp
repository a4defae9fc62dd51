#include "engine/codecs/wpgdrawing.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/vectorcanvas.h"
#include "engine/limits.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwpg/libwpg.h>

namespace {

constexpr int nominalDepth = 24; ///< a drawing has none; it is painted in true colour
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
    const QSize size = naturalVectorSize({pixels(rootAttribute(svg, "width")), pixels(rootAttribute(svg, "height"))});
    if (size.isEmpty())
        return Failure{QStringLiteral("the WPG's drawing has no size")};
    if (!limits::allows(size, 8))
        return Failure{tooLarge(size)};
    return size;
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
    QSvgRenderer renderer(*svg);
    if (!renderer.isValid())
        return Failure{QStringLiteral("the WPG's drawing cannot be painted")};
    Result<QImage> canvas = vectorGround(renderedVectorSize(*natural, hint.target), Qt::white);
    if (!canvas)
        return canvas.failure();
    QPainter painter(&*canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(canvas->rect()));
    painter.end();
    return vectorPicture(*canvas, infoOf(*natural), false);
}

}

const Codec wpgDrawingCodec{"WPG drawing", "wpg", sniffWpg, probeWpg, decodeWpg};
