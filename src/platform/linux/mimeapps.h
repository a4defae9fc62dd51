#pragma once

#include <QByteArray>
#include <QHash>
#include <QVector>

#include <optional>

/// The groups "[Default Applications]" of a mimeapps.list, to be changed line by line: whatever is not a line of one of
/// the asked types stays as it is, with its line ends, comments, order and bytes of any kind.
///
/// Source: "Association between MIME types and applications" 1.0.1, whose files are of the form of the "Desktop Entry
/// Specification" 1.5. A group may stand there several times, and a type too: readers differ in whether the first or
/// the last line counts, so all of a type's lines are changed alike.
class MimeApps
{
public:
    /// `types` are those that are asked for; all others are not even remembered.
    MimeApps(const QByteArray &text, const QVector<QByteArray> &types);

    /// What stands behind "=" in each of a type's lines.
    QVector<QByteArray> values(const QByteArray &type) const;
    bool hasGroup() const { return m_insertAt.has_value(); }

    /// Gives the lines of a type other values; a line whose value is none goes away. As many as there are lines.
    void setValues(const QByteArray &type, const QVector<std::optional<QByteArray>> &values);
    /// A new line at the end of the first group, which is made when there is none.
    void addLine(const QByteArray &type, const QByteArray &value);
    /// Makes a group go away that has become empty, or keeps it when there is still anything in it.
    void removeEmptyGroup() { m_removeEmptyGroup = true; }

    QByteArray text() const;

private:
    struct Line
    {
        qsizetype begin = 0;
        qsizetype end = 0; ///< behind the text
        qsizetype next = 0; ///< behind the line end
    };
    struct Entry
    {
        Line line;
        qsizetype value = 0;
    };
    /// Bytes from `begin` to `end` become `text`.
    struct Edit
    {
        qsizetype begin = 0;
        qsizetype end = 0;
        QByteArray text;
    };

    Line lineAt(qsizetype begin) const;
    void read(const QVector<QByteArray> &types);
    void readEntry(const Line &line);

    QByteArray m_text;
    QByteArray m_lineEnd = "\n";
    bool m_lastLineIsOpen = false; ///< the file's last line has no end, and keeps none
    QHash<QByteArray, QVector<Entry>> m_entries;
    std::optional<qsizetype> m_insertAt; ///< behind the last line of the first group that holds anything
    Line m_header; ///< of the first group
    int m_linesOfGroups = 0; ///< lines that hold anything, without headers
    int m_groups = 0;
    QVector<Edit> m_edits;
    int m_removed = 0;
    QByteArrayList m_added;
    bool m_removeEmptyGroup = false;
};
