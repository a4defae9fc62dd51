#include "engine/codecs/psp.h"

#include "engine/codecs/jpeg.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/psppixels.h"
#include "engine/codecs/rawtext.h"
#include "engine/limits.h"

#include <algorithm>

namespace {

Result<PspFile> openPsp(const QByteArray &bytes)
{
    Result<PspFile> file = readPspFile(bytesOf(bytes));
    if (!file)
        return file;
    if (!file->coding.isKnown())
        return Failure{
            QStringLiteral("PSP of %1 bits packed in way %2").arg(file->coding.depth).arg(file->coding.compression)};
    if (!limits::allows(file->size, file->coding.channelBits() > 8 ? 16 : 8))
        return Failure{tooLarge(file->size)};
    return file;
}

ImageInfo infoOf(const PspFile &file)
{
    return {file.size, file.coding.depth, 1, pspCodec.name};
}

/// What became of the pixels; null when there are none.
struct Drawn
{
    QImage image;
    bool isDamaged = false;
};

/// The stored picture of the whole, which a small wish may get reduced.
Drawn drawComposite(const PspFile &file, QSize target)
{
    for (const PspComposite &composite : file.composites) {
        if (composite.isThumbnail || composite.size != file.size)
            continue;
        if (!composite.jpeg.empty()) {
            const QByteArray jpeg(
                reinterpret_cast<const char *>(composite.jpeg.data()), qsizetype(composite.jpeg.size()));
            const Result<Picture> picture = decodeStoredJpeg(jpeg, target);
            if (picture && picture->info.size == file.size)
                return {picture->pixels, picture->partial};
            continue;
        }
        const QRect canvas(QPoint(), file.size);
        const PspPixels pixels = unpackPspPixels(composite.channels, composite.coding, canvas);
        if (pixels.rows == 0)
            continue;
        if (pixels.isPlain())
            return {pspImage(pixels), pixels.isDamaged};
        QImage image = allocateImage(file.size, pixels.maskBytes() > 1 ? QImage::Format_RGBA64 : QImage::Format_ARGB32);
        if (image.isNull())
            continue;
        image.fill(0);
        layPspPixels(image, pixels, {});
        return {image, pixels.isDamaged};
    }
    return {};
}

bool showsAnything(const PspLayer &layer)
{
    return layer.isVisible && layer.opacity > 0;
}

PspPixels pixelsOf(const PspLayer &layer, const PspCoding &coding)
{
    return unpackPspPixels(layer.channels, coding, layer.place, layer.maskDisabled ? QRect() : layer.maskPlace);
}

QImage withoutEmptyAlpha(QImage image)
{
    Picture picture;
    picture.pixels = image;
    picture.info.size = image.size();
    if (image.format() == QImage::Format_ARGB32 && !hasTransparency(picture)) {
        picture.pixels = {};
        image.reinterpretAsFormat(QImage::Format_RGB32);
    }
    return image;
}

Drawn drawLayers(const PspFile &file)
{
    std::vector<const PspLayer *> shown;
    for (const PspLayer &layer : file.layers) {
        if (layer.isRaster() && showsAnything(layer))
            shown.push_back(&layer);
    }
    Drawn drawn{{}, file.isCut};
    const QRect canvas(QPoint(), file.size);
    if (shown.size() == 1 && shown.front()->opacity == 255 && shown.front()->place == canvas) {
        const PspPixels pixels = pixelsOf(*shown.front(), file.coding);
        if (pixels.isPlain() && pixels.rows > 0)
            return {pspImage(pixels), file.isCut || pixels.isDamaged};
    }
    drawn.image =
        allocateImage(file.size, file.coding.channelBits() > 8 ? QImage::Format_RGBA64 : QImage::Format_ARGB32);
    if (drawn.image.isNull())
        return drawn;
    drawn.image.fill(0);
    bool anyRows = file.layers.size() > shown.size();
    for (const PspLayer *layer : shown) {
        const PspPixels pixels = pixelsOf(*layer, file.coding);
        drawn.isDamaged |= pixels.isDamaged;
        anyRows |= pixels.rows > 0 || layer->place.isEmpty();
        layPspPixels(drawn.image, pixels, {layer->opacity, layer->blendMode});
    }
    drawn.image = anyRows ? withoutEmptyAlpha(std::move(drawn.image)) : QImage();
    return drawn;
}

/// Whether putting the layers together here gives what the writing program showed.
bool isDrawnExactly(const PspFile &file)
{
    return !file.layers.empty() && std::all_of(file.layers.begin(), file.layers.end(), [](const PspLayer &layer) {
        return !showsAnything(layer) || (layer.isRaster() && layer.blendMode == 0 && !layer.blendsByRange);
    });
}

Drawn draw(const PspFile &file, QSize target)
{
    if (isDrawnExactly(file)) {
        Drawn layers = drawLayers(file);
        if (!layers.image.isNull() && !layers.isDamaged)
            return layers;
        // The stored picture may have come through where the layers did not.
        Drawn composite = drawComposite(file, target);
        if (composite.image.isNull() || composite.isDamaged)
            return layers.image.isNull() ? composite : layers;
        composite.isDamaged = true;
        return composite;
    }
    Drawn composite = drawComposite(file, target);
    composite.isDamaged |= file.isCut;
    return composite.image.isNull() ? drawLayers(file) : composite;
}

bool sniffPsp(Bytes head)
{
    return isPsp(head);
}

Result<ImageInfo> probePsp(const EncodedFile &file, int)
{
    const Result<PspFile> psp = openPsp(file.bytes);
    if (!psp)
        return psp.failure();
    return infoOf(*psp);
}

Result<Picture> decodePsp(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<PspFile> psp = openPsp(file.bytes);
    if (!psp)
        return psp.failure();
    Drawn drawn = draw(*psp, hint.target);
    if (drawn.image.isNull())
        return Failure{QStringLiteral("a PSP without a readable picture")};
    Picture picture;
    picture.info = infoOf(*psp);
    picture.partial = drawn.isDamaged;
    picture.pixels = std::move(drawn.image);
    picture.pixels.setDotsPerMeterX(psp->dotsPerMeter);
    picture.pixels.setDotsPerMeterY(psp->dotsPerMeter);
    return picture;
}

}

std::optional<PictureTexts> pspTexts(const EncodedFile &file)
{
    const Result<PspFile> psp = readPspFile(bytesOf(file.bytes));
    if (!psp)
        return {};
    const auto text = [&](PspTextField::Keyword keyword) {
        const auto field = std::find_if(psp->texts.begin(), psp->texts.end(),
            [keyword](const PspTextField &candidate) { return candidate.keyword == keyword; });
        return field == psp->texts.end() ? QString() : textOfBytes(field->text);
    };
    PictureTexts texts;
    texts.description = text(PspTextField::Description);
    QStringList lines;
    const auto add = [&](const QString &name, const QString &value) {
        if (!value.isEmpty())
            lines.append(name + value);
    };
    // The title stands for a description that is missing.
    if (texts.description.isEmpty())
        texts.description = text(PspTextField::Title);
    else
        add(QStringLiteral("Title: "), text(PspTextField::Title));
    add(QStringLiteral("Artist: "), text(PspTextField::Artist));
    add(QStringLiteral("Copyright: "), text(PspTextField::Copyright));
    texts.comment = lines.join(QLatin1Char('\n'));
    return texts;
}

const Codec pspCodec{"PSP", "psp pspimage tub", sniffPsp, probePsp, decodePsp};
