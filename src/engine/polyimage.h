#pragma once

#include "engine/encode.h"
#include "engine/loadedpicture.h"

#include <functional>

/// The engine role behind `polImageBox1`: holds one picture, the last error, and the operations on them.
///
/// Every operation leaves its outcome in PolyLastError: empty after success, else a sentence. What fails leaves the
/// picture that was there. Operations work on all pixels and on a copy: the changed picture is this control's alone,
/// and stays until the next load.
class PolyImage
{
public:
    /// Loads `path`; `sizeIndex` picks the resolution of a Photo CD. `target` allows a reduced decode for now;
    /// PolyPicture() still gives all pixels.
    bool PolyLoad(const QString &path, int sizeIndex = 0, QSize target = {});
    int PolyWidth() const;
    int PolyHeight() const;
    int PolyBitsPerPixel() const;

    /// As in ops/depth.h.
    bool PolySetBitsPerPixel(int bits);
    bool PolyReduceColors(int colors, int bits, bool diffuse);
    bool PolyReduceToBits(int bits, bool diffuse);

    /// Options of the next saves; values out of range become the nearest one.
    void setPolyJpegFastSave(bool fast) { m_options.jpegFastSave = fast; }
    bool PolyJpegFastSave() const { return m_options.jpegFastSave; }
    void setPolyJpegQuality(int quality) { m_options.jpegQuality = qBound(1, quality, 100); }
    int PolyJpegQuality() const { return m_options.jpegQuality; }
    void setPolyJp2Quality(double quality) { m_options.jp2Quality = qBound(0.01, quality, 1.0); }
    double PolyJp2Quality() const { return m_options.jp2Quality; }
    /// Writes the held picture in that format, whatever the name's extension says. An existing file is replaced as a
    /// whole or not at all.
    bool PolySave(const QString &path, TypeCode typeCode, bool diffuse);

    /// The held picture as the bytes of a file of that format; empty on failure. Takes the options of the saves.
    QByteArray ImageBlobSave(TypeCode formatCode);
    /// Loads a picture from the bytes of a file, whatever its format is.
    bool ImageBlobLoad(const QByteArray &blob);
    /// As PolyWidth(), of what the blobs are about.
    int PictureWidth() const { return PolyWidth(); }

    /// Takes a picture that another control has decoded.
    void setPolyPicture(std::shared_ptr<const LoadedPicture> picture) { m_held = std::move(picture); }
    /// All pixels of the held picture; null when nothing was ever loaded.
    Picture PolyPicture() const;
    QString PolyLastError() const { return m_lastError; }

    /// The held picture without forcing its full decode.
    std::shared_ptr<const LoadedPicture> held() const { return m_held; }

private:
    bool change(const std::function<Result<Picture>(const Picture &)> &operation);
    std::shared_ptr<const LoadedPicture> m_held;
    QString m_lastError;
    EncodeOptions m_options;
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
