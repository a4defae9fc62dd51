#include "actions/listmanagement.h"

#include <algorithm>
#include <bit>
#include <string>

namespace {

// The types that the preferences tell apart, and .JPE, which finds .JPEG too. One of them all has no box: .HRZ, which
// a text finds as well.
// clang-format off
constexpr TypeBox boxes[] = {
    {0, "(.THM)"}, {1, "(.PMP)"}, {2, "(.RAF)"}, {3, "(.ORF)"}, {4, "(.NEF)"}, {5, "(.MRW)"},
    {6, "(.JP2)"}, {7, "(.FPX)"}, {8, "(.DCR)"}, {9, "(.CRW)"}, {10, "(.WBMP)"}, {11, "(.XWD)"},
    {12, "(.XPM)"}, {13, "(.XBM)"}, {14, "(.RGB)"}, {15, "(.SFW)"}, {16, "(.PSP)"}, {17, "(.PSD)"},
    {18, "(.PCD)"}, {19, "(.MBM)"}, {20, "(.DCX)"}, {21, "(.MID)"}, {22, "(.MP3)"}, {23, "(.MP2)"},
    {24, "(.MPG)"}, {25, "(.WAV)"}, {26, "(.AVI)"}, {27, "(.WMV)"}, {28, "(.WMA)"}, {29, "(.ASX)"},
    {30, "(.ASF)"}, {31, "(.WPG)"}, {32, "(.WMF)"}, {33, "(.TIF)"}, {34, "(.TGA)"}, {35, "(.RLE)"},
    {36, "(.RAS)"}, {37, "(.PPM)"}, {38, "(.PNM)"}, {39, "(.PNG)"}, {40, "(.PIC)"}, {41, "(.PGM)"},
    {42, "(.PCX)"}, {43, "(.PBM)"}, {44, "(.MSP)"}, {45, "(.MAC)"}, {46, "(.LBM)"}, {47, "(.JPG)"},
    {48, "(.JPE)"}, {49, "(.IMG)"}, {51, "(.IFF)"}, {52, "(.ICO)"}, {53, "(.GIF)"}, {54, "(.GEM)"},
    {55, "(.EMF)"}, {56, "(.DIB)"}, {57, "(.CUT)"}, {58, "(.CUR)"}, {59, "(.BMP)"}, {60, "(.ART)"},
};
// clang-format on
static_assert(std::size(boxes) == lastTypeBox - firstTypeBox);

constexpr int codeUnits = 4;

/// Four units as one number, to be compared at once.
quint64 packed(QStringView units)
{
    quint64 number = 0;
    for (const QChar unit : units)
        number = number << 16 | unit.unicode();
    return number;
}

/// Gives texts in upper case, one after the other. Most paths are ASCII: they need no text of their own each.
class UpperCase
{
public:
    QStringView of(QStringView text)
    {
        m_ascii.resize(std::size_t(text.size()));
        char16_t all = 0;
        std::transform(text.utf16(), text.utf16() + text.size(), m_ascii.begin(), [&all](char16_t unit) {
            all |= unit;
            return char16_t(unit - (unit >= u'a' && unit <= u'z' ? u'a' - u'A' : 0));
        });
        if (all < 0x80)
            return m_ascii;
        m_other = text.toString().toUpper();
        return m_other;
    }

private:
    std::u16string m_ascii;
    QString m_other;
};

}

std::span<const TypeBox> typeBoxes()
{
    return boxes;
}

TypeTest::TypeTest(const QStringList &captions)
{
    for (const QString &caption : captions)
        m_codes.push_back(packed(caption.toUpper().mid(1, codeUnits)));
    std::sort(m_codes.begin(), m_codes.end());
}

int TypeTest::matches(QStringView upperEntry) const
{
    // Every code begins with a dot: one walk over the dots finds them all, where one search for each would cost sixty.
    quint64 found = 0;
    for (qsizetype dot = upperEntry.indexOf(u'.'); dot >= 0; dot = upperEntry.indexOf(u'.', dot + 1)) {
        if (dot + codeUnits > upperEntry.size())
            break;
        const quint64 wanted = packed(upperEntry.sliced(dot, codeUnits));
        const auto code = std::lower_bound(m_codes.begin(), m_codes.end(), wanted);
        if (code != m_codes.end() && *code == wanted)
            found |= quint64(1) << (code - m_codes.begin());
    }
    return std::popcount(found);
}

QList<int> entriesOfTypes(const QStringList &entries, const TypeTest &types, TypeMatch match)
{
    QList<int> indices;
    if (types.isEmpty())
        return indices;
    UpperCase upperCase;
    for (int index = 0; index < int(entries.size()); ++index) {
        const int matches = types.matches(upperCase.of(entries[index]));
        if (match == TypeMatch::Any ? matches > 0 : matches % 2 == 1)
            indices.append(index);
    }
    return indices;
}

QList<int> entriesWithText(const QStringList &entries, const QString &text, const TypeTest &types)
{
    QList<int> indices;
    if (types.isEmpty())
        return indices;
    const QString wanted = text.toUpper();
    UpperCase upperCase;
    for (int index = 0; index < int(entries.size()); ++index) {
        if (upperCase.of(entries[index]).contains(wanted))
            indices.append(index);
    }
    return indices;
}

std::optional<int> currentAfterRemoval(int lowest, int newCount)
{
    if (newCount == 0)
        return std::nullopt;
    return qMin(lowest, newCount - 1);
}
