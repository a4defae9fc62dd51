#include "engine/player/asx.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <QRegularExpression>
#include <QStringDecoder>

namespace {

constexpr qint64 maximumBytes = 1 << 20;
constexpr int maximumEntries = 1000;
constexpr int maximumLists = 100;
constexpr int maximumDepth = 3;

QString decodedText(const QByteArray &bytes)
{
    if (const auto encoding = QStringConverter::encodingForData(bytes))
        return QStringDecoder(*encoding).decode(bytes);
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString text = utf8.decode(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

QString withoutComments(const QString &text)
{
    QString result;
    qsizetype from = 0;
    for (;;) {
        const qsizetype open = text.indexOf(QLatin1String("<!--"), from);
        result += QStringView(text).mid(from, open < 0 ? -1 : open - from);
        const qsizetype close = open < 0 ? -1 : text.indexOf(QLatin1String("-->"), open + 4);
        if (close < 0)
            return result;
        from = close + 3;
    }
}

/// One pass, so that "&amp;lt;" stays "&lt;". A bare "&" is common in these lists and means itself.
QString withoutEntities(const QString &text)
{
    static constexpr std::pair<QLatin1String, char16_t> entities[] = {
        {QLatin1String("&amp;"), u'&'},
        {QLatin1String("&lt;"), u'<'},
        {QLatin1String("&gt;"), u'>'},
        {QLatin1String("&quot;"), u'"'},
        {QLatin1String("&apos;"), u'\''},
    };
    QString result;
    for (qsizetype at = 0; at < text.size(); ++at) {
        QChar sign = text.at(at);
        if (sign == u'&') {
            for (const auto &[entity, meaning] : entities) {
                if (QStringView(text).mid(at).startsWith(entity, Qt::CaseInsensitive)) {
                    sign = meaning;
                    at += entity.size() - 1;
                    break;
                }
            }
        }
        result += sign;
    }
    return result;
}

/// Empty for an address that is no local file.
QString pathOfAddress(const QString &address, const QString &folder)
{
    static const QRegularExpression scheme(
        QStringLiteral("^[a-z][a-z0-9+.-]*:"), QRegularExpression::CaseInsensitiveOption);
    QString path = address.trimmed();
    path.replace(u'\\', u'/');
    if (path.startsWith(QLatin1String("file:"), Qt::CaseInsensitive))
        return pathFromFileUri(QLatin1String("file:") + path.mid(5));
    if (path.isEmpty() || path.startsWith(QLatin1String("//")) || scheme.match(path).hasMatch())
        return QString();
    return absolutePath(path, folder);
}

/// A name in a list may be written as an address is, with "%20" for a blank; the name as it stands goes first.
QString existingSpelling(const QString &path)
{
    if (!path.contains(u'%') || FileExists(path))
        return path;
    const QString decoded = pathFromBytes(QByteArray::fromPercentEncoding(pathToBytes(path)));
    return !decoded.contains(QChar(0)) && FileExists(decoded) ? decoded : path;
}

struct Reading
{
    QStringList entries;
    QStringList openLists; ///< from the first list down to the one being read: a list in itself is left out
    int lists = 0;
};

void readInto(Reading &reading, const QString &path)
{
    if (reading.openLists.contains(path) || reading.openLists.size() >= maximumDepth || ++reading.lists > maximumLists)
        return;
    const Result<QByteArray> bytes = readFile(path, maximumBytes);
    if (!bytes)
        return;
    reading.openLists.append(path);
    for (const QString &entry : asxEntries(*bytes, SplitFilePath(path).folder)) {
        if (reading.entries.size() >= maximumEntries)
            break;
        const QString spelling = existingSpelling(entry);
        if (isAsxName(spelling))
            readInto(reading, spelling);
        else
            reading.entries.append(spelling);
    }
    reading.openLists.removeLast();
}

}

QStringList asxEntries(const QByteArray &bytes, const QString &folder)
{
    // The value ends at a quote or at the next tag: an unclosed quote must not make each tag scan the rest of the text.
    static const QRegularExpression tag(
        QStringLiteral("<\\s*(?:entry)?ref\\s[^<>]*?\\bhref\\s*=\\s*(?:\"([^\"<]*)\"|'([^'<]*)')"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression line(QStringLiteral("^\\s*Ref\\d+\\s*=(.*)$"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);

    const QString text = decodedText(bytes).trimmed();
    const bool tagged = text.startsWith(u'<');
    QStringList entries;
    auto found = tagged ? tag.globalMatch(withoutComments(text)) : line.globalMatch(text);
    while (found.hasNext() && entries.size() < maximumEntries) {
        const QRegularExpressionMatch match = found.next();
        const QString address = match.captured(match.lastCapturedIndex());
        const QString path = pathOfAddress(tagged ? withoutEntities(address) : address, folder);
        if (!path.isEmpty() && !path.contains(QChar(0)))
            entries.append(path);
    }
    return entries;
}

bool isAsxName(const QString &path)
{
    return path.endsWith(QLatin1String(".asx"), Qt::CaseInsensitive);
}

QStringList readAsx(const QString &path)
{
    Reading reading;
    readInto(reading, path);
    return reading.entries;
}
