#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <vector>

// What the list management does to a list, without the list: which entries a text or the checked file types mean.

/// A box of the file types: its index in the control array and its caption, "(.JPG)".
struct TypeBox
{
    int index;
    const char *caption;
};
inline constexpr int firstTypeBox = 0;
inline constexpr int lastTypeBox = 60;
inline constexpr int missingTypeBox = 50;
/// The sixty boxes, by index.
std::span<const TypeBox> typeBoxes();

/// Tells which of the checked boxes mean an entry. The test is a loose one: the four characters of a caption from its
/// second on are looked for anywhere in the path, so a folder's name counts and a longer type is cut (".WBM").
class TypeTest
{
public:
    /// The captions of the checked boxes.
    explicit TypeTest(const QStringList &captions);
    bool isEmpty() const { return m_codes.empty(); }
    /// How many boxes mean this entry; it stands in upper case.
    int matches(QStringView upperEntry) const;

private:
    std::vector<quint64> m_codes; ///< four UTF-16 units each, ascending
};

enum class TypeMatch {
    Any, ///< at least one box means the entry
    Odd, ///< an odd number of boxes do: what is reversed once for each box ends up changed
};
/// The indices of the entries that the boxes mean, ascending.
QList<int> entriesOfTypes(const QStringList &entries, const TypeTest &types, TypeMatch match);

/// The indices of the entries that hold the text in any case, ascending. An empty text is in every entry; a type is
/// not looked at, but without any box nothing is found.
QList<int> entriesWithText(const QStringList &entries, const QString &text, const TypeTest &types);

/// The entry that becomes the current one after a removal: `lowest` is the lowest index that went, 0 when none did.
/// None for an empty list.
std::optional<int> currentAfterRemoval(int lowest, int newCount);
