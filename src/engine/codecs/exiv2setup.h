#pragma once

// The library has a type of the name of one of the engine.
#define ImageInfo Exiv2ImageInfo
#include <exiv2/exiv2.hpp>
#undef ImageInfo

#include <QByteArray>

/// Silences exiv2 and makes its XMP toolkit ready for several threads; once, before anything else is asked of it.
void setUpExiv2();

inline const Exiv2::byte *exiv2Bytes(const QByteArray &bytes)
{
    return reinterpret_cast<const Exiv2::byte *>(bytes.constData());
}

template <class Unwanted> void eraseTags(Exiv2::ExifData &exif, Unwanted unwanted)
{
    for (auto datum = exif.begin(); datum != exif.end();)
        datum = unwanted(*datum) ? exif.erase(datum) : std::next(datum);
}

/// Takes out what tells how the pixels of a file lie in it, its thumbnail and the blocks that travel on their own.
void eraseStorageTags(Exiv2::ExifData &exif);

/// Runs `work`; whatever the library throws about damaged data ends in `instead`.
template <class Answer, class Work> Answer guardedFromExiv2(Answer instead, Work work)
{
    setUpExiv2();
    try {
        return work();
    } catch (const std::exception &) {
        return instead;
    } catch (...) {
        return instead;
    }
}
