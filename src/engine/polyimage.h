#pragma once

#include "engine/loadedpicture.h"

/// The engine role behind `polImageBox1`: holds one picture, the last error, and the operations on them.
///
/// A load that fails leaves the picture that was there, and says so in PolyLastError.
class PolyImage
{
public:
    /// Loads `path`; `sizeIndex` picks the resolution of a Photo CD. `target` allows a reduced decode for now;
    /// PolyPicture() still gives all pixels.
    bool PolyLoad(const QString &path, int sizeIndex = 0, QSize target = {});
    int PolyWidth() const;
    int PolyHeight() const;
    int PolyBitsPerPixel() const;
    /// All pixels of the held picture; null when nothing was ever loaded.
    Picture PolyPicture() const;
    QString PolyLastError() const { return m_lastError; }

    /// The held picture without forcing its full decode.
    std::shared_ptr<const LoadedPicture> held() const { return m_held; }

private:
    std::shared_ptr<const LoadedPicture> m_held;
    QString m_lastError;
};

/// The engine role behind `Gvbox2`: decodes the "Picture" kinds and passes every still picture on to the display.
class Gvbox
{
public:
    /// Loads by file name; a failure leaves the picture that was there.
    bool load(const QString &path, QSize target = {});
    void setPicture(std::shared_ptr<const LoadedPicture> picture) { m_held = std::move(picture); }
    std::shared_ptr<const LoadedPicture> picture() const { return m_held; }
    int width() const;
    int height() const;
    int bitsPerPixel() const;
    double zoom() const { return m_zoom; }
    void setZoom(double factor) { m_zoom = factor; }

private:
    std::shared_ptr<const LoadedPicture> m_held;
    double m_zoom = 1.0;
};
