#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

/// What a file's header tells of its picture; a full decode gives the same numbers.
struct ImageInfo
{
    QSize size; ///< pixels, upright: the file's orientation is already applied
    int bitsPerPixel = 0; ///< nominal depth of the file: 1, 2, 4, 8, 16, 24, 32, 48, 64 ...
    int pageCount = 1; ///< pictures in the file; at least 1
    QByteArray codec; ///< name of the codec's row in the codec table
};

/// What a file tells besides its pixels, as the raw blocks that formats store, so that a writer can carry them over.
struct Metadata
{
    QByteArray exif; ///< a TIFF structure ("II*" or "MM*" first), without the "Exif\0\0" of a JPEG
    QByteArray iptc; ///< IPTC-IIM datasets, without the resource block around them
    QByteArray xmp; ///< the XMP packet as UTF-8
    QByteArray comment; ///< the comment of JPEG, PNG or GIF, as the file holds it

    bool isEmpty() const { return exif.isEmpty() && iptc.isEmpty() && xmp.isEmpty() && comment.isEmpty(); }
};

/// A picture as a value. Copies share the pixels until one of them changes.
///
/// `pixels` is one of Format_Mono, Format_Indexed8, Format_Grayscale8, Format_RGB32, Format_ARGB32 (not premultiplied),
/// Format_RGBA64. It is upright. Resolution stands in its dotsPerMeter values, its ICC profile in `iccProfile`.
struct Picture
{
    QImage pixels;
    ImageInfo info; ///< of the file; `info.size` is larger than the pixels when the decode was reduced
    QByteArray iccProfile; ///< as the file holds it; empty when it has none
    Metadata metadata; ///< as the file holds it: the orientation in it is the one before the pixels were turned upright
    bool partial = false; ///< the file was damaged; what could be read is here, the rest is blank

    bool isNull() const { return pixels.isNull(); }
    bool isReduced() const { return pixels.size() != info.size; }

    /// A picture made by the program itself: depth and size follow from the pixels.
    static Picture fromImage(const QImage &image);
};

/// True when any pixel can let the ground shine through.
bool hasTransparency(const Picture &picture);

/// An uninitialised image whose buffer is backed by huge pages where the system grants them: first touch of a large
/// buffer costs a fifth. Null when `size` is over the limits or memory is short.
QImage allocateImage(QSize size, QImage::Format format);

/// While one exists, up to `bytes` of the memory of large pictures that have gone are kept for those that come: what is
/// new has to be cleared by the system first. For work on many pictures of like sizes.
class KeptPictureMemory
{
public:
    explicit KeptPictureMemory(qint64 bytes);
    ~KeptPictureMemory();
    Q_DISABLE_COPY_MOVE(KeptPictureMemory)

private:
    qint64 m_before;
};

/// Bytes that are not initialised, backed by huge pages where the system grants them: for whole files in memory.
QByteArray allocateBytes(qsizetype size);
