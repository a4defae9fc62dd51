#include "engine/codecs/texts.h"

#include "engine/codecs/exiv2setup.h"
#include "engine/codecs/fpx.h"
#include "engine/codecs/iff.h"
#include "engine/codecs/metadatablocks.h"
#include "engine/codecs/psp.h"
#include "engine/codecs/smallformats.h"
#include "engine/limits.h"

#include <QStringDecoder>

#include <optional>

namespace {

/// Formats whose texts only their own codecs know; nothing when the file is of another one.
constexpr std::optional<PictureTexts> (*ownTexts[])(const EncodedFile &) = {pspTexts, fpxTexts};

struct Sources
{
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    QByteArray comment;
};

/// What the file meant: UTF-8 where the bytes are valid as that, else Latin-1.
QString textOf(const QByteArray &bytes)
{
    const QByteArray line = bytes.left(bytes.indexOf('\0') < 0 ? bytes.size() : bytes.indexOf('\0'));
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(line);
    return (utf8.hasError() ? QString::fromLatin1(line) : text).trimmed();
}

QString textOf(const std::string &bytes)
{
    return textOf(QByteArray::fromStdString(bytes));
}

/// Blocks are decoded one by one: a damaged one does not cost the others.
Sources sourcesOf(const Metadata &blocks)
{
    Sources sources;
    sources.comment = blocks.comment;
    guardedFromExiv2(0, [&] {
        if (!blocks.exif.isEmpty())
            Exiv2::ExifParser::decode(sources.exif, exiv2Bytes(blocks.exif), uint32_t(blocks.exif.size()));
        return 0;
    });
    guardedFromExiv2(0, [&] {
        if (!blocks.iptc.isEmpty())
            Exiv2::IptcParser::decode(sources.iptc, exiv2Bytes(blocks.iptc), uint32_t(blocks.iptc.size()));
        return 0;
    });
    guardedFromExiv2(0, [&] {
        if (!blocks.xmp.isEmpty())
            Exiv2::XmpParser::decode(sources.xmp, blocks.xmp.toStdString());
        return 0;
    });
    return sources;
}

Result<Sources> sourcesByLibrary(const EncodedFile &file)
{
    const int type = guardedFromExiv2(int(Exiv2::ImageType::none),
        [&] { return int(Exiv2::ImageFactory::getType(exiv2Bytes(file.bytes), long(file.bytes.size()))); });
    if (type == int(Exiv2::ImageType::none))
        return Sources();
    try {
        const auto image = Exiv2::ImageFactory::open(exiv2Bytes(file.bytes), long(file.bytes.size()));
        image->readMetadata();
        Sources sources{image->exifData(), image->iptcData(), image->xmpData(), {}};
        sources.comment = QByteArray::fromStdString(image->comment());
        return sources;
    } catch (const std::exception &problem) {
        return Failure{QStringLiteral("metadata: ") + QString::fromLocal8Bit(problem.what())};
    }
}

Result<Sources> sourcesOf(const EncodedFile &file)
{
    const ByteReader head(file.bytes);
    if (head.is(0, "\xff\xd8\xff"))
        return sourcesOf(jpegMetadata(file.bytes));
    if (head.is(0, "\x89PNG\r\n\x1a\n"))
        return sourcesOf(pngMetadata(file.bytes));
    if (head.is(0, "GIF87a") || head.is(0, "GIF89a"))
        return sourcesOf(gifMetadata(file.bytes));
    if (head.is(0, "FORM"))
        return sourcesOf(readIffMetadata(file.bytes));
    if (const Metadata camera = readPmpMetadata(file.bytes); !camera.isEmpty())
        return sourcesOf(camera);
    return sourcesByLibrary(file);
}

QString exifText(const Exiv2::ExifData &exif, const char *key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? QString() : textOf(found->toString());
}

/// As people write it: "1/125 s", "F4".
QString readableExif(const Exiv2::ExifData &exif, std::initializer_list<const char *> keys)
{
    for (const char *key : keys) {
        const auto found = exif.findKey(Exiv2::ExifKey(key));
        if (found == exif.end() || found->count() == 0)
            continue;
        if (const QString text = textOf(found->print(&exif)); !text.isEmpty())
            return text;
    }
    return {};
}

QString userComment(const Exiv2::ExifData &exif)
{
    const auto found = exif.findKey(Exiv2::ExifKey("Exif.Photo.UserComment"));
    if (found == exif.end())
        return {};
    const auto *const comment = dynamic_cast<const Exiv2::CommentValue *>(&found->value());
    return comment ? textOf(comment->comment()) : textOf(found->toString());
}

/// The tags of one system's file dialogs, which hold UTF-16.
QString wideText(const Exiv2::ExifData &exif, const char *key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || found->size() > limits::maximumMetadataBytes)
        return {};
    QByteArray bytes(found->size(), '\0');
    found->copy(reinterpret_cast<Exiv2::byte *>(bytes.data()), Exiv2::littleEndian);
    const QString text = QStringDecoder(QStringDecoder::Utf16LE)(bytes);
    return text.left(text.indexOf(QChar(0)) < 0 ? text.size() : text.indexOf(QChar(0))).trimmed();
}

