#pragma once

#include "engine/loadedpicture.h"

#include <QColor>

/// The engine role behind `ImageMaskControl1`: makes thumbnails.
class ImageMaskControl
{
public:
    /// A raised frame around the thumbnail; without it the picture and its ground are all there is.
    void setMaskThumbnailStyle(bool style) { m_style = style; }
    bool MaskThumbnailStyle() const { return m_style; }
    /// The ground around the picture and under its transparent parts.
    void setMaskThumbnailBackColor(const QColor &color) { m_backColor = color; }
    QColor MaskThumbnailBackColor() const { return m_backColor; }
    /// The source; null lets go of it. The thumbnail that was made stays.
    void setMaskPicture(std::shared_ptr<const LoadedPicture> picture) { m_picture = std::move(picture); }
    std::shared_ptr<const LoadedPicture> MaskPicture() const { return m_picture; }

    /// Makes MaskThumbnailPicture of exactly that size in pixels: the source with its proportions, centred, on the back
    /// colour. A source that is smaller is not enlarged. Without a source there is only the ground. A size that is
    /// empty or over the limits leaves a null picture.
    void MaskMakeThumbnail(int width, int height);
    Picture MaskThumbnailPicture() const { return m_thumbnail; }

private:
    bool m_style = false;
    QColor m_backColor = Qt::black;
    std::shared_ptr<const LoadedPicture> m_picture;
    Picture m_thumbnail;
};
