#include "engine/codecs/vectortext.h"

#include <QFont>
#include <QGuiApplication>
#include <QRawFont>
#include <QTransform>

#include <algorithm>
#include <array>

namespace {

constexpr double designSize = 256; ///< pixels per em that outlines are taken at
// A line of text longer than this is no text; the rest of it is left out.
constexpr qsizetype mostCharacters = 32768;

constexpr int styles = 4; ///< bold is bit 0, italic bit 1
constexpr int signFace = 3 * styles; ///< the face that is rich in signs, behind the twelve of the three families
constexpr int faceCount = signFace + 1;

QStringList familyNames(int face)
{
    // Those with the widths that the files were made for come first; the generic name always finds something.
    switch (face / styles) {
    case 0:
        return {QStringLiteral("Liberation Sans"), QStringLiteral("Arimo"), QStringLiteral("Nimbus Sans"),
            QStringLiteral("DejaVu Sans"), QStringLiteral("sans-serif")};
    case 1:
        return {QStringLiteral("Liberation Serif"), QStringLiteral("Tinos"), QStringLiteral("Nimbus Roman"),
            QStringLiteral("DejaVu Serif"), QStringLiteral("serif")};
    case 2:
        return {QStringLiteral("Liberation Mono"), QStringLiteral("Cousine"), QStringLiteral("Nimbus Mono PS"),
            QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace")};
    default:
        return {QStringLiteral("DejaVu Sans"), QStringLiteral("sans-serif")};
    }
}

using Faces = std::array<QFont, faceCount>;

/// A font that lives keeps its loaded face; both belong to the thread that made them.
Faces &faces()
{
    thread_local Faces all = [] {
        Faces made;
        for (int face = 0; face < faceCount; ++face) {
            QFont &font = made[size_t(face)];
            font.setFamilies(familyNames(face));
            font.setPixelSize(int(designSize));
            font.setBold(face < signFace && (face & 1) != 0);
            font.setItalic(face < signFace && (face & 2) != 0);
            font.setHintingPreference(QFont::PreferNoHinting);
            font.setStyleStrategy(QFont::StyleStrategy(QFont::NoFontMerging | QFont::PreferOutline));
        }
        return made;
    }();
    return all;
}

QRawFont loaded(int face)
{
    return QRawFont::fromFont(faces()[size_t(face)]);
}

int faceOf(const VectorFont &font)
{
    const int style = (font.bold ? 1 : 0) | (font.italic ? 2 : 0);
    switch (font.family) {
    case VectorFont::Family::Serif:
    case VectorFont::Family::Symbol:
        return styles + style;
    case VectorFont::Family::Monospaced:
        return 2 * styles + style;
    case VectorFont::Family::Pictographs:
        return signFace;
    case VectorFont::Family::Sans:
        break;
    }
    return style;
}

/// The Symbol font's published encoding from 0x20 to 0x7E and from 0xA0 to 0xFE.
QChar symbolSign(ushort code)
{
    static const QString low = QStringLiteral(" !∀#∃%&∋()∗+,−./0123456789:;<=>?≅ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ[∴]⊥_"
                                              "‾αβχδεφγηιϕκλμνοπθρστυϖωξψζ{|}∼");
    static const QString high = QStringLiteral("€ϒ′≤⁄∞ƒ♣♦♥♠↔←↑→↓°±″≥×∝∂•÷≠≡≈…⏐⎯↵ℵℑℜ℘⊗⊕∅∩∪⊃⊇⊄⊂⊆∈∉∠∇®©™∏√⋅¬∧∨⇔⇐⇑⇒⇓"
                                               "◊⟨®©™∑⎛⎜⎝⎡⎢⎣⎧⎨⎩⎪ ⟩∫⌠⎮⌡⎞⎟⎠⎤⎥⎦⎫⎬⎭");
    if (code >= 0x20 && code < 0x20 + low.size())
        return low.at(code - 0x20);
    if (code >= 0xa0 && code < 0xa0 + high.size())
        return high.at(code - 0xa0);
    return QLatin1Char(' ');
}

/// The signs of the picture fonts that texts do use: bullets, ticks and arrows. Others become a bullet.
QChar pictograph(ushort code)
{
    switch (code) {
    case 0x20:
        return QLatin1Char(' ');
    case 0x28:
        return QChar(0x260e);
    case 0x2a:
        return QChar(0x2709);
    case 0x4a:
        return QChar(0x263a);
    case 0x4c:
        return QChar(0x2639);
    case 0x6c:
        return QChar(0x25cf);
    case 0x6e:
        return QChar(0x25a0);
    case 0x6f:
    case 0xa8:
        return QChar(0x25a1);
    case 0x71:
        return QChar(0x2751);
    case 0x75:
        return QChar(0x25c6);
    case 0x76:
        return QChar(0x2756);
    case 0xa7:
        return QChar(0x25aa);
    case 0xab:
        return QChar(0x2605);
    case 0xd8:
        return QChar(0x27a2);
    case 0xdf:
    case 0xe0:
    case 0xe1:
    case 0xe2:
        return QChar(0x2190 + (code == 0xdf ? 0 : code == 0xe0 ? 2 : code == 0xe1 ? 1 : 3));
    case 0xe8:
        return QChar(0x2794);
    case 0xfb:
        return QChar(0x2717);
    case 0xfc:
        return QChar(0x2713);
    case 0xfd:
        return QChar(0x2612);
    case 0xfe:
        return QChar(0x2611);
    default:
        return QChar(0x2022);
    }
}

QString shownText(const VectorFont &font, const QString &text)
{
    QString shown = text.left(mostCharacters);
    const bool symbol = font.family == VectorFont::Family::Symbol;
    if (!symbol && font.family != VectorFont::Family::Pictographs)
        return shown;
    for (QChar &character : shown) {
        const ushort code = character.unicode() >> 8 == 0xf0 ? character.unicode() & 0xff : character.unicode();
        if (code < 0x100)
            character = symbol ? symbolSign(code) : pictograph(code);
    }
    return shown;
}

/// One visible character: where its text stands, in which face, and which glyph of that.
struct Glyph
{
    qsizetype unit;
    qsizetype units;
    int face;
    quint32 index;
};

/// The faces that a text needs, loaded when first asked for.
class Glyphs
{
public:
    explicit Glyphs(int face)
        : m_face(face)
    {
    }
    const QRawFont &font(int face)
    {
        QRawFont &font = m_fonts[size_t(face)];
        if (!font.isValid())
            font = loaded(face);
        return font;
    }
    const QRawFont &font() { return font(m_face); }
    Glyph find(const QString &text, qsizetype unit)
    {
        const bool pair =
            text.at(unit).isHighSurrogate() && unit + 1 < text.size() && text.at(unit + 1).isLowSurrogate();
        const QString character = text.mid(unit, pair ? 2 : 1);
        Glyph glyph{unit, character.size(), m_face, indexIn(m_face, character)};
        for (const int other : {signFace, styles, 0}) {
            if (glyph.index != 0)
                break;
            const quint32 index = indexIn(other, character);
            if (index != 0)
                glyph = {unit, character.size(), other, index};
        }
        return glyph;
    }
    double advance(const Glyph &glyph)
    {
        const QList<QPointF> advances =
            font(glyph.face).advancesForGlyphIndexes({glyph.index}, QRawFont::UseDesignMetrics);
        return advances.isEmpty() ? designSize / 2 : advances.constFirst().x();
    }

private:
    quint32 indexIn(int face, const QString &character)
    {
        const QList<quint32> indexes = font(face).glyphIndexesForString(character);
        return indexes.isEmpty() ? 0 : indexes.constFirst();
    }

    int m_face;
    std::array<QRawFont, faceCount> m_fonts;
};

/// From the design size to the caller's units.
struct Scale
{
    double across;
    double down;
};

/// As fonts' average widths were published when files began to ask for them: of English text, in thousandths. The
/// number that today's fonts hold is that of all their signs alike.
double averageWidth(const QRawFont &raw)
{
    constexpr std::array<int, 27> shares{
        166, 64, 14, 27, 35, 100, 20, 14, 42, 63, 3, 6, 35, 20, 56, 56, 17, 4, 49, 56, 71, 31, 10, 18, 3, 18, 2};
    const QList<quint32> indexes = raw.glyphIndexesForString(QStringLiteral(" abcdefghijklmnopqrstuvwxyz"));
    const QList<QPointF> advances = raw.advancesForGlyphIndexes(indexes, QRawFont::UseDesignMetrics);
    double sum = 0;
    for (qsizetype i = 0; i < std::min<qsizetype>(advances.size(), qsizetype(shares.size())); ++i)
        sum += advances[i].x() * shares[size_t(i)] / 1000;
    return sum;
}

Scale scaleOf(const VectorFont &font, const QRawFont &raw)
{
    const double whole = font.measure == VectorFont::Height::Em ? designSize : raw.ascent() + raw.descent();
    const double down = font.size / std::max(whole, 1.0);
    const double average = font.averageWidth > 0 ? averageWidth(raw) : 0;
    return {average > 0 ? font.averageWidth / average : down, down};
}

void addLines(VectorText &text, const VectorFont &font, const QRawFont &raw, double down)
{
    const double thickness = std::max(raw.lineThickness(), designSize / 20) * down;
    const double width = text.advance.x();
    // Outlines of glyphs turn either way; wound three times a line cancels none of them where it crosses.
    for (int turn = 0; turn < 3; ++turn) {
        if (font.underline)
            text.outlines.addRect(0, raw.underlinePosition() * down, width, thickness);
        if (font.strikeOut)
            text.outlines.addRect(0, -raw.ascent() * 0.33 * down, width, thickness);
    }
}

/// Widths as a typical face has them, where no face can be loaded.
VectorText blankText(const VectorFont &font, const QString &text, std::span<const QPointF> advances)
{
    const double em = font.measure == VectorFont::Height::Em ? font.size : font.size / 1.15;
    VectorText blank{{}, {}, em * 0.9, em * 0.22};
    const double average = font.averageWidth > 0 ? font.averageWidth : em * 0.5;
    for (qsizetype unit = 0; unit < text.size(); ++unit)
        blank.advance += size_t(unit) < advances.size() ? advances[size_t(unit)] : QPointF(average, 0);
    return blank;
}

bool contains(const QString &name, std::initializer_list<const char *> parts)
{
    return std::any_of(
        parts.begin(), parts.end(), [&name](const char *part) { return name.contains(QLatin1String(part)); });
}

}

VectorFont::Family vectorFamilyOf(QStringView name)
{
    const QString lower = name.toString().toLower();
    if (contains(lower, {"wingding", "webding", "dingbat", "marlett", "monotype sorts"}))
        return VectorFont::Family::Pictographs;
    // "Segoe UI Symbol" and its like are encoded as everything else.
    if (lower == QLatin1String("symbol") || contains(lower, {"symbol tiger", "symbolps", "symbol mt", "mt symbol"}))
        return VectorFont::Family::Symbol;
    if (contains(lower,
            {"courier", "consol", "fixed", "mono", "typewriter", "terminal", "letter gothic", "prestige",
                "lucida sans t", "ocr"})
        && !lower.startsWith(QLatin1String("monotype")))
        return VectorFont::Family::Monospaced;
    if (contains(lower, {"sans", "gothic"}))
        return VectorFont::Family::Sans;
    if (contains(lower,
            {"times", "roman", "garamond", "serif", "georgia", "book", "palatino", "century", "cambria", "dutch",
                "bodoni", "caslon", "minion", "baskerville", "goudy", "tms rmn", "charter", "song", "mincho", "simsun",
                "constantia", "rockwell", "cooper", "souvenir"}))
        return VectorFont::Family::Serif;
    return VectorFont::Family::Sans;
}

bool canDrawVectorText()
{
    return qGuiApp != nullptr && loaded(0).isValid();
}

void warmUpVectorText()
{
    if (!canDrawVectorText())
        return;
    for (int face = 0; face < faceCount; ++face) {
        const QRawFont raw = loaded(face);
        const QList<quint32> indexes = raw.glyphIndexesForString(QStringLiteral("A"));
        if (indexes.isEmpty())
            continue;
        raw.pathForGlyph(indexes.constFirst());
        raw.advancesForGlyphIndexes(indexes, QRawFont::UseDesignMetrics);
    }
}

VectorText layOutVectorText(const VectorFont &font, const QString &text, std::span<const QPointF> advances)
{
    if (!canDrawVectorText())
        return blankText(font, text, advances);
    const QString shown = shownText(font, text);
    Glyphs glyphs(faceOf(font));
    const QRawFont raw = glyphs.font();
    const Scale scale = scaleOf(font, raw);

    VectorText result{{}, {}, raw.ascent() * scale.down, raw.descent() * scale.down};
    result.outlines.setFillRule(Qt::WindingFill);
    for (qsizetype unit = 0; unit < shown.size();) {
        const Glyph glyph = glyphs.find(shown, unit);
        if (glyph.index != 0) {
            const QPainterPath outline = glyphs.font(glyph.face).pathForGlyph(glyph.index);
            const QPointF at = result.advance;
            result.outlines.addPath(QTransform(scale.across, 0, 0, scale.down, at.x(), at.y()).map(outline));
        }
        QPointF step;
        for (qsizetype i = unit; i < unit + glyph.units && size_t(i) < advances.size(); ++i)
            step += advances[size_t(i)];
        result.advance += size_t(unit) < advances.size() ? step : QPointF(glyphs.advance(glyph) * scale.across, 0);
        unit += glyph.units;
    }
    addLines(result, font, raw, scale.down);
    if (font.angle != 0)
        result.outlines = QTransform().rotate(-font.angle).map(result.outlines);
    return result;
}
