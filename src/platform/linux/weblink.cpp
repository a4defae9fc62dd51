#include "platform/weblink.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

namespace {

/// What opens addresses where the desktop has no way of its own, or none that works.
bool openByGio(const QUrl &address)
{
    QProcess process;
    process.setProgram(QStandardPaths::findExecutable(QStringLiteral("gio")));
    process.setArguments({QStringLiteral("open"), QString::fromLatin1(address.toEncoded())});
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return !process.program().isEmpty() && process.startDetached();
}

}

bool isWebAddress(const QUrl &address)
{
    const QString scheme = address.scheme();
    return address.isValid() && (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        && !address.host().isEmpty();
}

bool openWebAddress(const QUrl &address)
{
    return isWebAddress(address) && (QDesktopServices::openUrl(address) || openByGio(address));
}
