#include "engine/ownfiles.h"

#include <QtEndian>

namespace {

template <class Number> QByteArray number(Number value, bool bigEndian)
{
    QByteArray bytes(sizeof value, '\0');
    if (bigEndian)
        qToBigEndian(value, bytes.data());
    else
        qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray be16(int value)
{
    return number(quint16(value), true);
}

QByteArray be32(qsizetype value)
{
    return number(quint32(value), true);
}

QByteArray le16(int value)
{
    return number(quint16(value), false);
}

QByteArray le32(qsizetype value)
{
    return number(quint32(value), false);
}

QByteArray mbmHeader(const MbmBitmap &bitmap)
{
    return le32(40 + bitmap.data.size()) + le32(40) + le32(bitmap.size.width()) + le32(bitmap.size.height()) + le32(0)
        + le32(0) + le32(bitmap.bits) + le32(bitmap.color) + le32(0) + le32(bitmap.compression);
}

/// A layer section with one layer of a single pixel that is shown as it is.
QByteArray plainLayer()
{
    QByteArray record = be16(-1) + be32(0) + be32(0) + be32(1) + be32(1) + be16(4);
    QByteArray channels;
    for (const int id : {-1, 0, 1, 2}) {
        const QByteArray packed = be16(1) + be16(2) + char(0) + char(id * 50 + 100);
        record += be16(id) + be32(packed.size());
        channels += packed;
    }
    record += QByteArray("8BIMnorm\xff\0\0\0", 12) + be32(12) + be32(0) + be32(0) + QByteArray("\1L\0\0", 4) + channels;
    return be32(record.size()) + record + be32(0);
}

}

QByteArray mbmOf(const QList<MbmBitmap> &bitmaps, bool rom)
{
    QByteArray bodies;
    QByteArray table = le32(bitmaps.size());
    const qsizetype first = rom ? 8 + 4 * bitmaps.size() : 20;
    for (const MbmBitmap &bitmap : bitmaps) {
        table += le32(first + bodies.size());
        const QByteArray header = mbmHeader(bitmap);
        if (rom)
            bodies += le32(0x10000040) + QByteArray(16, '\0') + header + le32(0) + le32(68);
        else
            bodies += header;
        bodies += bitmap.data;
    }
    if (rom)
        return le32(0x10000041) + table + bodies;
    return le32(0x10000037) + le32(0x10000042) + le32(0) + le32(0x47396439) + le32(first + bodies.size()) + bodies
        + table;
}

QByteArray psdOf(const PsdParts &parts)
{
    const auto length = [&](qsizetype value) { return parts.large ? number(quint64(value), true) : be32(value); };
    return "8BPS" + be16(parts.large ? 2 : 1) + QByteArray(6, '\0') + be16(parts.channels) + be32(parts.size.height())
        + be32(parts.size.width()) + be16(parts.depth) + be16(parts.mode) + be32(parts.palette.size()) + parts.palette
        + be32(parts.resources.size()) + parts.resources + length(parts.layers.size()) + parts.layers
        + be16(parts.compression) + parts.data;
}

QByteArray psdResource(int id, const QByteArray &data)
{
    return "8BIM" + be16(id) + be16(0) + be32(data.size()) + data + QByteArray(data.size() % 2, '\0');
}

QByteArray tgaOf(const TgaParts &parts)
{
    const int entryBytes = (parts.mapBits + 7) / 8;
    QByteArray file = QByteArray(1, '\2') + char(parts.map.isEmpty() ? 0 : 1) + char(parts.kind) + le16(parts.mapFirst)
        + le16(entryBytes ? int(parts.map.size()) / entryBytes : 0) + char(parts.mapBits) + le32(0)
        + le16(parts.size.width()) + le16(parts.size.height()) + char(parts.bits) + char(parts.descriptor) + "id"
        + parts.map + parts.pixels;
    if (parts.alphaKind < 0)
        return file;
    const qsizetype extensionAt = file.size();
    file += le16(495) + QByteArray(492, '\0') + char(parts.alphaKind);
    return file + le32(extensionAt) + le32(0) + QByteArray("TRUEVISION-XFILE.\0", 18);
}

QByteArray sunRasterOf(QSize size, int bits, int type, const QByteArray &data, const QByteArray &map)
{
    return QByteArray::fromHex("59a66a95") + be32(size.width()) + be32(size.height()) + be32(bits) + be32(data.size())
        + be32(type) + be32(map.isEmpty() ? 0 : 1) + be32(map.size()) + map + data;
}

QByteArray colorsOf(const Result<Picture> &picture)
{
    if (!picture)
        return "failed: " + picture.reason().toUtf8();
    QByteArray text = picture->partial ? "partial: " : "";
    for (int y = 0; y < picture->pixels.height(); ++y) {
        for (int x = 0; x < picture->pixels.width(); ++x) {
            const QRgb pixel = picture->pixels.pixel(x, y);
            const QByteArray hex = QByteArray::number(pixel, 16).rightJustified(8, '0');
            text += (qAlpha(pixel) == 255 ? hex.mid(2) : hex) + ' ';
        }
    }
    return text.chopped(1);
}

QList<SmallFile> ownFiles()
{
    const auto hex = [](const char *text) { return QByteArray::fromHex(text); };
    const QByteArray oneLayer = be32(20) + be16(-1) + be32(0) + be32(0) + be32(2) + be32(2) + be16(4);
    return {
        {"MBM runs", QStringLiteral("mbm"),
            mbmOf({{{4, 2}, 8, 1, 1, hex("0722")}, {{3, 2}, 4, 0, 0, hex("f1f8ffff12f3ffff")}})},
        {"MBM 12 bit", QStringLiteral("mbm"), mbmOf({{{4, 1}, 12, 1, 2, hex("2321ff0f")}})},
        {"MBM of a ROM", QStringLiteral("mbm"), mbmOf({{{3, 1}, 32, 3, 6, hex("0110203080ff11121314")}}, true)},
        {"PSD", QStringLiteral("psd"),
            psdOf({.data = hex("102030405060708090a0b0c0"),
                .resources = psdResource(1039, "profile") + psdResource(1005, QByteArray(16, '\1'))})},
        {"PSD PackBits", QStringLiteral("psd"),
            psdOf({.channels = 4,
                .data = hex("00020002000200020002000200020002ff10ff20ff30ff40ff50ff60ff70ff80"),
                .compression = 1,
                .layers = oneLayer})},
        {"PSD layer", QStringLiteral("psd"),
            psdOf({.size = {1, 1}, .channels = 4, .data = QByteArray::fromHex("d5eaff32"), .layers = plainLayer()})},
        {"PSB CMYK", QStringLiteral("psb"),
            psdOf({.size = {1, 1},
                .channels = 4,
                .depth = 16,
                .mode = 4,
                .data = hex("80ff40ff20ff10ff"),
                .large = true})},
        {"PSD zip", QStringLiteral("psd"),
            psdOf({.channels = 1,
                .depth = 16,
                .mode = 1,
                .data = qCompress(hex("1000100020003000")).mid(4),
                .compression = 3})},
        {"TGA palette", QStringLiteral("tga"),
            tgaOf({.kind = 9,
                .bits = 8,
                .pixels = hex("8105010605"),
                .mapFirst = 5,
                .mapBits = 16,
                .map = hex("1f00e003")})},
        {"TGA alpha", QStringLiteral("tga"),
            tgaOf({.kind = 10, .bits = 32, .descriptor = 8, .pixels = hex("8310203040"), .alphaKind = 4})},
        {"Sun raster", QStringLiteral("ras"), sunRasterOf({3, 2}, 8, 2, hex("800340808000ff"), hex("102030405060"))},
        {"Sun raster 1 bit", QStringLiteral("ras"), sunRasterOf({9, 2}, 1, 1, hex("8080ff00"))},
    };
}
