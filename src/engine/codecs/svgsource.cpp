#include "engine/codecs/svgsource.h"

#include "engine/codecs/svguses.h"

#include <QRegularExpression>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>

#include <zlib.h>

namespace {

constexpr qsizetype largestText = 64 * 1024 * 1024;
constexpr int deepestNesting = 256;

bool isPacked(const QByteArray &file)
{
    return file.startsWith("\x1f\x8b");
}

/// Up to `most` bytes of what a gzip file holds; less when it is cut.
QByteArray unpacked(const QByteArray &file, qsizetype most)
{
    z_stream stream{};
    constexpr int gzip = 16;
    if (inflateInit2(&stream, MAX_WBITS + gzip) != Z_OK)
        return {};
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(file.constData()));
    stream.avail_in = uInt(qMin<qsizetype>(file.size(), largestText));
    QByteArray text;
    int status = Z_OK;
    while (status == Z_OK && text.size() < most) {
        constexpr qsizetype step = 256 * 1024;
        const qsizetype before = text.size();
        text.resize(qMin(before + step, most));
        stream.next_out = reinterpret_cast<Bytef *>(text.data() + before);
        stream.avail_out = uInt(text.size() - before);
        status = inflate(&stream, Z_NO_FLUSH);
        text.resize(text.size() - qsizetype(stream.avail_out));
        if (text.size() == before && stream.avail_in == 0)
            break;
    }
    inflateEnd(&stream);
    return text;
}

/// Pixels of a length as CSS counts them; 0 for percentages and what is no length.
double pixels(QStringView text)
{
    static const QRegularExpression length(
        QStringLiteral("^\\s*([+]?[0-9]*\\.?[0-9]+(?:[eE][-+]?[0-9]+)?)\\s*(px|pt|pc|mm|cm|in|)\\s*$"));
    const QRegularExpressionMatch match = length.match(text.toString());
    if (!match.hasMatch())
        return 0;
    const QString unit = match.captured(2);
    const double inch = 96;
    const double factor = unit == QLatin1String("pt") ? inch / 72
        : unit == QLatin1String("pc")                 ? inch / 6
        : unit == QLatin1String("mm")                 ? inch / 25.4
        : unit == QLatin1String("cm")                 ? inch / 2.54
        : unit == QLatin1String("in")                 ? inch
                                                      : 1;
    const double value = match.captured(1).toDouble() * factor;
    return std::isfinite(value) && value > 0 ? value : 0;
}

/// The size of a viewBox; empty when it is none.
QSizeF viewBoxSize(QStringView text)
{
    static const QRegularExpression separator(QStringLiteral("[\\s,]+"));
    const QStringList parts = text.trimmed().toString().split(separator);
    if (parts.size() != 4)
        return {};
    const QSizeF size(parts[2].toDouble(), parts[3].toDouble());
    return std::isfinite(size.width()) && std::isfinite(size.height()) ? size : QSizeF();
}

QSizeF naturalSize(const QXmlStreamAttributes &root)
{
    const double width = pixels(root.value(QLatin1String("width")));
    const double height = pixels(root.value(QLatin1String("height")));
    const QSizeF box = viewBoxSize(root.value(QLatin1String("viewBox")));
    if (width > 0 && height > 0)
        return {width, height};
    if (box.isEmpty())
        return {};
    if (width > 0)
        return {width, width * box.height() / box.width()};
    if (height > 0)
        return {height * box.width() / box.height(), height};
    return box;
}

/// The root's page is told by its viewBox alone once the size is known, and only by one that is sound.
bool isUselessSize(const QXmlStreamAttribute &attribute)
{
    const QStringView name = attribute.qualifiedName();
    return name == QLatin1String("width") || name == QLatin1String("height")
        || (name == QLatin1String("viewBox") && viewBoxSize(attribute.value()).isEmpty());
}

