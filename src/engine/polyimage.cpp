#include "engine/polyimage.h"

#include "engine/picturecache.h"

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
