#include "engine/codecs/bytes.h"
#include "engine/codecs/exif.h"
#include "engine/codecs/jpeg.h"
#include "engine/codecs/smallformats.h"

#include <array>

namespace {

constexpr size_t headerBytes = 124;

bool sniffPmp(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.u32be(8) == headerBytes && bytes.is(headerBytes, "\xff\xd8\xff");
}

/// The camera's turn as the number that EXIF has for it.
int orientationOf(const ByteReader &bytes)
{
    constexpr size_t turnAt = 27;
    constexpr std::array<int, 4> orientations{1, 8, 3, 6};
    return bytes.u8(turnAt) < orientations.size() ? orientations[bytes.u8(turnAt)] : 1;
}

EncodedFile jpegInside(const EncodedFile &file)
{
    return {file.bytes.mid(headerBytes), {}};
}

/// A directory of one entry, the date: "1998:09:01 20:19:57". Empty when the header holds no date.
QByteArray exifOf(const ByteReader &bytes)
{
    constexpr size_t dateAt = 76;
    constexpr int firstYear = 70; // below: of the next century
    std::array<int, 6> fields{};
    for (size_t i = 0; i < fields.size(); ++i)
        fields[i] = bytes.u8(dateAt + i);
    const bool isDate = fields[1] >= 1 && fields[1] <= 12 && fields[2] >= 1 && fields[2] <= 31 && fields[3] < 24
        && fields[4] < 60 && fields[5] < 60 && fields[0] < 100;
    if (!isDate)
        return {};
    const int year = fields[0] + (fields[0] < firstYear ? 2000 : 1900);
    const QByteArray date =
        QString::asprintf("%04d:%02d:%02d %02d:%02d:%02d", year, fields[1], fields[2], fields[3], fields[4], fields[5])
            .toLatin1();
    constexpr int dateTime = 0x0132;
    constexpr int ascii = 2;
    constexpr int behindDirectory = 8 + 2 + 12 + 4;
    ByteWriter out;
    out.text("MM");
    out.u16be(42);
    out.u32be(8);
    out.u16be(1);
    out.u16be(dateTime);
    out.u16be(ascii);
    out.u32be(quint32(date.size()) + 1);
    out.u32be(behindDirectory);
    out.u32be(0);
    out.bytes += date;
    out.u8(0);
    return out.bytes;
}

Result<ImageInfo> probePmp(const EncodedFile &file, int)
{
    if (!sniffPmp(bytesOf(file.bytes)))
        return Failure{QStringLiteral("not a PMP picture")};
    Result<ImageInfo> info = jpegCodec.probe(jpegInside(file), -1);
    if (!info)
        return info.failure();
    info->size = uprightSize(info->size, orientationOf(ByteReader(file.bytes)));
    info->codec = pmpCodec.name;
    return info;
}

Result<Picture> decodePmp(const EncodedFile &file, const DecodeHint &hint)
{
    if (!sniffPmp(bytesOf(file.bytes)))
        return Failure{QStringLiteral("not a PMP picture")};
    const int orientation = orientationOf(ByteReader(file.bytes));
    Result<Picture> picture = jpegCodec.decode(jpegInside(file), {uprightSize(hint.target, orientation), -1, 0});
    if (!picture)
        return picture.failure();
    picture->info.size = uprightSize(picture->info.size, orientation);
    picture->info.codec = pmpCodec.name;
    picture->pixels = uprighted(picture->pixels, orientation);
    const Metadata own = readPmpMetadata(file.bytes);
    if (picture->metadata.comment.isEmpty())
        picture->metadata.comment = own.comment;
    if (picture->metadata.exif.isEmpty())
        picture->metadata.exif = own.exif;
    return picture;
}

}

Metadata readPmpMetadata(const QByteArray &file)
{
    Metadata metadata;
    if (!sniffPmp(bytesOf(file)))
        return metadata;
    constexpr qsizetype commentAt = 52;
    constexpr qsizetype commentBytes = 19;
    const QByteArray text = file.mid(commentAt, commentBytes);
    metadata.comment = text.left(text.indexOf('\0') < 0 ? commentBytes : text.indexOf('\0')).trimmed();
    metadata.exif = exifOf(ByteReader(file));
    return metadata;
}

const Codec pmpCodec{"PMP", "pmp", sniffPmp, probePmp, decodePmp};
