// Renders the program's icon for the icon theme, in the sizes that desktops ask for:
//     makeappicons DRAWING.svg FOLDER
// writes FOLDER/<size>x<size>/apps/lumora.png.

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace {

constexpr int sizes[] = {16, 22, 24, 32, 48, 64, 128, 256, 512};

QImage rendered(QSvgRenderer &drawing, int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter);
    return image;
}

bool writeIcon(QSvgRenderer &drawing, int size, const QString &root)
{
    const QString folder = QStringLiteral("%1/%2x%2/apps").arg(root).arg(size);
    QFile file(folder + QStringLiteral("/lumora.png"));
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) && rendered(drawing, size).save(&file, "PNG")
        && file.flush();
}

}

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: makeappicons DRAWING.svg FOLDER\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(QFile::decodeName(argv[1]));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "makeappicons: %s is no drawing\n", argv[1]);
        return 1;
    }
    for (const int size : sizes) {
        if (!writeIcon(drawing, size, QFile::decodeName(argv[2]))) {
            std::fprintf(stderr, "makeappicons: the icon of %d pixels cannot be written\n", size);
            return 1;
        }
    }
    return 0;
}
