#include "support/support.h"
#include "builtpaths.h"

#include "platform/filepath.h"
#include "platform/registrystore.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>

TemporaryHome::TemporaryHome()
{
    const QString home = m_folder.path();
    const auto point = [&](const char *variable, const char *folder) {
        const QString path = home + QLatin1Char('/') + QLatin1String(folder);
        QDir().mkpath(path);
        qputenv(variable, QFile::encodeName(path));
    };
    qputenv("HOME", QFile::encodeName(home));
    point("XDG_CONFIG_HOME", ".config");
    point("XDG_DATA_HOME", ".local/share");
    point("XDG_CACHE_HOME", ".cache");
    point("XDG_STATE_HOME", ".local/state");
    point("XDG_RUNTIME_DIR", "run");
    point("LUMORA_APP_FOLDER", "app");
    QFile::setPermissions(home + QStringLiteral("/run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    setRegistryStoreFolder(home + QStringLiteral("/.config/lumora/"));
}

QString TemporaryHome::path() const
{
    return m_folder.path() + QLatin1Char('/');
}

QString TemporaryHome::write(const QString &name, const QByteArray &bytes) const
{
    const QString path = this->path() + name;
    QDir().mkpath(QFileInfo(path).path());
    // By the program's own path text, so that a name may be any bytes.
    QFile file;
    const int descriptor = ::open(pathToBytes(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0 || !file.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
        || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString TemporaryHome::writePicture(const QString &name, QSize size, QRgb color) const
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    const QString path = this->path() + name;
    QDir().mkpath(QFileInfo(path).path());
    if (!image.save(path))
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString samplesFolder()
{
    static const QString folder = [] {
        const QString path = QStringLiteral(LUMORA_SAMPLES "/");
        if (QFileInfo::exists(path))
            return path;
        qWarning("SAMPLES MISSING: %s is not there, tests that need it are skipped", qPrintable(path));
        return QString();
    }();
    return folder;
}

void useBuiltModules()
{
    if (qEnvironmentVariableIsEmpty("LUMORA_MODULES"))
        qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules");
}

QImage rampImage(QSize size, QImage::Format format)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        QRgb *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            row[x] =
                qRgb(x * 255 / qMax(1, size.width() - 1), y * 255 / qMax(1, size.height() - 1), (x * 7 + y * 13) & 255);
    }
    return image.convertToFormat(format);
}
