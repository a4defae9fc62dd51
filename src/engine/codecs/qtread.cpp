#include "engine/codecs/qtread.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QBuffer>
#include <QImageReader>
#include <QLoggingCategory>

#include <mutex>

namespace {

QLoggingCategory::CategoryFilter filterBefore = nullptr;

// What is wrong with a file is told by the answer. The library's own words about it go to standard error only for those
// who ask for them.
void leaveOutPictureTalk(QLoggingCategory *category)
{
    filterBefore(category);
    if (qstrncmp(category->categoryName(), "qt.gui.imageio", 14) == 0
        && qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        category->setEnabled(QtWarningMsg, false);
}

// The library's own limit refuses the pictures of today's cameras; the engine's limits have been asked already.
void setUpLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] {
        QImageReader::setAllocationLimit(int(limits::decodeBudget() / (1024 * 1024)));
        // Set first: the filter is called for every category while it is put in.
        filterBefore = QLoggingCategory::installFilter(nullptr);
        QLoggingCategory::installFilter(leaveOutPictureTalk);
    });
}

}

Result<QImage> readByQt(const QByteArray &bytes, const char *format, QtPicture wanted)
{
    setUpLibrary();
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
    setUpLibrary();
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer, format).size();
}