QStringView localName(QStringView name)
{
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

bool isLeftOut(QStringView name)
{
    static constexpr const char *names[] = {"script", "foreignObject", "animate", "animateColor", "animateMotion",
        "animateTransform", "set", "audio", "video", "iframe", "handler"};
    return std::any_of(
        std::begin(names), std::end(names), [&](const char *left) { return name == QLatin1String(left); });
}

/// A reference within the file, or a picture that stands in it whole. Not by the type it says it has: a drawing in
/// disguise would be read without any of the care taken here.
bool staysInside(QStringView reference)
{
    const QStringView target = reference.trimmed();
    if (target.startsWith(QLatin1Char('#')))
        return true;
    const qsizetype comma = target.indexOf(QLatin1String(";base64,"));
    if (!target.startsWith(QLatin1String("data:image/")) || comma < 0)
        return false;
    const QStringView content = target.mid(comma + 8).left(64).trimmed();
    return content.startsWith(QLatin1String("iVBORw0KGgo")) || content.startsWith(QLatin1String("/9j/"))
        || content.startsWith(QLatin1String("R0lGOD"));
}

/// Reads the text once and writes what may stay.
class Cleaner
{
public:
    explicit Cleaner(const QByteArray &text)
        : m_reader(text)
        , m_writer(&m_source.xml)
    {
        // Names are copied as they stand; whoever reads the outcome resolves them.
        m_reader.setNamespaceProcessing(false);
    }

    Result<SvgSource> run()
    {
        m_writer.writeStartDocument();
        while (!m_reader.atEnd()) {
            switch (m_reader.readNext()) {
            case QXmlStreamReader::StartElement:
                if (const Result<void> done = startElement(); !done)
                    return done.failure();
                break;
            case QXmlStreamReader::EndElement:
                m_writer.writeEndElement();
                m_uses.leave();
                --m_depth;
                break;
            case QXmlStreamReader::Characters:
                m_writer.writeCharacters(m_reader.text().toString());
                break;
            default:
                // Document types, comments and processing instructions: a stylesheet from elsewhere is one.
                break;
            }
        }
        if (m_reader.hasError() && !isCutOff())
            return Failure{QStringLiteral("not a readable SVG: ") + m_reader.errorString()};
        if (!m_seenRoot)
            return Failure{QStringLiteral("not an SVG")};
        if (!m_uses.areBounded())
            return Failure{QStringLiteral("an SVG that repeats its parts without end")};
        m_writer.writeEndDocument();
        return m_source;
    }

private:
    bool isCutOff() const { return m_reader.error() == QXmlStreamReader::PrematureEndOfDocumentError && m_seenRoot; }

    Result<void> startElement()
    {
        const QStringView name = localName(m_reader.qualifiedName());
        if (!m_seenRoot && name != QLatin1String("svg"))
            return Failure{QStringLiteral("not an SVG")};
        if (isLeftOut(name)) {
            m_reader.skipCurrentElement();
            return {};
        }
        if (++m_depth > deepestNesting)
            return Failure{QStringLiteral("an SVG nested too deeply")};
        m_writer.writeStartElement(m_reader.qualifiedName().toString());
        const QXmlStreamAttributes attributes = m_reader.attributes();
        QStringView used;
        for (const QXmlStreamAttribute &attribute : attributes) {
            const bool reference = localName(attribute.qualifiedName()) == QLatin1String("href");
            if (reference && !staysInside(attribute.value()))
                continue;
            if (!m_seenRoot && isUselessSize(attribute))
                continue;
            if (reference && name == QLatin1String("use"))
                used = attribute.value().trimmed().mid(1);
            m_writer.writeAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
        }
        m_uses.enter(attributes.value(QLatin1String("id")), used);
        if (!m_seenRoot)
            takeRoot(attributes);
        return {};
    }

    void takeRoot(const QXmlStreamAttributes &root)
    {
        m_seenRoot = true;
        m_source.size = naturalSize(root);
        m_source.keepsShape =
            !root.value(QLatin1String("preserveAspectRatio")).trimmed().startsWith(QLatin1String("none"));
        // Without one the reader would fit what is drawn instead of the page.
        if (viewBoxSize(root.value(QLatin1String("viewBox"))).isEmpty() && !m_source.size.isEmpty())
            m_writer.writeAttribute(QStringLiteral("viewBox"),
                QStringLiteral("0 0 %1 %2").arg(m_source.size.width()).arg(m_source.size.height()));
    }

    SvgSource m_source;
    QXmlStreamReader m_reader;
    QXmlStreamWriter m_writer;
    SvgUses m_uses;
    int m_depth = 0;
    bool m_seenRoot = false;
};

}

Result<SvgSource> cleanSvg(const QByteArray &file)
{
    const QByteArray text = isPacked(file) ? unpacked(file, largestText) : file;
    if (text.size() >= largestText)
        return Failure{QStringLiteral("an SVG of more than %1 MiB of text").arg(largestText / 1024 / 1024)};
    return Cleaner(text).run();
}

bool looksLikeSvg(const QByteArray &head)
{
    constexpr qsizetype enough = 4096;
    QByteArray text = isPacked(head) ? unpacked(head, enough) : head.left(enough);
    if (text.startsWith("\xff\xfe") || text.startsWith("\xfe\xff"))
        text = text.replace('\0', "");
    const qsizetype first = text.indexOf('<');
    if (first < 0 || first > 256)
        return false;
    for (const char *root : {"<svg", ":svg"}) {
        const qsizetype at = text.indexOf(root);
        if (at >= first && (text.mid(first, 2) == "<?" || text.mid(first, 2) == "<!" || at - first < 32))
            return true;
    }
    return false;
}
