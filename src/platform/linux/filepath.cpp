#include "platform/filepath.h"

#include <QStringList>

namespace {

constexpr char16_t foreignFirst = 0xDC80;
constexpr char16_t foreignLast = 0xDCFF;

/// The length of the well-formed UTF-8 sequence at `at`, 0 when there is none. Over-long forms, surrogates and values
/// beyond U+10FFFF are not well-formed (Unicode, table 3-7), so exactly one text stands for each byte sequence.
int sequenceLength(const uchar *at, qsizetype left)
{
    const auto continues = [&](int index, uchar low = 0x80, uchar high = 0xBF) {
        return index < left && at[index] >= low && at[index] <= high;
    };
    const uchar lead = at[0];
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return continues(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const uchar low = lead == 0xE0 ? 0xA0 : 0x80;
        const uchar high = lead == 0xED ? 0x9F : 0xBF;
        return continues(1, low, high) && continues(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const uchar low = lead == 0xF0 ? 0x90 : 0x80;
        const uchar high = lead == 0xF4 ? 0x8F : 0xBF;
        return continues(1, low, high) && continues(2) && continues(3) ? 4 : 0;
    }
    return 0;
}

char32_t decodeSequence(const uchar *at, int length)
{
    if (length == 1)
        return at[0];
    char32_t value = at[0] & (0xFF >> (length + 1));
    for (int index = 1; index < length; ++index)
        value = value << 6 | (at[index] & 0x3F);
    return value;
}

void appendUtf8(QByteArray &bytes, char32_t value)
{
    const auto tail = [&](int shift) { bytes.append(static_cast<char>(0x80 | ((value >> shift) & 0x3F))); };
    if (value < 0x80) {
        bytes.append(static_cast<char>(value));
    } else if (value < 0x800) {
        bytes.append(static_cast<char>(0xC0 | value >> 6));
        tail(0);
    } else if (value < 0x10000) {
        bytes.append(static_cast<char>(0xE0 | value >> 12));
        tail(6);
        tail(0);
    } else {
        bytes.append(static_cast<char>(0xF0 | value >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// A lone half of a surrogate pair that stands for a byte. In a well-formed pair the low half never stands alone.
bool isForeignAt(const QString &path, qsizetype index)
{
    const char16_t unit = path[index].unicode();
    return unit >= foreignFirst && unit <= foreignLast && (index == 0 || !path[index - 1].isHighSurrogate());
}

/// Marks that turn the reading direction around: a name must not be able to disguise its extension with them.
bool isDirectionMark(char16_t unit)
{
    return (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069) || unit == 0x200E || unit == 0x200F;
}

QChar displayed(QChar character)
{
    const char16_t unit = character.unicode();
    if (unit < 0x20)
        return QChar(0x2400 + unit); // the control pictures block mirrors the control characters
    if (unit == 0x7F)
        return QChar(0x2421);
    if (unit == 0x2028 || unit == 0x2029 || unit == 0x85)
        return QChar(0x2424);
    if ((unit >= 0x80 && unit < 0xA0) || isDirectionMark(unit))
        return QChar(QChar::ReplacementCharacter);
    return character;
}

} // namespace

QString pathFromBytes(const QByteArray &bytes)
{
    QString path;
    path.reserve(bytes.size());
    const uchar *at = reinterpret_cast<const uchar *>(bytes.constData());
    qsizetype left = bytes.size();
    while (left > 0) {
        const int length = sequenceLength(at, left);
        if (length == 0)
            path.append(QChar(foreignFirst + (*at - 0x80)));
        else if (length == 1)
            path.append(QLatin1Char(static_cast<char>(*at)));
        else
            path.append(QChar::fromUcs4(decodeSequence(at, length)));
        at += qMax(length, 1);
        left -= qMax(length, 1);
    }
    return path;
}

QByteArray pathToBytes(const QString &path)
{
    QByteArray bytes;
    bytes.reserve(path.size() + path.size() / 2);
    for (qsizetype index = 0; index < path.size(); ++index) {
        const QChar unit = path[index];
        if (unit.isHighSurrogate() && index + 1 < path.size() && path[index + 1].isLowSurrogate()) {
            appendUtf8(bytes, QChar::surrogateToUcs4(unit, path[index + 1]));
            ++index;
        } else if (unit.unicode() >= foreignFirst && unit.unicode() <= foreignLast) {
            bytes.append(static_cast<char>(unit.unicode() - foreignFirst + 0x80));
        } else {
            appendUtf8(bytes, unit.unicode()); // any other lone half becomes three bytes, so that no text is dropped
        }
    }
    return bytes;
}

bool hasForeignBytes(const QString &path)
{
    for (qsizetype index = 0; index < path.size(); ++index) {
        if (isForeignAt(path, index))
            return true;
    }
    return false;
}

QString displayPath(const QString &path)
{
    QString text = path;
    for (qsizetype index = 0; index < text.size(); ++index) {
        const QChar unit = text[index];
        if (unit.isHighSurrogate() && index + 1 < text.size() && text[index + 1].isLowSurrogate()) {
            ++index;
            continue;
        }
        const QChar shown = unit.isSurrogate() ? QChar(QChar::ReplacementCharacter) : displayed(unit);
        if (shown != unit)
            text[index] = shown;
    }
    return text;
}

QString fileUri(const QString &path)
{
    return QStringLiteral("file://") + QString::fromLatin1(pathToBytes(path).toPercentEncoding("/"));
}

QString pathFromFileUri(const QString &uri)
{
    if (!uri.startsWith(QLatin1String("file:"), Qt::CaseInsensitive))
        return QString();
    QString rest = uri.mid(5);
    if (rest.startsWith(QLatin1String("//"))) {
        const qsizetype slash = rest.indexOf(QLatin1Char('/'), 2);
        if (slash < 0)
            return QString();
        const QString host = rest.mid(2, slash - 2);
        if (!host.isEmpty() && host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) != 0)
            return QString();
        rest = rest.mid(slash);
    }
    for (const QLatin1Char end : {QLatin1Char('#'), QLatin1Char('?')})
        rest = rest.section(end, 0, 0);
    const QByteArray bytes = QByteArray::fromPercentEncoding(pathToBytes(rest));
    if (!bytes.startsWith('/') || bytes.contains('\0'))
        return QString();
    return pathFromBytes(bytes);
}

QString FileNameOfPath(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

PathParts SplitFilePath(const QString &path)
{
    const qsizetype afterSeparator = path.lastIndexOf(QLatin1Char('/')) + 1;
    return {QString(), path.left(afterSeparator), path.mid(afterSeparator)};
}

QString absolutePath(const QString &path, const QString &currentFolder)
{
    if (path.isEmpty())
        return QString();
    const QString whole = path.startsWith(QLatin1Char('/')) ? path : currentFolder + QLatin1Char('/') + path;
    QStringList kept;
    const QStringList steps = whole.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &step : steps) {
        if (step == QLatin1String("..")) {
            if (!kept.isEmpty())
                kept.removeLast();
        } else if (step != QLatin1String(".")) {
            kept.append(step);
        }
    }
    QString result = QLatin1Char('/') + kept.join(QLatin1Char('/'));
    if (path.endsWith(QLatin1Char('/')) && !kept.isEmpty())
        result += QLatin1Char('/');
    return result;
}
