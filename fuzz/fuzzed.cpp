#include "fuzzed.h"

#include "engine/limits.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void stop(const char *reason)
{
    std::fprintf(stderr, "the promise is broken: %s\n", reason);
    std::abort();
}

int largestIndex(const QImage &image)
{
    int largest = 0;
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const row = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x)
            largest = qMax(largest, int(row[x]));
    }
    return largest;
}

}

int fuzzed::begin()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    limits::setDecodeBudget(64LL * 1024 * 1024);
    static int count = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static QGuiApplication application(count, arguments);
    return 0;
}

EncodedFile fuzzed::fileOf(const uint8_t *data, size_t size, const char *extension)
{
    EncodedFile file;
    file.bytes = QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
    file.extension = QString::fromLatin1(extension);
    return file;
}

void fuzzed::check(const Picture &picture)
{
    const QImage &image = picture.pixels;
    if (image.isNull() || picture.info.size.isEmpty() || picture.info.bitsPerPixel < 1 || picture.info.pageCount < 1)
        stop("a decode that succeeded gave nothing");
    if (image.width() > picture.info.size.width() || image.height() > picture.info.size.height())
        stop("more pixels than the picture is large");
    switch (image.format()) {
    case QImage::Format_Mono:
        if (image.colorCount() < 2)
            stop("a mono picture without two colours");
        break;
    case QImage::Format_Indexed8:
        if (largestIndex(image) >= image.colorCount())
            stop("an index without a colour");
        break;
    case QImage::Format_Grayscale8:
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_RGBA64:
        break;
    default:
        stop("pixels of a format that no picture has");
    }
}

void fuzzed::checkSame(const ImageInfo &probed, const ImageInfo &decoded)
{
    if (probed.size != decoded.size || probed.bitsPerPixel != decoded.bitsPerPixel)
        stop("the header's numbers are not the picture's");
}
