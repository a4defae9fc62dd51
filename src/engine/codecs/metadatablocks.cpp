#include "engine/codecs/metadatablocks.h"

#include "engine/limits.h"

#include <zlib.h>

namespace {

QByteArray copyOf(Bytes bytes)
{
    if (bytes.size() > size_t(limits::maximumMetadataBytes))
        return {};
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), qsizetype(bytes.size()));
}

/// The part of `file` from `at` on, at most `count` bytes.
Bytes part(Bytes file, size_t at, size_t count = size_t(-1))
{
    return at < file.size() ? file.subspan(at, std::min(count, file.size() - at)) : Bytes();
}

void fillOnce(QByteArray &block, const QByteArray &bytes)
{
    if (block.isEmpty())
        block = bytes;
}

constexpr char exifName[] = "Exif\0";
constexpr char xmpName[] = "http://ns.adobe.com/xap/1.0/\0";
constexpr size_t exifNameBytes = 6;
constexpr size_t xmpNameBytes = 29;

/// What an APP1 marker holds, also when a PNG's text carries it.
void takeApp1(Metadata &blocks, Bytes payload)
{
    const ByteReader bytes(payload);
    if (bytes.is(0, exifName))
        fillOnce(blocks.exif, copyOf(part(payload, exifNameBytes)));
    else if (bytes.is(0, xmpName))
        fillOnce(blocks.xmp, copyOf(part(payload, xmpNameBytes)));
}

}

QByteArray iptcOfResources(Bytes resources)
{
    const ByteReader bytes(resources);
    size_t at = 0;
    while (bytes.is(at, "8BIM")) {
        const size_t nameBytes = (size_t(bytes.u8(at + 6)) + 2) / 2 * 2; // with its length, padded to even
        const size_t sizeAt = at + 6 + nameBytes;
        const size_t size = bytes.u32be(sizeAt);
        constexpr int iptcResource = 0x0404;
        if (bytes.u16be(at + 4) == iptcResource)
            return bytes.has(sizeAt + 4, size) ? copyOf(part(resources, sizeAt + 4, size)) : QByteArray();
        at = sizeAt + 4 + size + size % 2;
    }
    return {};
}

// Layout: markers of ITU T.81.
Metadata jpegMetadata(const QByteArray &file)
{
    const Bytes all = bytesOf(file);
    const ByteReader bytes(all);
    Metadata blocks;
    QByteArray resources;
    size_t at = 2;
    while (bytes.u8(at) == 0xff) {
        const int marker = bytes.u8(at + 1);
        if (marker == 0xff) { // a byte that only fills
            ++at;
            continue;
        }
        const size_t length = bytes.u16be(at + 2);
        constexpr int startOfScan = 0xda;
        if (marker == startOfScan || length < 2 || !bytes.has(at + 2, length))
            break;
        const Bytes payload = part(all, at + 4, length - 2);
        if (marker == 0xe1)
            takeApp1(blocks, payload);
        else if (marker == 0xed && ByteReader(payload).is(0, "Photoshop 3.0\0"))
            resources += copyOf(part(payload, 14)); // one set of resources may go over several markers
        else if (marker == 0xfe)
            blocks.comment += (blocks.comment.isEmpty() ? "" : "\n") + copyOf(payload);
        at += 2 + length;
        if (resources.size() + blocks.comment.size() > limits::maximumMetadataBytes)
            break;
    }
    blocks.iptc = iptcOfResources(bytesOf(resources));
    return blocks;
}

namespace {

/// A PNG's text: what stands behind the keyword, unpacked. Only wanted ones are looked at, and few of them.
class PngTexts
{
public:
    void take(Bytes body, bool packed, bool international);
    void finish(Metadata &blocks);

private:
    void takeText(const QByteArray &keyword, const QByteArray &text);
    QByteArray unpacked(Bytes bytes);

