// What the three encodings of stored thumbnails cost, and what they keep of the picture.
//
//     bench_thumbnailformats PICTURE...
//
// One line for each edge and level: mean bytes, signal-to-noise ratio (PSNR over red, green and blue of all pictures),
// and the time of a store and of a load.

#include "engine/decode.h"
#include "engine/imagemaskcontrol.h"
#include "engine/polyimage.h"
#include "platform/filepath.h"
#include "thumbnails/thumbnailblob.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cmath>
#include <cstdio>

namespace {

struct Sum
{
    qint64 bytes = 0;
    double squares = 0;
    double samples = 0;
    qint64 storing = 0;
    qint64 loading = 0;
};

void addDifference(Sum &sum, const QImage &a, const QImage &b)
{
    for (int y = 0; y < a.height(); ++y) {
        const auto *one = reinterpret_cast<const QRgb *>(a.constScanLine(y));
        const auto *other = reinterpret_cast<const QRgb *>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            for (const int difference :
                {qRed(one[x]) - qRed(other[x]), qGreen(one[x]) - qGreen(other[x]), qBlue(one[x]) - qBlue(other[x])})
                sum.squares += double(difference) * difference;
        }
    }
    sum.samples += 3.0 * a.width() * a.height();
}

bool addThumbnail(Sum &sum, const Picture &thumbnail, int level, int edge)
{
    PolyImage box;
    box.setPolyJpegQuality(thumbnailJpegQuality);
    box.setPolyJp2Quality(thumbnailJp2Quality(edge));
    box.setPolyPicture(LoadedPicture::fromPicture(thumbnail));
    const QImage before = box.PolyPicture().pixels.convertToFormat(QImage::Format_RGB32);
    QElapsedTimer timer;
    timer.start();
    const QByteArray blob = sealedBlob(box.ImageBlobSave(*thumbnailFormat(level)));
    sum.storing += timer.nsecsElapsed();
    sum.bytes += blob.size();
    timer.start();
    const bool loaded = box.ImageBlobLoad(unsealedBlob(blob));
    sum.loading += timer.nsecsElapsed();
    const QImage after = box.PolyPicture().pixels.convertToFormat(QImage::Format_RGB32);
    if (loaded && after.size() == before.size())
        addDifference(sum, before, after);
    return loaded;
}

}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QVector<Picture> pictures;
    for (int number = 1; number < argc; ++number) {
        if (const Result<Picture> picture = decodeFile(pathFromBytes(argv[number])))
            pictures.append(*picture);
        else
            std::fprintf(stderr, "%s: %s\n", argv[number], qPrintable(picture.reason()));
    }
    if (pictures.isEmpty())
        return 2;
    constexpr double peak = 255.0 * 255.0;
    constexpr double nanoseconds = 1e6;
    for (const int edge : {60, 80, 100, 200}) {
        for (int level = 0; level <= 2; ++level) {
            Sum sum;
            for (const Picture &picture : std::as_const(pictures)) {
                ImageMaskControl mask;
                mask.setMaskPicture(LoadedPicture::fromPicture(picture));
                mask.MaskMakeThumbnail(edge, edge);
                if (!addThumbnail(sum, mask.MaskThumbnailPicture(), level, edge))
                    return 1;
            }
            const double count = double(pictures.size());
            const double noise = sum.squares / qMax(1.0, sum.samples);
            std::printf("edge %3d  level %d  %7.0f bytes  %5.1f dB  store %.2f ms  load %.2f ms\n", edge, level,
                double(sum.bytes) / count, noise > 0 ? 10 * std::log10(peak / noise) : INFINITY,
                double(sum.storing) / count / nanoseconds, double(sum.loading) / count / nanoseconds);
        }
    }
}
