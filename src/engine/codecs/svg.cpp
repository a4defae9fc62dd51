#include "engine/codecs/modernformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/svgsource.h"
#include "engine/limits.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>
#include <memory>
#include <mutex>

namespace {

QLoggingCategory::CategoryFilter filterBefore = nullptr;

// As for Qt's picture readers: what is odd in a file is no matter for standard error.
void leaveOutDrawingTalk(QLoggingCategory *category)
{
    filterBefore(category);
    if (qstrncmp(category->categoryName(), "qt.svg", 6) == 0 && qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        category->setEnabled(QtWarningMsg, false);
}

void silence()
{
    static std::once_flag once;
    std::call_once(once, [] {
        filterBefore = QLoggingCategory::installFilter(nullptr);
        QLoggingCategory::installFilter(leaveOutDrawingTalk);
    });
}

/// A drawing has no pixels of its own: one that says it is larger than this is drawn at a size that can be looked at.
QSize drawnSize(QSizeF natural)
{
    constexpr double largest = 16384;
    constexpr double instead = 4096;
    const double longer = std::max(natural.width(), natural.height());
    const auto rounded = [](QSizeF size) {
        return QSize(qMax(1, int(std::lround(size.width()))), qMax(1, int(std::lround(size.height()))));
    };
    if (longer > largest || !limits::allows(rounded(natural), 8))
        natural *= instead / longer;
    return rounded(natural);
}

struct Opened
{
    SvgSource source;
    std::unique_ptr<QSvgRenderer> renderer;
    QSize size;
    ImageInfo info() const { return {size, 32, 1, svgCodec.name}; }
};

Result<void> load(Opened &opened)
{
    // Text without the application object ends the program.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return Failure{QStringLiteral("SVG: drawings need the graphical part of the program")};
    silence();
    opened.renderer = std::make_unique<QSvgRenderer>(opened.source.xml);
    if (!opened.renderer->isValid())
        return Failure{QStringLiteral("not a readable SVG")};
    return {};
}

Result<Opened> openSvg(const QByteArray &bytes)
{
    Result<SvgSource> source = cleanSvg(bytes);
    if (!source)
        return source.failure();
    Opened opened;
    opened.source = *std::move(source);
    QSizeF natural = opened.source.size;
    if (natural.isEmpty()) {
        if (const Result<void> done = load(opened); !done)
            return done.failure();
        natural = opened.renderer->viewBoxF().size();
        if (natural.isEmpty() || !std::isfinite(natural.width()) || !std::isfinite(natural.height()))
            return Failure{QStringLiteral("an SVG without a size")};
    }
    opened.size = drawnSize(natural);
    return opened;
}

bool sniffSvg(Bytes head)
{
    return looksLikeSvg(QByteArray::fromRawData(reinterpret_cast<const char *>(head.data()), qsizetype(head.size())));
}

Result<ImageInfo> probeSvg(const EncodedFile &file, int)
{
    const Result<Opened> opened = openSvg(file.bytes);
    if (!opened)
        return opened.failure();
    return opened->info();
}

Result<Picture> decodeSvg(const EncodedFile &file, const DecodeHint &hint)
{
    Result<Opened> opened = openSvg(file.bytes);
    if (!opened)
        return opened.failure();
    if (!opened->renderer) {
        if (const Result<void> done = load(*opened); !done)
            return done.failure();
    }
    QSize size = opened->size;
    if (!hint.target.isEmpty()) {
        const QSize fitted = size.scaled(hint.target, Qt::KeepAspectRatio).expandedTo({1, 1});
        if (fitted.width() < size.width() && fitted.height() < size.height())
            size = fitted;
    }
    Picture picture;
    picture.info = opened->info();
    picture.pixels = allocateImage(size, QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        return Failure{outOfMemory(size)};
    picture.pixels.fill(0);
    opened->renderer->setAspectRatioMode(opened->source.keepsShape ? Qt::KeepAspectRatio : Qt::IgnoreAspectRatio);
    QPainter painter(&picture.pixels);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing);
    opened->renderer->render(&painter, QRectF({}, QSizeF(size)));
    painter.end();
    picture.pixels.convertTo(QImage::Format_ARGB32);
    return picture;
}

}

const Codec svgCodec{"SVG", "svg svgz", sniffSvg, probeSvg, decodeSvg};
