#include "app/mediatypes.h"

#include <string_view>
#include <utility>

// clang-format off
const std::array<const char *, 29> fileTypeCaptions{
    ".ART", ".BMP", ".CUR", ".CUT", ".DIB", ".EMF", ".GEM", ".GIF", ".HRZ", ".ICO", ".IFF", ".IMG", ".JPG", ".LBM", ".MAC",
    ".MSP", ".PBM", ".PCX", ".PGM", ".PIC", ".PNG", ".PNM", ".PPM", ".RAS", ".RLE", ".TGA", ".TIF", ".WMF", ".WPG",
};
const std::array<const char *, 10> avFileTypeCaptions{
    QT_TRANSLATE_NOOP("MediaTypes", "(.ASF) - Active Streaming Format"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.ASX) - Active Streaming Format"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.WMA) - Windows Media Audio"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.WMV) - Windows Media Video"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.AVI) - Windows Audio Visual Format"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.WAV) - Windows Wave Audio Format"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.MPG) - MPEG Movie Format"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.MP2) - MPEG Audio Layer 2"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.MP3) - MPEG Audio Layer 3"),
    QT_TRANSLATE_NOOP("MediaTypes", "(.MID) - MIDI Music Format"),
};
const std::array<const char *, 21> polyFileTypeCaptions{
    ".PCD", ".PSP", ".SFW", ".RGB", ".PSD", ".XBM", ".XPM", ".XWD", ".DCX", ".WBMP", ".MBM",
    ".CRW", ".DCR", ".FPX", ".JP2", ".MRW", ".NEF", ".ORF", ".PMP", ".RAF", ".THM",
};
const std::array<const char *, 5> photoCDSizeCaptions{
    QT_TRANSLATE_NOOP("MediaTypes", "192 W  x  128 H"),
    QT_TRANSLATE_NOOP("MediaTypes", "384 W  x  256 H"),
    QT_TRANSLATE_NOOP("MediaTypes", "768 W  x  512 H"),
    QT_TRANSLATE_NOOP("MediaTypes", "1536 W  x  1024 H"),
    QT_TRANSLATE_NOOP("MediaTypes", "3072 W  x  2048 H"),
};

namespace {
// Codes of one width stand packed behind each other. The first list that holds an extension gives its kind.
struct KindList {
    std::size_t width;
    std::string_view codes;
    QLatin1String kind;
};
constexpr KindList kindLists[] = {
    {3, "BMPDIBICOIFFJPGPBMPCXPGMPICPNGPNMPPMRLERASTGATIFDCXMBMPCDPSDPSPSFWRGBXBMXPMXWDJPE", kindPoly},
    {4, "WBMPJPEGTIFF", kindPoly},
    {3, "CRWDCRFPXJP2MRWNEFORFRAFPMPTHM", kindPoly},
    {3, "ASFASXWMAWMVAVIWAVMPGMP2MP3MID", kindMotion},
    {4, "MPEG", kindMotion},
    {3, "ARTCURCUTEMFGEMGIFHRZIMGLBMMACMSPWMFWPG", kindPicture},
};

// Types whose icon bears their own name. ".rgb" has no icon, nor have the long forms of JPEG, TIFF and MPEG.
constexpr const char *ownIcons[] = {
    "art", "asf", "asx", "avi", "bmp", "cur", "cut", "dcx", "dib", "emf", "gem", "gif", "hrz", "ico", "iff", "img", "jpg",
    "lbm", "mac", "mbm", "mid", "mpg", "mp2", "mp3", "msp", "pbm", "pcd", "pcx", "pgm", "pic", "png", "pnm", "ppm", "psd",
    "psp", "ras", "tga", "tif", "wav", "wbmp", "wma", "wmv", "wmf", "wpg", "xbm", "xpm", "xwd", "crw", "dcr", "fpx", "jp2",
    "mrw", "nef", "orf", "raf", "pmp", "thm",
};
// Types that show another's icon.
constexpr std::pair<const char *, const char *> lentIcons[] = {{"jpe", "jpg"}, {"rle", "sfw"}, {"sfw", "dib"}};
// clang-format on

bool sameText(QStringView text, std::string_view code)
{
    return text.compare(QLatin1String(code.data(), qsizetype(code.size())), Qt::CaseInsensitive) == 0;
}

void append(QString &patterns, QLatin1String extension)
{
    patterns += patterns.isEmpty() ? QLatin1String("*") : QLatin1String(";*");
    patterns += extension;
}
}

QLatin1String GetMediaKind(QStringView path)
{
    const QStringView extension = path.mid(path.lastIndexOf(u'.') + 1);
    if (extension.size() == path.size())
        return kindPicture;
    for (const KindList &list : kindLists) {
        if (extension.size() != qsizetype(list.width))
            continue;
        for (std::size_t at = 0; at < list.codes.size(); at += list.width) {
            if (sameText(extension, list.codes.substr(at, list.width)))
                return list.kind;
        }
    }
    return kindPicture;
}

FilePatterns filePatterns(const EnabledFileTypes &enabled)
{
    FilePatterns patterns;
    for (std::size_t i = 0; i < fileTypeCaptions.size(); ++i) {
        if (enabled.fileTypes[i])
            append(patterns.picture, QLatin1String(fileTypeCaptions[i]));
    }
    if (patterns.picture.contains(QLatin1String(".TIF")))
        append(patterns.picture, QLatin1String(".TIFF"));
    if (patterns.picture.contains(QLatin1String(".JPG"))) {
        append(patterns.picture, QLatin1String(".JPE"));
        append(patterns.picture, QLatin1String(".JPEG"));
    }
    // The extension stands in the caption's brackets. ".MPEG" has no pattern: such files play, but no search collects
    // them.
    for (std::size_t i = 0; i < avFileTypeCaptions.size(); ++i) {
        if (enabled.avFileTypes[i])
            append(patterns.motion, QLatin1String(avFileTypeCaptions[i]).mid(1, 4));
    }
    for (std::size_t i = 0; i < polyFileTypeCaptions.size(); ++i) {
        if (enabled.polyFileTypes[i])
            append(patterns.poly, QLatin1String(polyFileTypeCaptions[i]));
    }
    return patterns;
}

bool matchesPattern(QStringView fileName, QStringView patterns)
{
    for (const QStringView pattern : patterns.tokenize(u';', Qt::SkipEmptyParts)) {
        const QStringView extension = pattern.mid(1);
        if (pattern.startsWith(u'*') && fileName.endsWith(extension, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QLatin1String fileTypeIconCode(QStringView extension)
{
    if (!extension.startsWith(u'.'))
        return {};
    const QStringView type = extension.mid(1);
    for (const auto &[other, icon] : lentIcons) {
        if (sameText(type, other))
            return QLatin1String(icon);
    }
    for (const char *own : ownIcons) {
        if (sameText(type, own))
            return QLatin1String(own);
    }
    return {};
}

bool usesPhotoCDSize(QStringView path)
{
    return path.contains(QLatin1String(".PCD"), Qt::CaseInsensitive);
}
