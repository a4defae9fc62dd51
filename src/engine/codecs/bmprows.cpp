#include "engine/codecs/bmprows.h"

#include "engine/codecs/rgbrows.h"
#include "engine/picture.h"

#include <QtEndian>

QImage readBmpRows(Bytes file, size_t offset, QSize size, int bits, bool topFirst)
{
    const size_t stride = (size_t(size.width()) * size_t(bits) + 31) / 32 * 4;
    if ((bits != 24 && bits != 32) || !ByteReader(file).has(offset, stride * size_t(size.height())))
        return {};
    QImage image = allocateImage(size, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const from = file.data() + offset + size_t(y) * stride;
        QRgb *const to = reinterpret_cast<QRgb *>(image.scanLine(topFirst ? y : image.height() - 1 - y));
        if (bits == 24) {
            bgrRow(from, to, size.width());
            continue;
        }
        // The fourth byte means nothing.
        for (int x = 0; x < size.width(); ++x)
            to[x] = qFromLittleEndian<quint32>(from + 4 * qsizetype(x)) | 0xff000000;
    }
    return image;
}
