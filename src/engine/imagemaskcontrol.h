#pragma once

#include "engine/loadedpicture.h"

#include <QColor>

/// What a thumbnail looks like besides the picture on it.
struct ThumbnailLook
{
    QSize size; ///< pixels, of the whole thumbnail
    QColor backColor = Qt::black; ///< the ground around the picture and under its transparent parts
    bool frame = false; ///< a raised frame; without it the picture and its ground are all there is
    int frameWidth = 2; ///< pixels
    bool operator==(const ThumbnailLook &) const = default;
};

/// A picture of exactly that size: the source with its proportions, centred, on the ground. A source that is smaller is
/// not enlarged; without a source there is only the ground. A null picture for a size that is empty or over the limits.
/// Safe on any thread.
Picture thumbnailOf(const LoadedPicture *source, const ThumbnailLook &look);

/// The engine role behind `ImageMaskControl1`: makes thumbnails. Saving a thumbnail and the preferences' sample know it
/// by the one set of names, the Thumbnail Viewer by the other; both mean the same.
class ImageMaskControl
{
public:
    void setMaskThumbnailStyle(bool style) { m_look.frame = style; }
    bool MaskThumbnailStyle() const { return m_look.frame; }
    void setMaskThumbnailBackColor(const QColor &color) { m_look.backColor = color; }
    QColor MaskThumbnailBackColor() const { return m_look.backColor; }
    /// The source; null lets go of it. The thumbnail that was made stays.
    void setMaskPicture(std::shared_ptr<const LoadedPicture> picture) { m_picture = std::move(picture); }
    std::shared_ptr<const LoadedPicture> MaskPicture() const { return m_picture; }
    /// Makes MaskThumbnailPicture by thumbnailOf().
    void MaskMakeThumbnail(int width, int height);
    Picture MaskThumbnailPicture() const { return m_thumbnail; }

    /// 0 or 1.
    void setMaskStyle(int style) { setMaskThumbnailStyle(style != 0); }
    int MaskStyle() const { return m_look.frame ? 1 : 0; }
    void setMaskBackColor(const QColor &color) { setMaskThumbnailBackColor(color); }
    QColor MaskBackColor() const { return m_look.backColor; }
    void setMaskSourcePicture(std::shared_ptr<const LoadedPicture> picture) { setMaskPicture(std::move(picture)); }
    std::shared_ptr<const LoadedPicture> MaskSourcePicture() const { return m_picture; }
    void MakeThumbnail(int width, int height) { MaskMakeThumbnail(width, height); }
    Picture MaskResultPicture() const { return m_thumbnail; }
    /// Size of the source's file in pixels; 0 without a source.
    int MaskImageWidth() const { return m_picture ? m_picture->info().size.width() : 0; }
    int MaskImageHeight() const { return m_picture ? m_picture->info().size.height() : 0; }

    /// Instead of MakeThumbnail(): what another thread has made of the source by thumbnailOf().
    void setMaskResultPicture(const Picture &thumbnail) { m_thumbnail = thumbnail; }

private:
    ThumbnailLook m_look;
    std::shared_ptr<const LoadedPicture> m_picture;
    Picture m_thumbnail;
};
