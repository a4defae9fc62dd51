#include "engine/isolation/answer.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>
#include <cstring>

namespace isolation {

namespace {

constexpr qsizetype largestReason = 4000;
constexpr qsizetype largestCodecName = 32;
constexpr int saneDotsPerMeter = 100'000'000;
constexpr int saneDepth = 1024;

bool hasColorTable(quint32 format)
{
    return format == QImage::Format_Mono || format == QImage::Format_Indexed8;
}

bool isKnown(quint32 format)
{
    static constexpr QImage::Format known[] = {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8,
        QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64};
    return std::find(std::begin(known), std::end(known), format) != std::end(known);
}

bool isPrintable(const QByteArray &name)
{
    return std::all_of(name.begin(), name.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

QString withoutControls(QString text)
{
    std::replace_if(
        text.begin(), text.end(), [](QChar letter) { return letter.category() == QChar::Other_Control; },
        QLatin1Char(' '));
    return text;
}

// As UTF-16 and with its length in front: what went in comes out.
void appendText(QByteArray &bytes, const QString &text)
{
    const quint32 length = quint32(text.size());
    bytes.append(reinterpret_cast<const char *>(&length), sizeof length);
    bytes.append(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

QByteArray bytesOfTexts(const PictureTexts &texts)
{
    QByteArray bytes;
    for (const QString *text : {&texts.description, &texts.comment, &texts.cameraInfo, &texts.cameraDate})
        appendText(bytes, *text);
    for (const auto &[name, value] : texts.iptc) {
        appendText(bytes, name);
        appendText(bytes, value);
    }
    return bytes;
}

bool takeText(const QByteArray &bytes, qsizetype &at, QString &text)
{
    quint32 length = 0;
    if (bytes.size() - at < qsizetype(sizeof length))
        return false;
    std::memcpy(&length, bytes.constData() + at, sizeof length);
    at += sizeof length;
    if (qint64(length) * 2 > bytes.size() - at)
        return false;
    text = QString(qsizetype(length), Qt::Uninitialized);
    std::memcpy(text.data(), bytes.constData() + at, size_t(length) * 2);
    at += qsizetype(length) * 2;
    return true;
}

bool takeTexts(const QByteArray &bytes, PictureTexts &texts)
{
    qsizetype at = 0;
    for (QString *text : {&texts.description, &texts.comment, &texts.cameraInfo, &texts.cameraDate}) {
        if (!takeText(bytes, at, *text))
            return false;
    }
    while (at < bytes.size()) {
        std::pair<QString, QString> entry;
        if (!takeText(bytes, at, entry.first) || !takeText(bytes, at, entry.second))
            return false;
        texts.iptc.append(std::move(entry));
    }
    return true;
}

QByteArray bytesOfTable(const QImage &image)
{
    const QList<QRgb> table = image.colorTable();
    return QByteArray(reinterpret_cast<const char *>(table.constData()), table.size() * qsizetype(sizeof(QRgb)));
}

QList<QRgb> tableOf(const QByteArray &bytes)
{
    QList<QRgb> table(bytes.size() / qsizetype(sizeof(QRgb)));
    std::memcpy(table.data(), bytes.constData(), size_t(table.size()) * sizeof(QRgb));
    return table;
}

QByteArray bytesOfPixels(const QImage &image)
{
    const qint64 stride = strideOf(image.size(), quint32(image.format()));
    QByteArray bytes;
    bytes.reserve(stride * image.height());
    for (int y = 0; y < image.height(); ++y)
        bytes.append(reinterpret_cast<const char *>(image.constScanLine(y)), stride);
    return bytes;
}

QImage imageOf(const Done &head, const QByteArray &bytes)
{
    const QSize size(head.width, head.height);
    const qint64 stride = strideOf(size, head.format);
    if (!isAcceptable(size, head.format) || bytes.size() != stride * size.height())
        return {};
    QImage image = allocateImage(size, QImage::Format(head.format));
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(image.scanLine(y), bytes.constData() + y * stride, size_t(stride));
    return image;
}

/// One field out of those that follow one another.
QByteArray field(const Done &head, const QByteArray &fields, Field wanted)
{
    qint64 at = 0;
    for (int before = 0; before < wanted; ++before)
        at += head.lengths[size_t(before)];
    return fields.mid(at, head.lengths[wanted]);
}

bool makesSense(const Done &head, Work work)
{
    if (head.dotsPerMeterX < 0 || head.dotsPerMeterY < 0 || head.lengths[CodecName] > largestCodecName)
        return false;
    const bool fileMakesSense = head.fileWidth >= 1 && head.fileWidth <= limits::maximumSide && head.fileHeight >= 1
        && head.fileHeight <= limits::maximumSide && head.bitsPerPixel >= 0 && head.bitsPerPixel <= saneDepth
        && head.pageCount >= 1;
    return work == Work::ReadTexts || fileMakesSense;
}

bool takePicture(const Done &head, const QByteArray &fields, QImage pixels, Picture &picture)
{
    picture.pixels = pixels.isNull() ? imageOf(head, field(head, fields, Pixels)) : std::move(pixels);
    const QByteArray table = field(head, fields, ColorTable);
    if (picture.isNull()
        || (hasColorTable(head.format) ? table.size() % 4 != 0 || table.size() > 1024 : !table.isEmpty()))
        return false;
    if (hasColorTable(head.format)) {
        picture.pixels.setColorTable(tableOf(table));
        // Painters trust indices without looking, and these come from elsewhere.
        completeColorTable(picture.pixels);
    }
    picture.pixels.setDotsPerMeterX(qMin(head.dotsPerMeterX, saneDotsPerMeter));
    picture.pixels.setDotsPerMeterY(qMin(head.dotsPerMeterY, saneDotsPerMeter));
    picture.partial = head.partial != 0;
    picture.iccProfile = field(head, fields, IccProfile);
    picture.metadata = {
        field(head, fields, Exif), field(head, fields, Iptc), field(head, fields, Xmp), field(head, fields, Comment)};
    return true;
}

}

qint64 strideOf(QSize size, quint32 format)
{
    const qint64 depth = isKnown(format) ? QImage::toPixelFormat(QImage::Format(format)).bitsPerPixel() : 0;
    return (size.width() * depth + 31) / 32 * 4;
}

bool isAcceptable(QSize size, quint32 format)
{
    return isKnown(format)
        && limits::allows(size, qMax(1, QImage::toPixelFormat(QImage::Format(format)).bitsPerPixel() / 8));
}

Packed packed(const Answer &answer, bool pixelsInFields)
{
    const Picture &picture = answer.picture;
    Packed result;
    Done &head = result.head;
    head.succeeded = answer.succeeded;
    head.partial = picture.partial;
    head.width = picture.pixels.width();
    head.height = picture.pixels.height();
    head.format = quint32(picture.pixels.format());
    head.dotsPerMeterX = qMax(0, picture.pixels.dotsPerMeterX());
    head.dotsPerMeterY = qMax(0, picture.pixels.dotsPerMeterY());
    head.fileWidth = picture.info.size.width();
    head.fileHeight = picture.info.size.height();
    head.bitsPerPixel = picture.info.bitsPerPixel;
    head.pageCount = picture.info.pageCount;
    const auto add = [&](Field name, const QByteArray &bytes) {
        if (bytes.size() > limits::maximumMetadataBytes && name != Pixels)
            return;
        head.lengths[name] = quint32(bytes.size());
        result.fields += bytes;
    };
    add(CodecName, picture.info.codec.left(largestCodecName));
    add(Reason, answer.reason.left(largestReason / 4).toUtf8());
    if (hasColorTable(quint32(picture.pixels.format())))
        add(ColorTable, bytesOfTable(picture.pixels));
    add(IccProfile, picture.iccProfile);
    add(Exif, picture.metadata.exif);
    add(Iptc, picture.metadata.iptc);
    add(Xmp, picture.metadata.xmp);
    add(Comment, picture.metadata.comment);
    add(Texts, bytesOfTexts(answer.texts));
    if (pixelsInFields)
        add(Pixels, bytesOfPixels(picture.pixels));
    return result;
}

std::optional<qint64> fieldBytes(const Done &head)
{
    qint64 sum = 0;
    for (const quint32 length : head.lengths) {
        if (length > quint32(limits::maximumMetadataBytes))
            return {};
        sum += length;
    }
    return sum;
}

std::optional<Answer> unpacked(const Done &head, const QByteArray &fields, Work work, QImage pixels)
{
    Answer answer;
    answer.succeeded = head.succeeded != 0;
    if (!answer.succeeded) {
        answer.reason = withoutControls(QString::fromUtf8(field(head, fields, Reason).left(largestReason)));
        return answer;
    }
    if (!makesSense(head, work))
        return {};
    answer.picture.info = {
        QSize(head.fileWidth, head.fileHeight), head.bitsPerPixel, head.pageCount, field(head, fields, CodecName)};
    if (!isPrintable(answer.picture.info.codec))
        return {};
    if (work == Work::Decode && !takePicture(head, fields, std::move(pixels), answer.picture))
        return {};
    if (work == Work::ReadTexts && !takeTexts(field(head, fields, Texts), answer.texts))
        return {};
    return answer;
}

}
