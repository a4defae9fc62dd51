#include "engine/isolation/worker.h"

#include "engine/codec.h"
#include "engine/codecs/pixels.h"
#include "engine/isolation/answer.h"
#include "engine/isolation/arena.h"
#include "engine/isolation/channel.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <vector>

namespace isolation {

namespace {

/// What this process shares with its client. One for the process: the pictures that codecs ask for come to it.
struct Client
{
    int connection = -1;
    std::optional<Arena> input;
    std::optional<Arena> output;
    bool announced = false; ///< a picture of this request has been laid into the arena
    Need layout; ///< what was announced last
    std::vector<uchar> buffer = std::vector<uchar>(largestMessage);
};
Client client;
std::atomic<const uchar *> watchedPixels = nullptr;

std::atomic<quint32> &rowCounter()
{
    return *reinterpret_cast<std::atomic<quint32> *>(client.output->data());
}

void publish(int rows)
{
    rowCounter().store(quint32(rows), std::memory_order_release);
}

/// The end of the connection is the end of the process: nobody waits for anything any more.
qsizetype receiveOrEnd(std::span<uchar> to, Descriptor *descriptor)
{
    Received received = receive(client.connection, to);
    if (received.bytes <= 0)
        _exit(0);
    *descriptor = std::move(received.descriptor);
    return received.bytes;
}

void takeArena(std::optional<Arena> &kept, Descriptor descriptor, qint64 bytes)
{
    const qint64 before = kept ? kept->size() : 0;
    kept.reset();
    allowMemory(bytes - before);
    kept = Arena::open(std::move(descriptor), bytes);
}

/// Asks for the memory of a picture. Null when the client refuses.
uchar *announce(QSize size, QImage::Format format)
{
    watchedPixels = nullptr;
    client.layout = {Kind::Need, size.width(), size.height(), quint32(format)};
    if (!send(client.connection, bytesOfStruct(client.layout)))
        _exit(0);
    ArenaGiven given;
    Descriptor descriptor;
    const qsizetype got = receiveOrEnd({reinterpret_cast<uchar *>(&given), sizeof given}, &descriptor);
    if (got != sizeof given || given.kind != Kind::Arena || given.bytes == 0)
        return nullptr;
    if (given.bringsArena)
        takeArena(client.output, std::move(descriptor), given.bytes);
    if (!client.output)
        return nullptr;
    return client.output->data() + arenaHeader;
}

QImage allocateAtClient(QSize size, QImage::Format format)
{
    const qint64 stride = strideOf(size, quint32(format));
    if (client.announced || stride * size.height() < announcedBytes || !isAcceptable(size, quint32(format)))
        return {};
    client.announced = true;
    uchar *const pixels = announce(size, format);
    if (!pixels)
        return {};
    watchedPixels = pixels;
    return QImage(pixels, size.width(), size.height(), stride, format);
}

bool liesInArena(const QImage &image)
{
    const uchar *const start = image.constBits();
    return client.output && start >= client.output->data() && start < client.output->data() + client.output->size();
}

bool isAsAnnounced(const QImage &image)
{
    return image.constBits() == watchedPixels && image.width() == client.layout.width
        && image.height() == client.layout.height && quint32(image.format()) == client.layout.format
        && image.bytesPerLine() == strideOf(image.size(), client.layout.format);
}

/// False when the client does not want that much.
bool copyIntoArena(const QImage &image)
{
    const QImage source = liesInArena(image) ? image.copy() : image;
    uchar *const pixels = announce(source.size(), source.format());
    const qint64 stride = strideOf(source.size(), quint32(source.format()));
    for (int y = 0; pixels && y < source.height(); ++y)
        std::memcpy(pixels + y * stride, source.constScanLine(y), size_t(stride));
    return pixels != nullptr;
}

void sendAnswer(const Packed &answer)
{
    const auto fields =
        std::span(reinterpret_cast<const uchar *>(answer.fields.constData()), size_t(answer.fields.size()));
    const size_t first = std::min(fields.size(), size_t(largestMessage) - sizeof answer.head);
    bool sent = send(client.connection, bytesOfStruct(answer.head), fields.first(first));
    const Kind piece = Kind::Piece;
    const size_t more = size_t(largestMessage) - sizeof piece;
    for (size_t at = first; sent && at < fields.size(); at += more)
        sent = send(client.connection, bytesOfStruct(piece), fields.subspan(at, std::min(more, fields.size() - at)));
    if (!sent)
        _exit(0);
}

void answerRequest(Answer answer)
{
    const QImage &pixels = answer.picture.pixels;
    const qint64 bytes = strideOf(pixels.size(), quint32(pixels.format())) * pixels.height();
    constexpr qint64 roomForFields = 8 * 1024;
    const bool withFields = bytes <= largestMessage - roomForFields;
    const bool announced = !pixels.isNull() && isAsAnnounced(pixels);
    if (answer.succeeded && !announced && !withFields && !copyIntoArena(pixels)) {
        answer.succeeded = false;
        answer.reason = tooLarge(pixels.size());
    }
    Packed result = packed(answer, withFields && !announced);
    result.head.inArena = announced || !withFields;
    result.head.rowsAreFinal = announced;
    sendAnswer(result);
}

template <class T> Answer failed(const Result<T> &result)
{
    Answer answer;
    answer.reason = result.reason();
    return answer;
}

Answer doWork(const Request &request, const EncodedFile &file)
{
    Answer answer;
    answer.succeeded = true;
    if (request.work == Work::ReadTexts) {
        Result<PictureTexts> texts = readTextsHere(file);
        if (!texts)
            return failed(texts);
        answer.texts = *std::move(texts);
        return answer;
    }
    if (request.work == Work::Probe) {
        Result<ImageInfo> info = probeHere(file, request.sizeIndex, request.codecs);
        if (!info)
            return failed(info);
        answer.picture.info = *std::move(info);
        return answer;
    }
    const DecodeHint hint{QSize(request.targetWidth, request.targetHeight), request.sizeIndex, request.page};
    Result<Picture> picture = decodeHere(file, hint, request.codecs);
    if (!picture)
        return failed(picture);
    answer.picture = *std::move(picture);
    answer.picture.pixels = normalized(answer.picture.pixels);
    return answer;
}

/// The file's bytes as they lie there; behind them stands a zero, as codecs may expect of a byte array.
QByteArray inputOf(const Request &request, std::span<uchar> inMessage)
{
    const char *const start =
        reinterpret_cast<const char *>(request.arenaBytes > 0 ? client.input->data() : inMessage.data());
#if defined(__SANITIZE_ADDRESS__)
    return QByteArray(start, request.inputBytes); // so that reading behind the end is seen
#else
    return QByteArray::fromRawData(start, request.inputBytes);
#endif
}

void serveOne()
{
    Request request;
    Descriptor descriptor;
    const qsizetype got = receiveOrEnd(std::span(client.buffer).first(largestMessage - 1), &descriptor);
    if (got < qsizetype(sizeof request))
        _exit(1);
    std::memcpy(&request, client.buffer.data(), sizeof request);
    if (request.bringsArena)
        takeArena(client.input, std::move(descriptor), request.arenaBytes);
    if (request.arenaBytes > 0 && !client.input)
        _exit(1);
    client.buffer[size_t(got)] = 0;
    EncodedFile file{inputOf(request, std::span(client.buffer).subspan(sizeof request)),
        QString::fromUtf16(request.extension.data(), qsizetype(request.extensionLength))};
    if (request.companionBytes > 0) {
        file.companion = file.bytes.right(request.companionBytes);
        file.bytes = file.bytes.chopped(request.companionBytes);
    }
    client.announced = false;
    watchedPixels = nullptr;
    answerRequest(doWork(request, file));
}

}

PictureMemory clientMemory()
{
    return {allocateAtClient, &watchedPixels, publish};
}

void work(Descriptor connection, Family family, Confinement &confinement)
{
    client.connection = connection.value();
    const Ready ready{Kind::Ready, confine(confinement)};
    if (!send(client.connection, bytesOfStruct(ready)))
        _exit(0);
    for (int files = filesOf(family); files > 0; --files)
        serveOne();
    _exit(0);
}

}
