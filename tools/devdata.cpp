#include "devcommands.h"

#include "engine/limits.h"
#include "engine/metadata.h"
#include "platform/files.h"
#include "platform/registrystore.h"
#include "viewer/listfile.h"

namespace {

QString numberText(const std::optional<int> &value)
{
    return value ? QString::number(*value) : QStringLiteral("-");
}

QString yesNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

void printKey(RegistryStore::Root root, const char *rootName, const QString &key)
{
    const RegistryStore &store = registryStore();
    for (const auto &[name, value] : store.values(root, key))
        dev::printRow({QString::fromLatin1(rootName), key, name, value});
    for (const QString &child : store.subKeys(root, key))
        printKey(root, rootName, key.isEmpty() ? child : key + QLatin1Char('\\') + child);
}

void printBlocks(const Picture &picture)
{
    const auto size = [](const QByteArray &block) { return QString::number(block.size()); };
    dev::printRow({QStringLiteral("dots per metre"), QString::number(picture.pixels.dotsPerMeterX()),
        QString::number(picture.pixels.dotsPerMeterY())});
    dev::printRow({QStringLiteral("bytes of ICC, EXIF, IPTC, XMP"), size(picture.iccProfile),
        size(picture.metadata.exif), size(picture.metadata.iptc), size(picture.metadata.xmp)});
}

}

int dev::meta(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments, 1, -1))
        return 2;
    int status = 0;
    for (const QString &file : parser.positionalArguments()) {
        const Result<PictureTexts> texts = readTextsOfFile(file);
        if (!texts) {
            status = fail(file + QStringLiteral(": ") + texts.reason());
            continue;
        }
        printRow({QStringLiteral("file"), file});
        printRow({QStringLiteral("description"), texts->description});
        printRow({QStringLiteral("comment"), texts->comment});
        printRow({QStringLiteral("camera info"), texts->cameraInfo});
        printRow({QStringLiteral("camera date"), texts->cameraDate});
        printRow({QStringLiteral("IPTC"), iptcText(*texts)});
        if (const Result<Picture> picture = decodeFile(file))
            printBlocks(*picture);
    }
    return status;
}

int dev::list(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments, 1, 1))
        return 2;
    const QString file = parser.positionalArguments().constFirst();
    const Result<QByteArray> bytes = readFile(file, limits::maximumFileBytes);
    if (!bytes)
        return fail(file + QStringLiteral(": ") + bytes.reason());
    const ListFileContent content = readListFile(*bytes, 0);
    if (!content.isListFile)
        return fail(file + QStringLiteral(": not a list file"));
    printRow({QStringLiteral("count"), numberText(content.count)});
    printRow({QStringLiteral("current"), numberText(content.currentIndex)});
    printRow({QStringLiteral("end reached"), yesNo(content.endReached)});
    printRow({QStringLiteral("end marker at"), numberText(content.endMarkerAt)});
    for (qsizetype i = 0; i < content.entries.size(); ++i)
        printRow({QStringLiteral("entry"), QString::number(i), content.entries.at(i)});
    return 0;
}

int dev::settings(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments, 0, 0))
        return 2;
    printKey(RegistryStore::Root::CurrentUser, "user", {});
    printKey(RegistryStore::Root::LocalMachine, "machine", {});
    printKey(RegistryStore::Root::ClassesRoot, "classes", {});
    return 0;
}
