#pragma once

#include "engine/result.h"

#include <QByteArray>
#include <QImage>
#include <QVector>

/// A short silent film: the first video stream of an AVI file whose frames are uncompressed bitmaps or run-length coded
/// ones of 8 bits a pixel. Layout: RIFF chunks "hdrl" with "avih", "strh" and "strf" (a BITMAPINFOHEADER and its
/// palette), then the frames in "movi" as chunks "##db" and "##dc". Indexes and other streams are passed over.
///
/// The fourth byte of the palette's colours, which is reserved and 0 in most files, is taken as their opacity when any
/// of it is set: films of the program's own stand on any ground.
class AviFile
{
public:
    static constexpr qint64 largestFile = 16 << 20;
    static constexpr int largestSide = 1024;

    /// A failure for anything but such a file, and for one beyond the limits above.
    static Result<AviFile> open(const QByteArray &bytes);

    QSize size() const { return m_size; }
    int frameCount() const { return int(m_frames.size()); }
    /// Milliseconds from frame to frame, 10 to 10,000.
    int frameTime() const { return m_frameTime; }
    /// Draws a frame over the one before it, which the run-length code may keep parts of; the first one goes over a
    /// null image. A damaged frame draws what can be read of it.
    void drawFrame(int index, QImage &picture) const;

private:
    void readHeaders(QByteArrayView list);
    void readStream(QByteArrayView list);
    void readFormat(QByteArrayView format);
    void readFrames(QByteArrayView list);
    uchar *row(int line, QImage &picture) const;
    void drawRows(QByteArrayView bytes, QImage &picture) const;
    void drawRuns(QByteArrayView bytes, QImage &picture) const;

    QByteArray m_bytes;
    QSize m_size;
    bool m_topDown = false;
    int m_bitsPerPixel = 0;
    bool m_runs = false;
    QVector<QRgb> m_palette; ///< 256 colours, premultiplied
    int m_frameTime = 100;
    int m_streams = 0;
    int m_video = -1; ///< number of the video stream
    QVector<QByteArrayView> m_frames; ///< in m_bytes
};
