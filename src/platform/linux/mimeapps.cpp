#include "platform/linux/mimeapps.h"

#include <algorithm>

namespace {
constexpr char groupHeader[] = "[Default Applications]";
}

MimeApps::MimeApps(const QByteArray &text, const QVector<QByteArray> &types)
    : m_text(text)
{
    const qsizetype end = text.indexOf('\n');
    if (end > 0 && text[end - 1] == '\r')
        m_lineEnd = "\r\n";
    m_lastLineIsOpen = !text.isEmpty() && !text.endsWith('\n');
    if (m_lastLineIsOpen)
        m_text += m_lineEnd;
    read(types);
}

MimeApps::Line MimeApps::lineAt(qsizetype begin) const
{
    Line line{begin, m_text.indexOf('\n', begin), 0};
    line.next = line.end + 1;
    if (line.end > begin && m_text[line.end - 1] == '\r')
        --line.end;
    return line;
}

void MimeApps::read(const QVector<QByteArray> &types)
{
    for (const QByteArray &type : types)
        m_entries.insert(type, {});
    bool inGroup = false;
    for (qsizetype at = 0; at < m_text.size();) {
        const Line line = lineAt(at);
        at = line.next;
        const QByteArray text =
            QByteArray::fromRawData(m_text.constData() + line.begin, line.end - line.begin).trimmed();
        if (text.startsWith('[')) {
            inGroup = text == groupHeader;
            if (inGroup && ++m_groups == 1) {
                m_header = line;
                m_insertAt = line.next;
            }
        } else if (inGroup && !text.isEmpty()) {
            ++m_linesOfGroups;
            if (m_groups == 1 && !text.startsWith('#'))
                m_insertAt = line.next;
            readEntry(line);
        }
    }
}

void MimeApps::readEntry(const Line &line)
{
    const QByteArray text = QByteArray::fromRawData(m_text.constData() + line.begin, line.end - line.begin);
    const qsizetype equals = text.indexOf('=');
    if (equals < 0)
        return;
    const auto entries = m_entries.find(text.left(equals).trimmed());
    if (entries != m_entries.end())
        entries->append({line, line.begin + equals + 1});
}

QVector<QByteArray> MimeApps::values(const QByteArray &type) const
{
    QVector<QByteArray> values;
    for (const Entry &entry : m_entries.value(type))
        values.append(m_text.mid(entry.value, entry.line.end - entry.value));
    return values;
}

void MimeApps::setValues(const QByteArray &type, const QVector<std::optional<QByteArray>> &values)
{
    const QVector<Entry> entries = m_entries.value(type);
    for (qsizetype i = 0; i < std::min(entries.size(), values.size()); ++i) {
        const Entry &entry = entries[i];
        if (values[i]) {
            m_edits.append({entry.value, entry.line.end, *values[i]});
        } else {
            m_edits.append({entry.line.begin, entry.line.next, {}});
            ++m_removed;
        }
    }
}

void MimeApps::addLine(const QByteArray &type, const QByteArray &value)
{
    m_added.append(type + '=' + value);
}

QByteArray MimeApps::text() const
{
    QVector<Edit> edits = m_edits;
    if (m_removeEmptyGroup && m_groups == 1 && m_removed == m_linesOfGroups && m_added.isEmpty())
        edits.append({m_header.begin, m_header.next, {}});
    if (!m_added.isEmpty()) {
        const qsizetype at = m_insertAt.value_or(m_text.size());
        const QByteArray header = m_insertAt ? QByteArray() : groupHeader + m_lineEnd;
        edits.append({at, at, header + m_added.join(m_lineEnd) + m_lineEnd});
    }
    std::stable_sort(edits.begin(), edits.end(),
        [](const Edit &a, const Edit &b) { return std::pair(a.begin, a.end) < std::pair(b.begin, b.end); });
    QByteArray result;
    qsizetype at = 0;
    for (const Edit &edit : std::as_const(edits)) {
        result.append(m_text.constData() + at, edit.begin - at);
        result.append(edit.text);
        at = edit.end;
    }
    result.append(m_text.constData() + at, m_text.size() - at);
    if (m_lastLineIsOpen && result.endsWith(m_lineEnd))
        result.chop(m_lineEnd.size());
    return result;
}