    Metadata m_blocks;
    QByteArray m_description;
    int m_unpacked = 0;
};

QByteArray PngTexts::unpacked(Bytes bytes)
{
    // A kilobyte can unpack to a megabyte, and a file can hold thousands of them.
    constexpr int mostTexts = 32;
    if (++m_unpacked > mostTexts)
        return {};
    QByteArray text;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return {};
    stream.next_in = const_cast<Bytef *>(bytes.data());
    stream.avail_in = uInt(qMin(bytes.size(), size_t(limits::maximumMetadataBytes)));
    int status = Z_OK;
    while (status == Z_OK && text.size() < limits::maximumMetadataBytes) {
        constexpr qsizetype step = 64 * 1024;
        const qsizetype before = text.size();
        text.resize(before + step);
        stream.next_out = reinterpret_cast<Bytef *>(text.data()) + before;
        stream.avail_out = uInt(step);
        status = inflate(&stream, Z_NO_FLUSH);
        text.resize(before + step - qsizetype(stream.avail_out));
    }
    inflateEnd(&stream);
    return status == Z_STREAM_END ? text : QByteArray();
}

/// "\nname\n   length\nhexadecimal digits in lines\n", as programs wrote blocks before the format had chunks for them.
QByteArray rawProfile(const QByteArray &text)
{
    const qsizetype behindName = text.indexOf('\n', 1);
    const qsizetype behindLength = behindName < 0 ? -1 : text.indexOf('\n', behindName + 1);
    if (behindLength < 0)
        return {};
    const qsizetype length = text.mid(behindName, behindLength - behindName).trimmed().toLongLong();
    return QByteArray::fromHex(text.mid(behindLength)).left(qMax<qsizetype>(0, length));
}

void PngTexts::takeText(const QByteArray &keyword, const QByteArray &text)
{
    if (keyword == "XML:com.adobe.xmp") {
        fillOnce(m_blocks.xmp, text);
    } else if (keyword == "Comment") {
        fillOnce(m_blocks.comment, text);
    } else if (keyword == "Description") {
        fillOnce(m_description, text);
    } else {
        const QByteArray profile = rawProfile(text);
        if (keyword.endsWith("exif") || keyword.endsWith("APP1"))
            takeApp1(m_blocks, bytesOf(profile));
        else if (keyword.endsWith("iptc"))
            fillOnce(m_blocks.iptc, profile.startsWith("8BIM") ? iptcOfResources(bytesOf(profile)) : profile);
        else
            fillOnce(m_blocks.xmp, profile);
    }
}

void PngTexts::take(Bytes body, bool packed, bool international)
{
    const QByteArray head = copyOf(part(body, 0, 80));
    const qsizetype end = head.indexOf('\0');
    const QByteArray keyword = head.left(end);
    static const QByteArrayList wanted{"XML:com.adobe.xmp", "Comment", "Description", "Raw profile type exif",
        "Raw profile type APP1", "Raw profile type iptc", "Raw profile type xmp"};
    if (end < 1 || !wanted.contains(keyword))
        return;
    size_t at = size_t(end) + 1;
    if (packed) {
        ++at; // the method: there is one
    } else if (international) {
        packed = ByteReader(body).u8(at) != 0;
        at += 2;
        // Language and translated keyword, each with a zero behind.
        for (int i = 0; i < 2; ++i) {
            while (at < body.size() && body[at] != 0)
                ++at;
            ++at;
        }
    }
    takeText(keyword, packed ? unpacked(part(body, at)) : copyOf(part(body, at)));
}

void PngTexts::finish(Metadata &blocks)
{
    fillOnce(m_blocks.comment, m_description);
    const QByteArray exif = blocks.exif;
    blocks = m_blocks;
    if (!exif.isEmpty())
        blocks.exif = exif;
}

}

// Layout: the published PNG format and its extensions.
Metadata pngMetadata(const QByteArray &file)
{
    const Bytes all = bytesOf(file);
    const ByteReader bytes(all);
    Metadata blocks;
    PngTexts texts;
    size_t at = 8;
    while (bytes.has(at, 8) && !bytes.is(at + 4, "IEND")) {
        const size_t length = bytes.u32be(at);
        if (!bytes.has(at + 8, length))
            break;
        const Bytes body = part(all, at + 8, length);
        if (bytes.is(at + 4, "eXIf"))
            fillOnce(blocks.exif, copyOf(body));
        else if (bytes.is(at + 4, "tEXt"))
            texts.take(body, false, false);
        else if (bytes.is(at + 4, "zTXt"))
            texts.take(body, true, false);
        else if (bytes.is(at + 4, "iTXt"))
            texts.take(body, false, true);
        at += 12 + length;
    }
    texts.finish(blocks);
    return blocks;
}

