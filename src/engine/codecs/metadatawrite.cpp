#include "engine/codecs/metadatawrite.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/exiv2setup.h"
#include "engine/limits.h"

#include <cstdlib>
#include <string>

namespace {

constexpr qsizetype exifSegmentBytes = jpegSegmentBytes - 6; // behind "Exif\0\0"
constexpr qsizetype xmpSegmentBytes = jpegSegmentBytes - 29; // behind the name of its schema

/// The groups that every camera writes alike; all others are inside a maker's notes.
bool isGroupOfPictures(const std::string &group)
{
    return group == "Image" || group == "Photo" || group == "GPSInfo" || group == "Iop";
}

void setIfThere(Exiv2::ExifData &exif, const char *name, uint32_t value)
{
    const auto found = exif.findKey(Exiv2::ExifKey(name));
    if (found != exif.end())
        exif[name] = value;
}

QByteArray encoded(const Exiv2::ExifData &exif, Exiv2::ByteOrder order)
{
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, order, exif);
    return QByteArray(reinterpret_cast<const char *>(blob.data()), qsizetype(blob.size()));
}

void setResolution(Exiv2::ExifData &exif, const QImage &pixels)
{
    const QSize known = knownDotsPerMeter(pixels);
    const bool told = exif.findKey(Exiv2::ExifKey("Exif.Image.XResolution")) != exif.end();
    if (known.isEmpty() || !told)
        return;
    const auto inInches = [](int perMeter) {
        return Exiv2::URational(uint32_t(qRound(dotsPerInch(perMeter) * 100)), 100);
    };
    exif["Exif.Image.XResolution"] = inInches(known.width());
    exif["Exif.Image.YResolution"] = inInches(known.height());
    exif["Exif.Image.ResolutionUnit"] = uint16_t(2);
}

QByteArray preparedExif(const Picture &picture)
{
    const QByteArray &bytes = picture.metadata.exif;
    if (bytes.isEmpty() || bytes.size() > limits::maximumMetadataBytes)
        return {};
    return guardedFromExiv2(QByteArray(), [&] {
        Exiv2::ExifData exif;
        Exiv2::ByteOrder order = Exiv2::ExifParser::decode(exif, exiv2Bytes(bytes), uint32_t(bytes.size()));
        if (order == Exiv2::invalidByteOrder)
            order = Exiv2::littleEndian;
        eraseStorageTags(exif);
        if (exif.empty())
            return QByteArray();
        exif["Exif.Image.Orientation"] = uint16_t(1);
        setIfThere(exif, "Exif.Photo.PixelXDimension", uint32_t(picture.pixels.width()));
        setIfThere(exif, "Exif.Photo.PixelYDimension", uint32_t(picture.pixels.height()));
        setResolution(exif, picture.pixels);
        QByteArray blob = encoded(exif, order);
        if (blob.size() > exifSegmentBytes) {
            eraseTags(exif, [](const Exiv2::Exifdatum &datum) {
                return !isGroupOfPictures(datum.groupName()) || datum.key() == "Exif.Photo.MakerNote";
            });
            blob = encoded(exif, order);
        }
        return blob;
    });
}

QByteArray preparedIptc(const QByteArray &bytes)
{
    if (bytes.isEmpty() || bytes.size() > limits::maximumMetadataBytes)
        return {};
    return guardedFromExiv2(QByteArray(), [&] {
        Exiv2::IptcData iptc;
        const int status = Exiv2::IptcParser::decode(iptc, exiv2Bytes(bytes), uint32_t(bytes.size()));
        return status == 0 && !iptc.empty() ? bytes : QByteArray();
    });
}

bool setXmp(Exiv2::XmpData &xmp, const char *name, int value)
{
    const auto found = xmp.findKey(Exiv2::XmpKey(name));
    const std::string text = std::to_string(value);
    if (found == xmp.end() || found->toString() == text)
        return false;
    found->setValue(text);
    return true;
}

bool eraseXmpThumbnails(Exiv2::XmpData &xmp)
{
    bool any = false;
    for (auto datum = xmp.begin(); datum != xmp.end();) {
        const bool unwanted = datum->key().rfind("Xmp.xmp.Thumbnails", 0) == 0;
        datum = unwanted ? xmp.erase(datum) : std::next(datum);
        any = any || unwanted;
    }
    return any;
}

// A packet that needs no change stays as it is: the library keeps its content, not its form.
QByteArray preparedXmp(const Picture &picture)
{
    const QByteArray &bytes = picture.metadata.xmp;
    if (bytes.isEmpty() || bytes.size() > limits::maximumMetadataBytes)
        return {};
    return guardedFromExiv2(QByteArray(), [&] {
        Exiv2::XmpData xmp;
        if (Exiv2::XmpParser::decode(xmp, bytes.toStdString()) != 0 || xmp.empty())
            return QByteArray();
        bool changed = setXmp(xmp, "Xmp.tiff.Orientation", 1);
        changed |= setXmp(xmp, "Xmp.tiff.ImageWidth", picture.pixels.width());
        changed |= setXmp(xmp, "Xmp.tiff.ImageLength", picture.pixels.height());
        changed |= setXmp(xmp, "Xmp.exif.PixelXDimension", picture.pixels.width());
        changed |= setXmp(xmp, "Xmp.exif.PixelYDimension", picture.pixels.height());
        changed |= eraseXmpThumbnails(xmp);
        if (!changed && bytes.size() <= xmpSegmentBytes)
            return bytes;
        std::string packet;
        return Exiv2::XmpParser::encode(packet, xmp) == 0 ? QByteArray::fromStdString(packet) : QByteArray();
    });
}

}

Metadata preparedForWriting(const Picture &picture)
{
    if (picture.metadata.isEmpty())
        return {};
    Metadata prepared;
    prepared.exif = preparedExif(picture);
    prepared.iptc = preparedIptc(picture.metadata.iptc);
    prepared.xmp = preparedXmp(picture);
    prepared.comment = picture.metadata.comment.left(limits::maximumMetadataBytes);
    return prepared;
}

QByteArray profileFor(const Picture &picture, ProfileColors colors)
{
    // Layout: the header of the published ICC profile format.
    const QByteArray &profile = picture.iccProfile;
    const ByteReader bytes(profile);
    constexpr qsizetype headerBytes = 128;
    if (profile.size() < headerBytes || profile.size() > limits::maximumMetadataBytes || !bytes.is(36, "acsp")
        || bytes.u32be(0) < headerBytes || bytes.u32be(0) > quint32(profile.size()))
        return {};
    const bool fits = colors == ProfileColors::Grey ? bytes.is(16, "GRAY") : bytes.is(16, "RGB ");
    return fits ? profile.left(bytes.u32be(0)) : QByteArray();
}

QSize knownDotsPerMeter(const QImage &image)
{
    // Qt gives every image the resolution of the screen, or of 75 dots an inch where there is none.
    const QImage fresh(1, 1, QImage::Format_Mono);
    constexpr int withoutScreen = 2953;
    const QSize told(image.dotsPerMeterX(), image.dotsPerMeterY());
    const bool unset = told == QSize(fresh.dotsPerMeterX(), fresh.dotsPerMeterY())
        || (std::abs(told.width() - withoutScreen) <= 1 && told.width() == told.height());
    return unset || told.width() <= 0 || told.height() <= 0 ? QSize() : told;
}

double dotsPerInch(int dotsPerMeter)
{
    constexpr double inch = 0.0254;
    const int whole = qRound(dotsPerMeter * inch);
    return qRound(whole / inch) == dotsPerMeter ? whole : dotsPerMeter * inch;
}
