#include "engine/codecs/fpx.h"

#include "engine/codecs/fpxtiles.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>
#include <cmath>

namespace {

// Layout: the published FlashPix format description 1.0.
QString contentsName()
{
    return QStringLiteral("\005Image Contents");
}

/// The object that holds the resolutions: the file itself, or the first image object in a file of several.
struct Object
{
    OleFolder root;
    OleFolder image;
    OleProperties contents;
    std::vector<int> resolutions; ///< the numbers that exist, highest first
};

std::vector<int> resolutionsIn(const OleFolder &folder)
{
    std::vector<int> numbers;
    for (const QString &name : folder.names()) {
        bool isNumber = false;
        const int number = name.startsWith(QLatin1String("Resolution ")) ? name.mid(11).toInt(&isNumber) : -1;
        // Each is twice the one before, so there cannot be many.
        if (isNumber && number >= 0 && number < 32)
            numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end(), std::greater<>());
    return numbers;
}

Result<Object> openFpx(const QByteArray &bytes)
{
    const std::optional<OleFolder> root = OleFolder::open(bytes);
    if (!root)
        return Failure{QStringLiteral("not a FlashPix: no compound file")};
    std::vector<OleFolder> candidates{*root};
    for (const QString &name : root->names()) {
        if (!name.startsWith(QLatin1String("Data Object Store")))
            continue;
        if (const std::optional<OleFolder> store = root->folder(name))
            candidates.push_back(*store);
    }
    for (const OleFolder &folder : candidates) {
        std::vector<int> resolutions = resolutionsIn(folder);
        if (!resolutions.empty())
            return Object{*root, folder, OleProperties(folder.stream(contentsName())), std::move(resolutions)};
    }
    return Failure{QStringLiteral("not a FlashPix: no resolution inside")};
}

/// What the property set says of the channels; the number of channels in the header decides where it says nothing.
FpxColor colorOf(const OleProperties &contents, int number, int channels)
{
    const Bytes blob = contents.blob(0x02000002U | quint32(number) << 16);
    const ByteReader reader(blob);
    FpxColor color;
    color.hasOpacity = channels == 2 || channels == 4;
    color.space = channels < 3 ? FpxColor::Mono : FpxColor::Rgb;
    if (blob.size() < 12 || reader.u32le(4) != quint32(channels))
        return color;
    // Of each channel: its colour space in the upper half, which of its colours in the lower one.
    const quint32 first = reader.u32le(8);
    constexpr quint32 photoYcc = 2;
    constexpr quint32 premultiplied = 0x8000;
    if (channels >= 3 && (first >> 16 & 0x7fff) == photoYcc)
        color.space = FpxColor::PhotoYcc;
    color.isPremultiplied = color.hasOpacity && (first & premultiplied) != 0;
    return color;
}

QString resolutionName(int number)
{
    return QStringLiteral("Resolution %1").arg(number, 4, 10, QLatin1Char('0'));
}

Result<FpxResolution> readResolution(const Object &object, int number)
{
    const std::optional<OleFolder> folder = object.image.folder(resolutionName(number));
    if (!folder)
        return Failure{QStringLiteral("a FlashPix resolution that is no folder")};
    const QByteArray header = folder->stream(QStringLiteral("Subimage 0000 Header"));
    Result<FpxResolution> resolution = readFpxHeader(header, number);
    if (!resolution)
        return resolution;
    constexpr size_t channelsAt = 28 + 24;
    const quint32 channels = ByteReader(header).u32le(channelsAt);
    if (channels < 1 || channels > 4)
        return Failure{QStringLiteral("a FlashPix of %1 channels").arg(channels)};
    resolution->color = colorOf(object.contents, number, int(channels));
    return resolution;
}

/// The highest resolution is the picture; one that cannot be read gives way to the next.
struct Chosen
{
    FpxResolution full;
    FpxResolution resolution; ///< for the wish
    bool isDamaged = false; ///< a higher one cannot be read
};

bool isSmallerForm(const FpxResolution &small, const FpxResolution &full)
{
    const int halvings = full.number - small.number;
    const auto fits = [&](int part, int whole) {
        return std::abs(qint64(part) * (1LL << halvings) - whole) <= 1LL << halvings;
    };
    return fits(small.size.width(), full.size.width()) && fits(small.size.height(), full.size.height());
}

Result<Chosen> choose(const Object &object, QSize target)
{
    std::optional<Chosen> chosen;
    QString reason;
    for (const int number : object.resolutions) {
        const Result<FpxResolution> resolution = readResolution(object, number);
        if (!resolution) {
            reason = resolution.reason();
        } else if (!chosen) {
            chosen = Chosen{*resolution, *resolution, !reason.isEmpty()};
        } else if (isLargeEnough(resolution->size, chosen->full.size, target)
            && isSmallerForm(*resolution, chosen->full)) {
            chosen->resolution = *resolution;
        }
    }
    if (!chosen)
        return Failure{reason};
    return *chosen;
}

ImageInfo infoOf(const FpxResolution &full)
{
    return {full.size, full.color.channels() * 8, 1, fpxCodec.name};
}

QByteArray profileOf(const Object &object)
{
    constexpr qsizetype streamHeader = 28;
    constexpr qsizetype smallestProfile = 128;
    const QByteArray profile = object.image.stream(QStringLiteral("ICC Profile 0001")).mid(streamHeader);
    return profile.size() < smallestProfile || profile.size() > limits::maximumMetadataBytes ? QByteArray() : profile;
}

bool sniffFpx(Bytes head)
{
    return ByteReader(head).is(0, "\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1");
}

Result<ImageInfo> probeFpx(const EncodedFile &file, int)
{
    const Result<Object> object = openFpx(file.bytes);
    if (!object)
        return object.failure();
    const Result<Chosen> chosen = choose(*object, {});
    if (!chosen)
        return chosen.failure();
    return infoOf(chosen->full);
}

Result<Picture> decodeFpx(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Object> object = openFpx(file.bytes);
    if (!object)
        return object.failure();
    const Result<Chosen> chosen = choose(*object, hint.target);
    if (!chosen)
        return chosen.failure();
    const std::optional<OleFolder> folder = object->image.folder(resolutionName(chosen->resolution.number));
    const QByteArray data = folder ? folder->stream(QStringLiteral("Subimage 0000 Data")) : QByteArray();
    FpxPixels pixels = readFpxTiles(chosen->resolution, data, object->contents);
    if (pixels.image.isNull())
        return Failure{QStringLiteral("a FlashPix without a readable tile, or no memory for it")};
    Picture picture;
    picture.info = infoOf(chosen->full);
    picture.pixels = std::move(pixels.image);
    picture.partial = pixels.isDamaged || chosen->isDamaged;
    // Photo CD's colours are already converted, and the profile does not speak of the result.
    if (chosen->full.color.space != FpxColor::PhotoYcc)
        picture.iccProfile = profileOf(*object);
    return picture;
}

QString exposure(float seconds)
{
    if (seconds > 0 && seconds < 0.5F)
        return QStringLiteral("1/%1 s").arg(std::lround(1 / seconds));
    return QStringLiteral("%1 s").arg(double(seconds), 0, 'g', 3);
}

QString cameraLines(const OleProperties &info)
{
    enum : quint32 { Make = 0x24000000, Model, Exposure = 0x25000001, FNumber, FocalLength = 0x25000009 };
    QStringList lines{info.text(Make), info.text(Model)};
    const auto add = [&](quint32 id, auto text) {
        const std::optional<float> value = info.real(id);
        if (value && *value > 0 && *value < 100'000)
            lines.append(text(*value));
    };
    add(Exposure, exposure);
    add(FNumber, [](float value) { return QStringLiteral("F%1").arg(double(value), 0, 'g', 2); });
    add(FocalLength, [](float value) { return QStringLiteral("%1 mm").arg(double(value), 0, 'g', 3); });
    lines.removeAll(QString());
    return lines.join(QLatin1Char('\n'));
}

}

std::optional<PictureTexts> fpxTexts(const EncodedFile &file)
{
    const Result<Object> object = openFpx(file.bytes);
    if (!object)
        return {};
    const QString name = QStringLiteral("\005SummaryInformation");
    const OleProperties outer(object->root.stream(name));
    const OleProperties inner(object->image.stream(name));
    const OleProperties info(object->image.stream(QStringLiteral("\005Image Info")));
    enum : quint32 { Title = 2, Subject = 3, Comments = 6, Caption = 0x23000003, CaptureDate = 0x25000000 };
    const auto text = [&](quint32 id) {
        const QString first = outer.text(id);
        return first.isEmpty() ? inner.text(id) : first;
    };
    PictureTexts texts;
    for (const QString &candidate : {text(Title), text(Subject), info.text(Caption)}) {
        if (texts.description.isEmpty())
            texts.description = candidate;
    }
    texts.comment = text(Comments);
    texts.cameraInfo = cameraLines(info);
    if (const QDateTime date = info.time(CaptureDate); date.isValid())
        texts.cameraDate = date.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    return texts;
}

const Codec fpxCodec{"FlashPix", "fpx", sniffFpx, probeFpx, decodeFpx};
