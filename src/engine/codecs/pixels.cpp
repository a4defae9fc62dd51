#include "engine/codecs/pixels.h"

#include <algorithm>
#include <cstring>

bool isLargeEnough(QSize reduced, QSize full, QSize target)
{
    if (target.isEmpty() || reduced.isEmpty())
        return reduced == full;
    const QSize fitted = full.scaled(target, Qt::KeepAspectRatio);
    return reduced == full || (reduced.width() >= fitted.width() && reduced.height() >= fitted.height());
}

QString tooLarge(QSize size)
{
    return QStringLiteral("the file claims %1 x %2 pixels, more than can be decoded here")
        .arg(size.width())
        .arg(size.height());
}

QString outOfMemory(QSize size)
{
    return QStringLiteral("no memory for %1 x %2 pixels").arg(size.width()).arg(size.height());
}

void blankRows(QImage &image, int first)
{
    const bool clear = image.depth() < 8 || image.colorCount() > 0 || image.hasAlphaChannel();
    for (int y = first; y < image.height(); ++y)
        std::memset(image.scanLine(y), clear ? 0 : 0xff, size_t(image.bytesPerLine()));
}

void completeColorTable(QImage &image)
{
    if (image.format() != QImage::Format_Mono && image.format() != QImage::Format_Indexed8)
        return;
    const int count = image.colorCount();
    int largest = image.format() == QImage::Format_Mono ? 1 : 0;
    for (int y = 0; image.format() == QImage::Format_Indexed8 && count < 256 && y < image.height(); ++y) {
        const uchar *row = image.constScanLine(y);
        largest = std::max(largest, int(*std::max_element(row, row + image.width())));
    }
    if (largest < count)
        return;
    QList<QRgb> table = image.colorTable();
    table.resize(largest + 1, qRgb(0, 0, 0));
    std::fill(table.begin() + count, table.end(), qRgb(0, 0, 0));
    image.setColorTable(table);
}

QImage normalized(const QImage &image)
{
    QImage result = image;
    switch (image.format()) {
    case QImage::Format_Grayscale8:
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_RGBA64:
        return image;
    case QImage::Format_MonoLSB:
        result = image.convertToFormat(QImage::Format_Mono);
        break;
    case QImage::Format_Mono:
    case QImage::Format_Indexed8:
        break;
    case QImage::Format_Grayscale16:
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64_Premultiplied:
    case QImage::Format_RGB30:
    case QImage::Format_BGR30:
        return image.convertToFormat(QImage::Format_RGBA64);
    default:
        return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    }
    completeColorTable(result);
    return result;
}
