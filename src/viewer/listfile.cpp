#include "viewer/listfile.h"

#include "platform/filepath.h"
#include "platform/textdecoding.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int maximumEntries = 32767;
/// As long as this no path can be opened. Of a longer text this much is kept: it names nothing all the same, and to
/// draw millions of letters would take minutes.
constexpr qsizetype longestPath = 4096;
constexpr QLatin1String firstLine("[File List]");
constexpr QLatin1String countName("No. Of Pictures");
constexpr QLatin1String indexName("Current Index");
constexpr QLatin1String endMarker("*** End of List ***");

/// The number a text begins with, cut to a whole one: "12.9 and more" is 12, "1e3" is 1000, "none" is 0.
int leadingNumber(QStringView text)
{
    const auto digits = [&text](qsizetype at) {
        while (at < text.size() && text[at] >= u'0' && text[at] <= u'9')
            ++at;
        return at;
    };
    text = text.trimmed();
    qsizetype end = digits(text.startsWith(u'-') || text.startsWith(u'+') ? 1 : 0);
    if (end < text.size() && text[end] == u'.')
        end = digits(end + 1);
    if (end < text.size() && (text[end] == u'e' || text[end] == u'E')) {
        const bool sign = end + 1 < text.size() && (text[end + 1] == u'-' || text[end + 1] == u'+');
        const qsizetype start = end + (sign ? 2 : 1);
        if (digits(start) > start)
            end = digits(start);
    }
    const double number = text.first(end).toDouble();
    constexpr double limit = std::numeric_limits<int>::max();
    return std::isnan(number) ? 0 : int(std::clamp(std::trunc(number), -limit, limit));
}

int numberBehindEquals(const QString &field)
{
    return leadingNumber(QStringView(field).sliced(field.indexOf(u'=') + 1));
}

QString entryText(QString path)
{
    static const QRegularExpression breaksGrammar(QStringLiteral("[\"\\r\\n]"));
    if (!hasForeignBytes(path) && !path.contains(breaksGrammar))
        return path;
    // Only a full path has a URI. What a damaged list left behind is none; it must not break the lines around it.
    return path.startsWith(u'/') ? fileUri(path) : path.replace(breaksGrammar, QStringLiteral("?"));
}

}

bool isListFileName(const QString &path)
{
    return path.endsWith(QLatin1String(".lsl"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".lst"), Qt::CaseInsensitive);
}

QByteArray writeListFile(const QStringList &paths, const QString &currentIndex)
{
    QByteArray bytes;
    bytes.reserve(100 + paths.size() * 80);
    const auto line = [&bytes](const QByteArray &text) { bytes += text + "\r\n"; };
    line("[File List]");
    line("No. Of Pictures=" + QByteArray::number(paths.size()));
    line("Current Index=" + currentIndex.trimmed().toUtf8());
    for (qsizetype index = 0; index < paths.size(); ++index)
        line('"' + QByteArray::number(index) + " =| " + entryText(paths[index]).toUtf8() + '"');
    line("*** End of List ***");
    return bytes;
}

ListFileContent readListFile(const QByteArray &bytes, int countBefore)
{
    ListFileContent content;
    ListFieldReader fields(bytes);
    content.isListFile = fields.next().value_or(QString()).contains(firstLine);
    if (!content.isListFile)
        return content;
    // The header is read by its place: a line that says something else is passed over and leaves its value as it was.
    if (const auto field = fields.next(); field && field->contains(countName))
        content.count = numberBehindEquals(*field);
    if (const auto field = fields.next(); field && field->contains(indexName))
        content.currentIndex = std::max(0, numberBehindEquals(*field));
    content.endReached = fields.atEnd();

    const int count = std::min(content.count.value_or(countBefore), maximumEntries);
    for (int index = 0; index < count; ++index) {
        const auto field = fields.next();
        if (!field)
            break;
        // A count that is too large makes the end marker an entry like any other; lists are read like this from version
        // 1 on.
        if (field->contains(endMarker))
            content.endMarkerAt = index;
        content.entries.append(pathOfListEntry(*field));
    }
    return content;
}

ListFieldReader::ListFieldReader(const QByteArray &bytes)
    : m_bytes(bytes)
    , m_position(bytes.startsWith("\xef\xbb\xbf") ? 3 : 0)
{
}

bool ListFieldReader::atEnd() const
{
    return m_position >= m_bytes.size();
}

/// Steps over blanks, then over one comma or one line end.
void ListFieldReader::skipSeparator()
{
    while (!atEnd() && m_bytes[m_position] == ' ')
        ++m_position;
    if (atEnd())
        return;
    const char separator = m_bytes[m_position];
    if (separator == ',' || separator == '\n' || separator == '\r')
        ++m_position;
    if (separator == '\r' && !atEnd() && m_bytes[m_position] == '\n')
        ++m_position;
}

std::optional<QString> ListFieldReader::next()
{
    while (!atEnd() && m_bytes[m_position] == ' ')
        ++m_position;
    if (atEnd())
        return std::nullopt;
    const bool quoted = m_bytes[m_position] == '"';
    if (quoted)
        ++m_position;
    // A quote that is never closed ends with its line: one damaged line costs one entry, not the rest of the list.
    const auto ends = [quoted](char byte) { return byte == '\n' || byte == '\r' || byte == (quoted ? '"' : ','); };
    const auto end = std::find_if(m_bytes.cbegin() + m_position, m_bytes.cend(), ends);
    const qsizetype length = end - (m_bytes.cbegin() + m_position);
    const QString field = textFromBytes(QByteArrayView(m_bytes).sliced(m_position, length));
    m_position += length;
    if (quoted && !atEnd() && m_bytes[m_position] == '"')
        ++m_position;
    skipSeparator();
    return field;
}

QString pathOfListEntry(const QString &field)
{
    const qsizetype bar = field.indexOf(u'|');
    // Without a bar the rule cuts as if it stood in front of the field: the first character goes.
    const QString path = field.mid(bar + 2);
    const QString resolved = path.startsWith(QLatin1String("file://")) ? pathFromFileUri(path) : QString();
    return (resolved.isEmpty() ? path : resolved).left(longestPath);
}
