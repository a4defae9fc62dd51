#include "engine/loadedpicture.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

Result<std::shared_ptr<const LoadedPicture>> LoadedPicture::load(const QString &path, int sizeIndex, QSize target)
{
    Result<EncodedFile> file = readEncodedFile(path);
    if (!file)
        return file.failure();
    return fromFile(*std::move(file), sizeIndex, target);
}

Result<std::shared_ptr<const LoadedPicture>> LoadedPicture::fromFile(EncodedFile file, int sizeIndex, QSize target)
{
    // A file too large to be kept is decoded completely at once: its bytes might be gone later.
    const bool keepable = file.bytes.size() <= limits::cacheBudget() / 2;
    Result<Picture> picture = decode(file, {keepable ? target : QSize(), sizeIndex, 0});
    if (!picture)
        return picture.failure();
    auto loaded = std::make_shared<LoadedPicture>();
    loaded->m_info = picture->info;
    loaded->m_sizeIndex = sizeIndex;
    if (picture->isReduced() && keepable)
        loaded->m_file = std::move(file);
    loaded->m_picture = *std::move(picture);
    return std::shared_ptr<const LoadedPicture>(std::move(loaded));
}

std::shared_ptr<const LoadedPicture> LoadedPicture::fromPicture(const Picture &picture)
{
    auto loaded = std::make_shared<LoadedPicture>();
    loaded->m_picture = picture;
    loaded->m_picture.info.size = picture.pixels.size();
    loaded->m_info = loaded->m_picture.info;
    return loaded;
}

std::shared_ptr<const LoadedPicture> LoadedPicture::fromReduced(const Picture &picture)
{
    auto loaded = std::make_shared<LoadedPicture>();
    loaded->m_picture = picture;
    loaded->m_info = picture.info;
    return loaded;
}

Picture LoadedPicture::current() const
{
    const std::lock_guard lock(m_mutex);
    return m_picture;
}

Picture LoadedPicture::atLeast(QSize needed) const
{
    const auto suffices = [&](const Picture &picture) {
        const QSize have = picture.pixels.size();
        return !picture.isReduced() || (have.width() >= needed.width() && have.height() >= needed.height());
    };
    if (Picture now = current(); suffices(now))
        return now;

    // One decode at a time; whoever waited may find the work done.
    const std::lock_guard decoding(m_decoding);
    EncodedFile file;
    {
        const std::lock_guard lock(m_mutex);
        if (suffices(m_picture) || m_file.bytes.isEmpty())
            return m_picture;
        file = m_file;
    }
    // The decoder fits the picture into its target; here the picture has to cover what is needed.
    const QSize covering = m_info.size.scaled(needed, Qt::KeepAspectRatioByExpanding);
    const bool everything = covering.width() >= m_info.size.width() || covering.height() >= m_info.size.height();
    Result<Picture> larger = decode(file, {everything ? QSize() : covering, m_sizeIndex, 0});
    const std::lock_guard lock(m_mutex);
    if (larger && larger->pixels.width() >= m_picture.pixels.width())
        m_picture = *std::move(larger);
    if (!m_picture.isReduced())
        m_file = {};
    return m_picture;
}

QImage LoadedPicture::scaled(QSize size) const
{
    // One at a time: who comes for a size that is being made waits for it.
    const std::lock_guard scaling(m_scaling);
    {
        const std::lock_guard lock(m_mutex);
        for (const QImage &kept : m_scaled) {
            if (kept.size() == size)
                return kept;
        }
    }
    const Picture picture = atLeast(size);
    const QImage &pixels = picture.pixels;
    // Enlarged pixels are shown as they are.
    const auto way = size.width() > pixels.width() * 2 ? Qt::FastTransformation : Qt::SmoothTransformation;
    QImage scaled = pixels.size() == size ? pixels : pixels.scaled(size, Qt::IgnoreAspectRatio, way);
    const auto wanted = hasTransparency(picture) ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    if (scaled.format() != wanted)
        scaled.convertTo(wanted);
    scaled.setDevicePixelRatio(1);
    const std::lock_guard lock(m_mutex);
    m_scaled[1] = std::exchange(m_scaled[0], scaled);
    return scaled;
}

qint64 LoadedPicture::cost() const
{
    const std::lock_guard lock(m_mutex);
    qint64 scaled = 0;
    for (const QImage &kept : m_scaled)
        scaled += kept.constBits() == m_picture.pixels.constBits() ? 0 : kept.sizeInBytes();
    return scaled + m_picture.pixels.sizeInBytes() + m_picture.iccProfile.size() + m_file.bytes.size()
        + m_file.companion.size();
}