QString caption(const Exiv2::IptcData &iptc)
{
    const auto found = iptc.findKey(Exiv2::IptcKey("Iptc.Application2.Caption"));
    return found == iptc.end() ? QString() : textOf(found->toString());
}

QString xmpDescription(const Exiv2::XmpData &xmp)
{
    const auto found = xmp.findKey(Exiv2::XmpKey("Xmp.dc.description"));
    if (found == xmp.end())
        return {};
    // One text in several languages; the default one is there by the format's rules.
    const auto *const languages = dynamic_cast<const Exiv2::LangAltValue *>(&found->value());
    if (!languages)
        return textOf(found->toString());
    const std::string standard = languages->toString("x-default");
    return standard.empty() && !languages->value_.empty() ? textOf(languages->value_.begin()->second)
                                                          : textOf(standard);
}

QString cameraInfo(const Exiv2::ExifData &exif)
{
    const std::pair<QString, QString> rows[] = {
        {QStringLiteral("Make"), readableExif(exif, {"Exif.Image.Make"})},
        {QStringLiteral("Model"), readableExif(exif, {"Exif.Image.Model"})},
        {QStringLiteral("Exposure Time"),
            readableExif(exif, {"Exif.Photo.ExposureTime", "Exif.Photo.ShutterSpeedValue"})},
        {QStringLiteral("Aperture"), readableExif(exif, {"Exif.Photo.FNumber", "Exif.Photo.ApertureValue"})},
        {QStringLiteral("ISO"),
            readableExif(exif, {"Exif.Photo.ISOSpeedRatings", "Exif.Photo.RecommendedExposureIndex"})},
        {QStringLiteral("Flash"), readableExif(exif, {"Exif.Photo.Flash"})},
        {QStringLiteral("Focal Length"), readableExif(exif, {"Exif.Photo.FocalLength"})},
    };
    QStringList lines;
    for (const auto &[name, value] : rows) {
        if (!value.isEmpty())
            lines.append(name + QStringLiteral(": ") + value);
    }
    return lines.join(QLatin1Char('\n'));
}

QList<std::pair<QString, QString>> iptcPairs(const Exiv2::IptcData &iptc)
{
    constexpr qsizetype mostPairs = 2000;
    constexpr long mostBytes = 64 * 1024;
    QList<std::pair<QString, QString>> pairs;
    for (const Exiv2::Iptcdatum &datum : iptc) {
        // Pictures among the values are nothing to read.
        if (pairs.size() < mostPairs && datum.size() <= mostBytes)
            pairs.append({QString::fromStdString(datum.tagName()), textOf(datum.toString())});
    }
    return pairs;
}

QString firstOf(std::initializer_list<QString> texts)
{
    for (const QString &text : texts) {
        if (!text.isEmpty())
            return text;
    }
    return {};
}

}

Result<PictureTexts> readFileTexts(const EncodedFile &file)
{
    for (const auto read : ownTexts) {
        if (std::optional<PictureTexts> texts = read(file))
            return *std::move(texts);
    }
    const Result<Sources> sources = sourcesOf(file);
    if (!sources)
        return sources.failure();
    const Exiv2::ExifData &exif = sources->exif;
    return guardedFromExiv2(Result<PictureTexts>(Failure{QStringLiteral("metadata: damaged")}), [&] {
        PictureTexts texts;
        texts.description = firstOf(
            {exifText(exif, "Exif.Image.ImageDescription"), caption(sources->iptc), xmpDescription(sources->xmp)});
        texts.comment = firstOf({textOf(sources->comment), userComment(exif), wideText(exif, "Exif.Image.XPComment")});
        texts.cameraInfo = cameraInfo(exif);
        texts.cameraDate =
            firstOf({exifText(exif, "Exif.Photo.DateTimeOriginal"), exifText(exif, "Exif.Image.DateTime")});
        texts.iptc = iptcPairs(sources->iptc);
        return Result<PictureTexts>(texts);
    });
}
