#include "engine/codecs/exiv2setup.h"

#include <algorithm>
#include <mutex>
#include <string>

namespace {

void lockToolkit(void *mutex, bool lock)
{
    auto &toolkit = *static_cast<std::recursive_mutex *>(mutex);
    if (lock)
        toolkit.lock();
    else
        toolkit.unlock();
}

/// Tags of the first directory that tell how the pixels of the old file lay in it (TIFF 6.0 and its supplements), and
/// blocks that travel on their own: XMP, IPTC, Photoshop resources, ICC profile.
bool describesStorage(uint16_t tag)
{
    constexpr uint16_t tags[] = {254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266, 273, 277, 278, 279, 280, 281,
        284, 288, 289, 290, 291, 292, 293, 297, 317, 320, 321, 322, 323, 324, 325, 326, 327, 328, 330, 332, 334, 336,
        337, 338, 339, 340, 341, 342, 347, 512, 513, 514, 515, 517, 518, 519, 520, 521, 529, 530, 532, 700, 33723,
        34377, 34675, 37724, 50706, 50707};
    return std::binary_search(std::begin(tags), std::end(tags), tag);
}

}

void setUpExiv2()
{
    static std::recursive_mutex toolkit;
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize(lockToolkit, &toolkit);
        Exiv2::enableBMFF(true);
    });
}

void eraseStorageTags(Exiv2::ExifData &exif)
{
    Exiv2::ExifThumb(exif).erase();
    eraseTags(exif, [](const Exiv2::Exifdatum &datum) {
        return datum.groupName() == "Thumbnail" || (datum.groupName() == "Image" && describesStorage(datum.tag()));
    });
}
