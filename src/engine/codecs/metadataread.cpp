#include "engine/codecs/metadataread.h"

#include "engine/codecs/exiv2setup.h"
#include "engine/limits.h"

namespace {

QByteArray bounded(const Exiv2::byte *bytes, size_t size)
{
    if (size > size_t(limits::maximumMetadataBytes))
        return {};
    return QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size));
}

/// A TIFF's directory describes its pixels too; what a writer would have to leave out again does not come along.
QByteArray exifBlock(const Exiv2::Image &image)
{
    Exiv2::ExifData exif = image.exifData();
    eraseStorageTags(exif);
    if (exif.empty())
        return {};
    Exiv2::Blob blob;
    const bool bigEndian = image.byteOrder() == Exiv2::bigEndian;
    Exiv2::ExifParser::encode(blob, bigEndian ? Exiv2::bigEndian : Exiv2::littleEndian, exif);
    return bounded(blob.data(), blob.size());
}

QByteArray iptcBlock(const Exiv2::Image &image)
{
    if (image.iptcData().empty())
        return {};
    const Exiv2::DataBuf block = Exiv2::IptcParser::encode(image.iptcData());
    return bounded(block.pData_, size_t(block.size_));
}

QByteArray xmpBlock(Exiv2::Image &image)
{
    std::string packet = image.xmpPacket();
    if (packet.empty() && !image.xmpData().empty())
        Exiv2::XmpParser::encode(packet, image.xmpData());
    return bounded(reinterpret_cast<const Exiv2::byte *>(packet.data()), packet.size());
}

}

Metadata readMetadata(const EncodedFile &file)
{
    return guardedFromExiv2(Metadata(), [&] {
        const auto image = Exiv2::ImageFactory::open(exiv2Bytes(file.bytes), long(file.bytes.size()));
        image->readMetadata();
        Metadata blocks;
        // One damaged block does not cost the others.
        blocks.exif = guardedFromExiv2(QByteArray(), [&] { return exifBlock(*image); });
        blocks.iptc = guardedFromExiv2(QByteArray(), [&] { return iptcBlock(*image); });
        blocks.xmp = guardedFromExiv2(QByteArray(), [&] { return xmpBlock(*image); });
        return blocks;
    });
}
