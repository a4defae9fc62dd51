#include "platform/textdecoding.h"

#include <array>

namespace {
/// Bytes 0x80 to 0x9f of Windows-1252; its five gaps stand for themselves. From the code chart of the Unicode
/// Consortium.
constexpr std::array<char16_t, 32> windows1252{0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6,
    0x2030, 0x0160, 0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013,
    0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};
}

QString textFromBytes(QByteArrayView bytes)
{
    if (bytes.isValidUtf8())
        return QString::fromUtf8(bytes);
    QString text = QString::fromLatin1(bytes);
    for (QChar &character : text) {
        if (character.unicode() >= 0x80 && character.unicode() <= 0x9f)
            character = QChar(windows1252[character.unicode() - 0x80U]);
    }
    return text;
}