// Layout: the published GIF89a format.
Metadata gifMetadata(const QByteArray &file)
{
    const ByteReader bytes(file);
    const auto tableBytes = [](quint8 flags) { return flags & 0x80 ? size_t(3) << ((flags & 7) + 1) : size_t(0); };
    Metadata blocks;
    size_t at = 13 + tableBytes(bytes.u8(10));
    while (bytes.has(at, 2) && blocks.comment.isEmpty()) {
        const bool isComment = bytes.u8(at) == 0x21 && bytes.u8(at + 1) == 0xfe;
        if (bytes.u8(at) == 0x21)
            at += 2;
        else if (bytes.u8(at) == 0x2c)
            at += 11 + tableBytes(bytes.u8(at + 9));
        else
            break;
        for (size_t length = bytes.u8(at); length > 0 && bytes.has(at, 1 + length); length = bytes.u8(at)) {
            if (isComment)
                blocks.comment += file.mid(qsizetype(at) + 1, qsizetype(length));
            at += 1 + length;
        }
        ++at;
        if (blocks.comment.size() > limits::maximumMetadataBytes)
            blocks.comment.clear();
    }
    return blocks;
}

namespace {

/// A rational of a TIFF structure whose entry stands at `entry`; 0 when it is none.
double rationalAt(const ByteReader &tiff, size_t entry, bool bigEndian)
{
    constexpr int rationalType = 5;
    const size_t at = tiff.u32(entry + 8, bigEndian);
    const quint32 divisor = tiff.u32(at + 4, bigEndian);
    return tiff.u16(entry + 2, bigEndian) == rationalType && divisor > 0 ? double(tiff.u32(at, bigEndian)) / divisor
                                                                         : 0;
}

}

// Tags 282, 283 and 296 of TIFF 6.0; 5 to 8 are the orientations that change width and height.
void applyExifResolution(QImage &pixels, const QByteArray &exif)
{
    const ByteReader tiff(exif);
    const bool bigEndian = tiff.is(0, "MM");
    const QImage fresh(1, 1, QImage::Format_Mono);
    const bool isSet =
        pixels.dotsPerMeterX() != fresh.dotsPerMeterX() || pixels.dotsPerMeterY() != fresh.dotsPerMeterY();
    if (isSet || (!bigEndian && !tiff.is(0, "II")))
        return;
    const size_t directory = tiff.u32(4, bigEndian);
    double x = 0;
    double y = 0;
    int unit = 2;
    bool onItsSide = false;
    for (int i = 0; i < tiff.u16(directory, bigEndian); ++i) {
        const size_t entry = directory + 2 + 12 * size_t(i);
        if (!tiff.has(entry, 12))
            break;
        const int tag = tiff.u16(entry, bigEndian);
        if (tag == 282)
            x = rationalAt(tiff, entry, bigEndian);
        else if (tag == 283)
            y = rationalAt(tiff, entry, bigEndian);
        else if (tag == 296)
            unit = tiff.u16(entry + 8, bigEndian);
        else if (tag == 274)
            onItsSide = tiff.u16(entry + 8, bigEndian) >= 5 && tiff.u16(entry + 8, bigEndian) <= 8;
    }
    constexpr double most = 100'000;
    if ((unit != 2 && unit != 3) || !(x > 0 && x < most) || !(y > 0 && y < most))
        return;
    const double perUnit = unit == 3 ? 100 : 1 / 0.0254;
    pixels.setDotsPerMeterX(qRound((onItsSide ? y : x) * perUnit));
    pixels.setDotsPerMeterY(qRound((onItsSide ? x : y) * perUnit));
}
