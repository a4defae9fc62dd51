#include "platform/sessionbusaddress.h"

#include <sys/stat.h>

QString sessionBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return QString::fromUtf8(address);
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    struct stat state
    {
    };
    if (path.startsWith('/') && ::stat(path.constData(), &state) == 0 && S_ISSOCK(state.st_mode))
        return QStringLiteral("unix:path=") + QString::fromLatin1(path.toPercentEncoding("/"));
    return QString();
}
