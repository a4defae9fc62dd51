#include "engine/decodehere.h"

#include "engine/codec.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/metadatablocks.h"
#include "engine/isolation/client.h"
#include "engine/limits.h"
#include "platform/filepath.h"
#include "platform/files.h"

#include <QCoreApplication>

#include <algorithm>
#include <exception>
#include <vector>

#include <unistd.h>

namespace {

constexpr size_t sniffedBytes = 4096;
constexpr size_t maximumAttempts = 2;

bool ownsExtension(const Codec &codec, const QString &extension)
{
    if (extension.isEmpty())
        return false;
    const QList<QByteArray> owned = QByteArray(codec.extensions).split(' ');
    return owned.contains(extension.toLatin1());
}

/// The codecs that may hold this file, best first: by content before by name alone; of several whose signature fits,
/// the one that also owns the extension (a camera's raw file is a TIFF by its first bytes).
std::vector<const Codec *> candidates(const EncodedFile &file, std::span<const Codec *const> table)
{
    const Bytes head = bytesOf(file.bytes).first(std::min(size_t(file.bytes.size()), sniffedBytes));
    const auto rank = [&](const Codec *codec) {
        return (codec->sniff && codec->sniff(head) ? 2 : 0) + (ownsExtension(*codec, file.extension) ? 1 : 0);
    };
    std::vector<std::pair<int, const Codec *>> ranked;
    for (const Codec *codec : table) {
        if (const int points = rank(codec); points > 0)
            ranked.emplace_back(points, codec);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    std::vector<const Codec *> best;
    best.reserve(ranked.size());
    for (const auto &[points, codec] : ranked)
        best.push_back(codec);
    return best;
}

bool sniffs(const Codec *codec, const EncodedFile &file)
{
    return codec->sniff && codec->sniff(bytesOf(file.bytes).first(std::min(size_t(file.bytes.size()), sniffedBytes)));
}

// Nothing that a library throws may leave the engine.
template <class T, class Call> Result<T> guarded(const Codec &codec, Call call)
{
    const auto failed = [&](const char *what) {
        return Failure{QLatin1String(codec.name) + QStringLiteral(" decoder: ") + QLatin1String(what)};
    };
    try {
        return call(codec);
    } catch (const std::exception &problem) {
        return failed(problem.what());
    } catch (...) {
        return failed("stopped by an unknown exception");
    }
}

/// The built-in codec that knows the content; null when none does.
const Codec *knownBuiltIn(const EncodedFile &file)
{
    const std::vector<const Codec *> known = candidates(file, builtInCodecs());
    return !known.empty() && sniffs(known.front(), file) ? known.front() : nullptr;
}

/// Attempts and what they came to.
template <class T> struct Attempts
{
    std::vector<const Codec *> tried;
    QString reasons;
    std::optional<Result<T>> answer;

    template <class Call> bool attempt(const Codec *codec, Call call)
    {
        tried.push_back(codec);
        Result<T> result = guarded<T>(*codec, call);
        if (result)
            answer = std::move(result);
        else
            reasons += (reasons.isEmpty() ? QString() : QStringLiteral("; ")) + result.reason();
        return answer.has_value();
    }
};

/// Tries the built-in decoder that knows the content; only when there is none, or it fails, the module is loaded.
template <class T, class Call> Result<T> firstSuccess(const EncodedFile &file, Codecs codecs, Call call)
{
    Attempts<T> attempts;
    if (const Codec *known = knownBuiltIn(file)) {
        if (codecs == Codecs::AfterBuiltIn)
            attempts.tried.push_back(known);
        else if (attempts.attempt(known, call))
            return *std::move(attempts.answer);
    }
    if (codecs == Codecs::BuiltIn)
        return Failure{attempts.reasons};
    for (const Codec *codec : candidates(file, fullCodecTable())) {
        if (attempts.tried.size() >= maximumAttempts)
            break;
        const bool again = std::find(attempts.tried.begin(), attempts.tried.end(), codec) != attempts.tried.end();
        if (!again && attempts.attempt(codec, call))
            return *std::move(attempts.answer);
    }
    QString reasons = attempts.reasons;
    if (attempts.tried.empty())
        reasons = QCoreApplication::translate("Engine", "no decoder for this file");
    if (const QString missing = codecModuleFailure(); !missing.isEmpty())
        reasons += (reasons.isEmpty() ? QString() : QStringLiteral("; ")) + missing;
    return Failure{reasons};
}

bool isComplete(const Result<ImageInfo> &info)
{
    return info && !info->size.isEmpty() && info->bitsPerPixel > 0;
}

QString extensionOf(const QString &path)
{
    const QString name = FileNameOfPath(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1).toLower();
}

/// The palette that lies beside a CUT, whichever case its name is written in.
QByteArray companionOf(const QString &path, const QString &extension)
{
    if (extension != QLatin1String("cut"))
        return {};
    constexpr qint64 maximumBytes = 64LL * 1024;
    const QString base = path.chopped(extension.size());
    for (const char *palette : {"pal", "PAL", "Pal"}) {
        if (Result<QByteArray> bytes = readFile(base + QLatin1String(palette), maximumBytes))
            return *std::move(bytes);
    }
    return {};
}

Result<QByteArray> readHead(int descriptor, qsizetype count)
{
    QByteArray head(count, Qt::Uninitialized);
    qsizetype filled = 0;
    while (filled < count) {
        const ssize_t got = pread(descriptor, head.data() + filled, size_t(count - filled), filled);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return Failure{
                QCoreApplication::translate("Engine", "cannot be read: ") + QString::fromLocal8Bit(strerror(errno))};
        if (got == 0)
            break;
        filled += got;
    }
    head.truncate(filled);
    return head;
}

struct Descriptor
{
    int value;
    ~Descriptor() { close(value); }
};

Result<ImageInfo> probeSomewhere(const EncodedFile &file, int sizeIndex, Codecs codecs)
{
    const std::optional<isolation::Answer> answer =
        isolation::ask({isolation::Work::Probe, codecs, {QSize(), sizeIndex, 0}}, file);
    if (!answer)
        return probeHere(file, sizeIndex, codecs);
    if (!answer->succeeded)
        return Failure{answer->reason};
    return answer->picture.info;
}

/// The answer from the file's start, as far as a codec that can work with a start knows the content.
std::optional<ImageInfo> probeStart(const QString &path, int sizeIndex)
{
    const Result<int> opened = openRegularFile(path);
    if (!opened)
        return {};
    const Descriptor descriptor{*opened};
    constexpr qsizetype firstRead = 64 * 1024;
    constexpr qsizetype lastRead = 4 * 1024 * 1024;
    for (qsizetype count = firstRead; count <= lastRead; count *= 8) {
        Result<QByteArray> head = readHead(descriptor.value, count);
        if (!head)
            return {};
        const EncodedFile start{*head, extensionOf(path)};
        const Codec *const known = knownBuiltIn(start);
        if (!known || !known->probesPrefix)
            return {};
        const Result<ImageInfo> info = probeSomewhere(start, sizeIndex, Codecs::BuiltIn);
        if (isComplete(info))
            return *info;
        if (start.bytes.size() < count)
            return {};
    }
    return {};
}

/// What goes along with the whole pixels of a file's first picture. The codecs of everyday formats fill the blocks
/// themselves, for a small part of the price of the module's library.
void completeMetadata(Picture &picture, const EncodedFile &file, const Codec &codec, const DecodeHint &hint)
{
    if (picture.isReduced() || hint.page != 0)
        return;
    const std::span<const Codec *const> simple = builtInCodecs();
    const bool ownBlocks = std::find(simple.begin(), simple.end(), &codec) != simple.end();
    const CodecModule *const module = ownBlocks ? nullptr : codecModule();
    if (picture.metadata.isEmpty() && module && module->readMetadata)
        picture.metadata = module->readMetadata(file);
    applyExifResolution(picture.pixels, picture.metadata.exif);
}

}

Result<Picture> decodeHere(const EncodedFile &file, const DecodeHint &hint, Codecs codecs)
{
    return firstSuccess<Picture>(file, codecs, [&](const Codec &codec) -> Result<Picture> {
        Result<Picture> picture = codec.decode(file, hint);
        if (picture && picture->isNull())
            return Failure{QCoreApplication::translate("Engine", "the decoder gave no pixels")};
        if (picture)
            completeMetadata(*picture, file, codec, hint);
        return picture;
    });
}

Result<ImageInfo> probeHere(const EncodedFile &file, int sizeIndex, Codecs codecs)
{
    return firstSuccess<ImageInfo>(file, codecs, [&](const Codec &codec) { return codec.probe(file, sizeIndex); });
}

Result<PictureTexts> readTextsHere(const EncodedFile &file)
{
    const CodecModule *const module = codecModule();
    if (!module || !module->readTexts)
        return Failure{codecModuleFailure()};
    Result<PictureTexts> texts = module->readTexts(file);
    if (texts)
        return texts;
    // A format that holds none of the usual blocks may still have a comment, which its codec gives with the picture.
    const Result<Picture> picture = decodeHere(file, {QSize(16, 16), -1, 0});
    if (!picture)
        return texts;
    PictureTexts own;
    own.comment = QString::fromUtf8(picture->metadata.comment);
    return own;
}

bool builtInCodecKnows(const EncodedFile &file)
{
    return knownBuiltIn(file) != nullptr;
}

Result<Picture> decode(const EncodedFile &file, const DecodeHint &hint)
{
    std::optional<isolation::Answer> answer = isolation::ask({isolation::Work::Decode, Codecs::All, hint}, file);
    if (!answer)
        return decodeHere(file, hint);
    if (!answer->succeeded)
        return Failure{answer->reason};
    return std::move(answer->picture);
}

Result<ImageInfo> probe(const EncodedFile &file, int sizeIndex)
{
    return probeSomewhere(file, sizeIndex, Codecs::All);
}

Result<PictureTexts> readTexts(const EncodedFile &file)
{
    std::optional<isolation::Answer> answer = isolation::ask({isolation::Work::ReadTexts, Codecs::All, {}}, file);
    if (!answer)
        return readTextsHere(file);
    if (!answer->succeeded)
        return Failure{answer->reason};
    return std::move(answer->texts);
}

Result<PictureTexts> readTextsOfFile(const QString &path)
{
    const Result<EncodedFile> file = readEncodedFile(path);
    if (!file)
        return file.failure();
    return readTexts(*file);
}

Result<EncodedFile> readEncodedFile(const QString &path)
{
    Result<QByteArray> bytes = readFile(path, limits::maximumFileBytes);
    if (!bytes)
        return bytes.failure();
    const QString extension = extensionOf(path);
    return EncodedFile{*std::move(bytes), extension, companionOf(path, extension)};
}

Result<Picture> decodeFile(const QString &path, const DecodeHint &hint)
{
    const Result<EncodedFile> file = readEncodedFile(path);
    if (!file)
        return file.failure();
    return decode(*file, hint);
}

Result<ImageInfo> probeFile(const QString &path, int sizeIndex)
{
    if (std::optional<ImageInfo> info = probeStart(path, sizeIndex))
        return *info;
    const Result<EncodedFile> file = readEncodedFile(path);
    if (!file)
        return file.failure();
    return probe(*file, sizeIndex);
}
