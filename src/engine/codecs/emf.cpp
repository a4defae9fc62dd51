#include "engine/codecs/metafile.h"

#include "engine/codecs/emfplayer.h"
#include "engine/limits.h"

namespace {

constexpr int mostRecords = 1000000;
constexpr quint32 endOfFile = 14;
constexpr quint32 commentType = 70;

struct Header
{
    QRectF bounds; ///< in the pixels of the device that the file was made for
    QPointF pixelsPerMillimetre;
    QSize natural;
    size_t recordsAt = 0;
};

double ratio(double pixels, double millimetres)
{
    return pixels > 0 && millimetres > 0 ? pixels / millimetres : 96 / 25.4;
}

Result<Header> readHeader(const QByteArray &file)
{
    const MetafileRecord record(0, bytesOf(file));
    if (record.u32(0) != 1 || !ByteReader(file).is(40, " EMF") || !record.has(0, 88))
        return Failure{QStringLiteral("not an EMF")};
    Header header;
    header.pixelsPerMillimetre = {ratio(record.i32(72), record.i32(80)), ratio(record.i32(76), record.i32(84))};
    header.bounds = record.box32(8);
    // The last pixels belong to the picture.
    header.bounds.setSize(header.bounds.size() + QSizeF(1, 1));
    if (header.bounds.width() < 1 || header.bounds.height() < 1 || header.bounds.size() == QSizeF(1, 1)) {
        const QRectF frame = record.box32(24);
        const QPointF scale = header.pixelsPerMillimetre / 100;
        header.bounds =
            QRectF(frame.x() * scale.x(), frame.y() * scale.y(), frame.width() * scale.x(), frame.height() * scale.y());
    }
    header.natural = naturalVectorSize(header.bounds.size());
    header.recordsAt = record.u32(4);
    if (!limits::allows(header.natural, 8))
        return Failure{QStringLiteral("an EMF without a size")};
    return header;
}

ImageInfo infoOf(const Header &header)
{
    return {header.natural, 24, 1, emfCodec.name};
}

/// The records one after another; `visit` says whether to go on. True when the file's own end was reached.
template <class Visit> bool forEachRecord(const QByteArray &file, size_t at, Visit visit)
{
    const ByteReader reader(file);
    for (int count = 0; count < mostRecords && reader.has(at, 8); ++count) {
        const quint32 type = reader.u32le(at);
        const quint32 size = reader.u32le(at + 4);
        if (size < 8 || size % 4 != 0 || !reader.has(at, size))
            return false;
        if (type == endOfFile)
            return true;
        if (!visit(MetafileRecord(type, bytesOf(file).subspan(at, size))))
            return false;
        at += size;
    }
    return false;
}

bool drawsPlainly(quint32 type)
{
    const auto within = [type](quint32 first, quint32 last) { return type >= first && type <= last; };
    return within(2, 8) || type == 15 || within(41, 47) || within(53, 56) || within(62, 64) || within(71, 74)
        || within(76, 81) || within(83, 92) || within(96, 97) || type == 108 || type == 114 || type == 116
        || type == 118;
}

bool playRecords(const QByteArray &file, size_t at, MetafileContext &context)
{
    bool plain = false;
    ignore(forEachRecord(file, at, [&plain](const MetafileRecord &record) {
        plain = drawsPlainly(record.type);
        return !plain;
    }));
    EmfPlayer player(context, plain);
    return forEachRecord(file, at, [&](const MetafileRecord &record) {
        player.play(record);
        return context.spend(200.0 + double(record.size()));
    });
}

bool sniffEmf(Bytes head)
{
    const ByteReader reader(head);
    return reader.u32le(0) == 1 && reader.is(40, " EMF");
}

Result<ImageInfo> probeEmf(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return infoOf(*header);
}

Result<Picture> decodeEmf(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return drawnMetafile(infoOf(*header), header->bounds, hint.target, [&](MetafileContext &context) {
        context.state().mapping.pixelsPerMillimetre = header->pixelsPerMillimetre;
        return playRecords(file.bytes, header->recordsAt, context);
    });
}

}

void EmfPlayer::play(const MetafileRecord &record)
{
    if (record.type == commentType) {
        playComment(record);
        return;
    }
    if (!m_plus.wantsPlainRecords())
        return;
    if (playMapping(record) || playState(record) || playObject(record) || playClip(record) || playPath(record)
        || playLines(record) || playShape(record) || playRegion(record) || playBitmap(record))
        return;
    playText(record);
}

void EmfPlayer::playComment(const MetafileRecord &record)
{
    constexpr quint32 plusIdentifier = 0x2b464d45;
    if (record.u32(12) == plusIdentifier && record.u32(8) >= 4)
        m_plus.play(record.part(16, record.u32(8) - 4));
}

const Codec emfCodec{"EMF", "emf", sniffEmf, probeEmf, decodeEmf, true};
