#include "engine/polyimage.h"

#include "engine/ops/adjustments.h"
#include "engine/ops/depth.h"
#include "engine/ops/emboss.h"
#include "engine/picturecache.h"

#include <QCoreApplication>

namespace {

Result<Picture> allPixelsOf(const LoadedPicture *held)
{
    if (!held)
        return Failure{QCoreApplication::translate("Engine", "There is no image.")};
    Picture picture = held->full();
    if (picture.isReduced())
        return Failure{QCoreApplication::translate("Engine", "The image could not be read completely.")};
    return picture;
}

}

bool PolyImage::PolyLoad(const QString &path, int sizeIndex, QSize target)
{
    auto loaded = PictureCache::instance().load(path, sizeIndex, target);
    m_lastError = loaded.reason();
    if (loaded)
        m_held = *std::move(loaded);
    return m_lastError.isEmpty();
}

int PolyImage::PolyWidth() const
{
    return m_held ? m_held->info().size.width() : 0;
}

int PolyImage::PolyHeight() const
{
    return m_held ? m_held->info().size.height() : 0;
}

int PolyImage::PolyBitsPerPixel() const
{
    return m_held ? m_held->info().bitsPerPixel : 0;
}

Picture PolyImage::PolyPicture() const
{
    return m_held ? m_held->full() : Picture();
}

bool PolyImage::change(const std::function<Result<Picture>(const Picture &)> &operation)
{
    const Result<Picture> before = allPixelsOf(m_held.get());
    const Result<Picture> after = before ? operation(*before) : before;
    if (after)
        m_held = LoadedPicture::fromPicture(*after);
    m_lastError = before && !after
        ? QCoreApplication::translate("Engine", "The image could not be changed: %1.").arg(after.reason())
        : before.reason();
    return m_lastError.isEmpty();
}

bool PolyImage::PolySetBitsPerPixel(int bits)
{
    return change([=](const Picture &picture) { return withBitsPerPixel(picture, bits); });
}

bool PolyImage::PolyReduceColors(int colors, int bits, bool diffuse)
{
    return change([=](const Picture &picture) { return withReducedColors(picture, colors, bits, diffuse); });
}

bool PolyImage::PolyReduceToBits(int bits, bool diffuse)
{
    return change([=](const Picture &picture) { return withReducedBits(picture, bits, diffuse); });
}

bool PolyImage::PolyAutoContrast(double clipFraction)
{
    return change([=](const Picture &picture) { return withAutoContrast(picture, clipFraction); });
}

bool PolyImage::PolyAutoLevel(double clipFraction)
{
    return change([=](const Picture &picture) { return withAutoLevel(picture, clipFraction); });
}

bool PolyImage::PolyGrayScale()
{
    return change(&inGreyScale);
}

bool PolyImage::PolyEmboss()
{
    return change([](const Picture &picture) { return embossed(picture); });
}

Result<QByteArray> PolyImage::encoded(TypeCode typeCode, bool diffuse) const
{
    const Result<Picture> picture = allPixelsOf(m_held.get());
    if (!picture)
        return picture.failure();
    EncodeOptions options = m_options;
    options.diffuse = diffuse;
    return encode(*picture, typeCode, options);
}

bool PolyImage::PolySave(const QString &path, TypeCode typeCode, bool diffuse)
{
    const Result<Picture> picture = allPixelsOf(m_held.get());
    m_lastError = picture.reason();
    if (!picture)
        return false;
    EncodeOptions options = m_options;
    options.diffuse = diffuse;
    if (const Result<void> saved = encodeFile(*picture, path, typeCode, options); !saved)
        m_lastError = QCoreApplication::translate("Engine", "The image could not be saved: %1.").arg(saved.reason());
    return m_lastError.isEmpty();
}

QByteArray PolyImage::ImageBlobSave(TypeCode formatCode)
{
    const Result<Picture> picture = allPixelsOf(m_held.get());
    const Result<QByteArray> blob =
        picture ? encode(*picture, formatCode, m_options) : Result<QByteArray>(picture.failure());
    m_lastError = blob.reason();
    return blob ? *blob : QByteArray();
}

bool PolyImage::ImageBlobLoad(const QByteArray &blob)
{
    const Result<Picture> picture = blob.isEmpty()
        ? Result<Picture>(Failure{QCoreApplication::translate("Engine", "There is no image.")})
        : decode({blob, QString()});
    m_lastError = picture.reason();
    if (picture)
        m_held = LoadedPicture::fromPicture(*picture);
    return m_lastError.isEmpty();
}

bool Gvbox::load(const QString &path, QSize target)
{
    constexpr int ownChoice = -1;
    auto loaded = PictureCache::instance().load(path, ownChoice, target);
    if (!loaded)
        return false;
    m_held = *std::move(loaded);
    return true;
}

int Gvbox::width() const
{
    return m_held ? m_held->info().size.width() : 0;
}

int Gvbox::height() const
{
    return m_held ? m_held->info().size.height() : 0;
}

int Gvbox::bitsPerPixel() const
{
    return m_held ? m_held->info().bitsPerPixel : 0;
}
