#include "engine/codecs/qtread.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QBuffer>
#include <QImageReader>

#include <mutex>

namespace {

// The library's own limit refuses the pictures of today's cameras; the engine's limits have been asked already.
void liftOwnLimit()
{
    static std::once_flag once;
    std::call_once(once, [] { QImageReader::setAllocationLimit(int(limits::decodeBudget() / (1024 * 1024))); });
}

}

Result<QImage> readByQt(const QByteArray &bytes, const char *format, QtPicture wanted)
{
    liftOwnLimit();
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoTransform(false);
    if (wanted.number > 0 && !reader.jumpToImage(wanted.number))
        return Failure{
            QStringLiteral("%1: picture %2 cannot be reached").arg(QLatin1String(format)).arg(wanted.number)};
    QImage image = reader.read();
    for (int i = 0; i < wanted.skippedFrames && !image.isNull(); ++i)
        image = reader.read();
    if (image.isNull())
        return Failure{QStringLiteral("%1: %2").arg(QLatin1String(format), reader.errorString())};
    return normalized(image);
}

QSize sizeByQt(const QByteArray &bytes, const char *format)
{
    liftOwnLimit();
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer, format).size();
}
