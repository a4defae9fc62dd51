#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// List files ".Lsl" and ".Lst": the DisplayList and the position of its current item. UTF-8, lines ended by CR LF; see
/// lumora-list(5).
///
///     [File List]
///     No. Of Pictures=2
///     Current Index=1
///     "0 =| /srv/me/a.jpg"
///     "1 =| /srv/me/b.mp3"
///     *** End of List ***

inline constexpr const char *listFileFilter =
    QT_TRANSLATE_NOOP("ListFile", "Lumora-Viewer Show List (*.Lsl)|*.Lsl|Lumora-Viewer (1.0) File List (*.Lst)|*.Lst|");
inline constexpr char standardListName[] = "Lumora-Viewer.Lsl";

/// Whether a name tells a list file: ".lsl" or ".lst" at its end, in any case.
bool isListFileName(const QString &path);

/// The bytes of a list. `currentIndex` is the text behind "Current Index=". A path with a double quote, a line break or
/// bytes that are not UTF-8 is written as a file:// URI inside the same grammar.
QByteArray writeListFile(const QStringList &paths, const QString &currentIndex);

/// What a reader finds, field by field.
struct ListFileContent
{
    bool isListFile = false; ///< the first field held "[File List]"
    std::optional<int> count; ///< of the header; none when its line is not there
    std::optional<int> currentIndex; ///< of the header, 0 for a negative number; none when its line is not there
    bool endReached = false; ///< nothing behind the header
    QStringList entries; ///< the paths, the mangled end marker among them when the count was too large
    std::optional<int> endMarkerAt; ///< number of entries before the end marker when it was read as an entry
};

/// Reads a list. `countBefore` is used when the header has no count. Never reads more than ListBox's 32,767 entries.
ListFileContent readListFile(const QByteArray &bytes, int countBefore);

/// The fields of a list file one after the other: a quoted field ends at its closing quote, an unquoted one at a comma
/// or the line's end. Blanks in front of a field are passed over. A field is UTF-8; one that is not is read as
/// Windows-1252.
class ListFieldReader
{
public:
    explicit ListFieldReader(const QByteArray &bytes);
    bool atEnd() const;
    /// None at the end of the file.
    std::optional<QString> next();

private:
    void skipSeparator();
    QByteArray m_bytes;
    qsizetype m_position = 0;
};

/// The path in an entry field: what stands two characters behind the first "|"; without one, the field without its
/// first character. file:// URIs are resolved.
QString pathOfListEntry(const QString &field);
