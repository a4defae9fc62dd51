#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringView>

#include <array>
#include <bitset>

/// What a file is, by its extension alone. Audio counts as "Motion"; everything unknown is "Picture".
inline constexpr QLatin1String kindPicture("Picture");
inline constexpr QLatin1String kindPoly("Poly");
inline constexpr QLatin1String kindMotion("Motion");

QLatin1String GetMediaKind(QStringView path);

/// Captions of the three arrays of type boxes, in the order of their indices.
inline constexpr int fileTypeCount = 29; ///< chkFileType(1..29)
inline constexpr int avFileTypeCount = 10; ///< chkAVFileType(0..9)
inline constexpr int polyFileTypeCount = 21; ///< chkPolyFileType(1..21)
extern const std::array<const char *, 29> fileTypeCaptions;
extern const std::array<const char *, 10> avFileTypeCaptions;
extern const std::array<const char *, 21> polyFileTypeCaptions;
/// Captions of optPhotoCDSize(0..4).
extern const std::array<const char *, 5> photoCDSizeCaptions;

/// The state of the type boxes; element 0 is box 1 (box 0 of the audio and video array).
struct EnabledFileTypes
{
    std::bitset<29> fileTypes;
    std::bitset<10> avFileTypes;
    std::bitset<21> polyFileTypes;
};

struct FilePatterns
{
    QString picture; ///< "*.ART;*.BMP;*.JPG;*.JPE;*.JPEG"
    QString motion;
    QString poly;
};
FilePatterns filePatterns(const EnabledFileTypes &enabled);

/// Whether a file name matches one of the patterns of a ";"-joined list, without regard to case. Patterns are "*" and
/// an extension; a name must end in it.
bool matchesPattern(QStringView fileName, QStringView patterns);

/// Code of a type's icon for an extension with its dot; empty when there is no row for it.
QLatin1String fileTypeIconCode(QStringView extension);

/// Whether a path is read with the Photo CD size index: the whole path is looked at, not only its extension.
bool usesPhotoCDSize(QStringView path);
