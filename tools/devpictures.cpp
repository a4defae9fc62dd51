#include "devcommands.h"

#include "actions/saveformats.h"
#include "engine/codec.h"
#include "engine/decode.h"
#include "engine/isolation.h"
#include "engine/polyimage.h"
#include "platform/files.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QSize>

namespace {

QStringList infoCells(const ImageInfo &info, qint64 nanoseconds)
{
    return {QString::fromLatin1(info.codec), QString::number(info.size.width()), QString::number(info.size.height()),
        QString::number(info.bitsPerPixel), QString::number(info.pageCount),
        QString::number(static_cast<double>(nanoseconds) / 1e6, 'f', 1)};
}

int writePng(const Picture &picture, const QString &path)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(picture.pixels))
        return dev::fail(path + QStringLiteral(": ") + writer.errorString());
    const Result<void> written = writeFileAtomically(path, bytes);
    return written ? 0 : dev::fail(path + QStringLiteral(": ") + written.reason());
}

}

int dev::decodeFiles(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption png(QStringLiteral("png"), {}, QStringLiteral("file"));
    const QCommandLineOption target(QStringLiteral("target"), {}, QStringLiteral("size"));
    const QCommandLineOption page(QStringLiteral("page"), {}, QStringLiteral("number"), QStringLiteral("0"));
    const QCommandLineOption inProcess(QStringLiteral("in-process"));
    parser.addOptions({png, target, page, inProcess});
    if (!parse(parser, arguments, 1, -1))
        return 2;
    const QStringList files = parser.positionalArguments();
    DecodeHint hint;
    bool pageIsNumber = false;
    hint.page = parser.value(page).toInt(&pageIsNumber);
    hint.target = sizeOf(parser.value(target));
    if (!pageIsNumber || hint.page < 0)
        return wrongCall(QStringLiteral("--page takes a number from 0"));
    if (parser.isSet(target) && hint.target.isEmpty())
        return wrongCall(QStringLiteral("--target takes WIDTHxHEIGHT"));
    if (parser.isSet(png) && files.size() != 1)
        return wrongCall(QStringLiteral("--png takes one picture"));

    if (!parser.isSet(inProcess))
        startDecoderProcesses();
    int status = 0;
    for (const QString &file : files) {
        QElapsedTimer timer;
        timer.start();
        const Result<Picture> picture = decodeFile(file, hint);
        const qint64 taken = timer.nsecsElapsed();
        if (!picture) {
            status = fail(file + QStringLiteral(": ") + picture.reason());
            continue;
        }
        if (hint.page >= picture->info.pageCount) {
            status = fail(file + QStringLiteral(": the file has no picture %1").arg(hint.page));
            continue;
        }
        printRow(infoCells(picture->info, taken)
            << (picture->partial ? QStringLiteral("partial") : QStringLiteral("whole")) << file);
        if (parser.isSet(png))
            status = writePng(*picture, parser.value(png));
    }
    return status;
}

int dev::probeFiles(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments, 1, -1))
        return 2;
    startDecoderProcesses();
    int status = 0;
    for (const QString &file : parser.positionalArguments()) {
        QElapsedTimer timer;
        timer.start();
        const Result<ImageInfo> info = probeFile(file);
        const qint64 taken = timer.nsecsElapsed();
        if (info)
            printRow(infoCells(*info, taken) << file);
        else
            status = fail(file + QStringLiteral(": ") + info.reason());
    }
    return status;
}

int dev::encodeFile(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption quality(QStringLiteral("quality"), {}, QStringLiteral("number"), QStringLiteral("100"));
    const QCommandLineOption diffuse(QStringLiteral("diffuse"));
    parser.addOptions({quality, diffuse});
    if (!parse(parser, arguments, 3, 3))
        return 2;
    const QStringList words = parser.positionalArguments();
    bool indexIsNumber = false;
    bool qualityIsNumber = false;
    const int index = words.at(1).toInt(&indexIsNumber);
    SaveOptions options;
    options.jpegQuality = parser.value(quality).toInt(&qualityIsNumber);
    options.jpeg2000Quality = options.jpegQuality;
    options.diffuseTwoColor = parser.isSet(diffuse);
    const auto plan = batchSavePlan(indexIsNumber ? index : -1, options);
    if (!plan)
        return wrongCall(QStringLiteral("BATCHINDEX is a number from 0 to %1").arg(saveFormats().size() - 1));
    if (!qualityIsNumber || options.jpegQuality < 1 || options.jpegQuality > 100)
        return wrongCall(QStringLiteral("--quality takes a number from 1 to 100"));

    PolyImage image;
    const bool done = image.PolyLoad(words.at(0), -1) && saveByPlan(*plan, image, words.at(2));
    return done ? 0 : fail(words.at(0) + QStringLiteral(": ") + image.PolyLastError());
}

int dev::formats(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments, 0, 0))
        return 2;
    for (const Codec *codec : fullCodecTable())
        printRow({QString::fromLatin1(codec->name), QString::fromLatin1(codec->extensions),
            codec->sniff ? QStringLiteral("by content") : QStringLiteral("by extension")});
    const QString missing = codecModuleFailure();
    return missing.isEmpty() ? 0 : fail(missing);
}
