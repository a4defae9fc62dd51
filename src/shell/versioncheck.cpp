#include "shell/versioncheck.h"

#include "platform/weblink.h"

#include <QCoreApplication>
#include <QVersionNumber>

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(VersionCheck)
};

constexpr QLatin1String mark("*B*");
constexpr qsizetype longestMessage = 2000; ///< characters; more would push the buttons off the screen

MessageBox informationBox(const QString &text)
{
    MessageBox box;
    box.title = Texts::tr("Update Version Check:");
    box.text = text;
    box.icon = MessageBox::Icon::Information;
    return box;
}

/// As a box shows it: the line ends of any system, and no more than it has room for.
QString forBox(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (text.size() > longestMessage)
        text = text.first(longestMessage) + QChar(0x2026);
    return text;
}

bool isPage(const WebText &answer)
{
    return answer.status >= 200 && answer.status < 300;
}

/// Servers that tell no type are believed; a web page in place of the text is a sign-in or an error.
bool isPlainText(const WebText &answer)
{
    return answer.type.isEmpty() || (answer.type.startsWith(QLatin1String("text/")) && answer.type != u"text/html");
}

}

const UpdateServer &builtInUpdateServer()
{
    static const UpdateServer server{
        QUrl(QStringLiteral(LUMORA_UPDATE_SERVER)), QUrl(QStringLiteral(LUMORA_HOME_PAGE))};
    return server;
}

QUrl updateAddress(const UpdateServer &server, const char *name)
{
    QUrl address = server.address.adjusted(QUrl::StripTrailingSlash);
    address.setPath(address.path() + QStringLiteral("/version3.0/%1.txt").arg(QLatin1String(name)));
    return address;
}

QString localVersion()
{
    const QVersionNumber version = QVersionNumber::fromString(QStringLiteral(LUMORA_VERSION));
    return QStringLiteral("%1.%2.%3")
        .arg(version.majorVersion())
        .arg(version.minorVersion())
        .arg(version.microVersion());
}

Result<QString> publishedVersion(const Result<WebText> &answer)
{
    if (!answer)
        return answer.failure();
    if (!isPage(*answer))
        return Failure{Texts::tr("The server has no information on versions (answer %1).").arg(answer->status)};
    if (!isPlainText(*answer))
        return Failure{Texts::tr("The server answered with something else than a version (%1).").arg(answer->type)};
    QStringView text(answer->text);
    while (text.startsWith(u' '))
        text = text.sliced(1);
    while (text.endsWith(u' '))
        text.chop(1);
    return text.toString();
}

VersionFinding versionFinding(const QString &published, const QString &local)
{
    const int order = QString::compare(local, published, Qt::CaseSensitive);
    if (order == 0)
        return {"currentmessage", Texts::tr("You are currently running the latest version of Tessaly Lumora."), false};
    if (order < 0)
        return {"newermessage", Texts::tr("A newer version of Tessaly Lumora is available for download."), true};
    return {"betamessage",
        Texts::tr("You have a newer build than is currently available for download of Tessaly Lumora."), false};
}

std::optional<QString> markedText(const Result<WebText> &answer)
{
    if (!answer || !answer->text.startsWith(mark))
        return std::nullopt;
    return answer->text.sliced(mark.size());
}

MessageBox findingBox(const VersionFinding &finding, const std::optional<QString> &message)
{
    MessageBox box = informationBox(forBox(message.value_or(finding.text)));
    if (finding.offersDownload && message) {
        box.icon = MessageBox::Icon::Question;
        box.buttons = MessageBox::Buttons::YesNo;
        box.defaultAnswer = MessageBox::Answer::No;
    }
    return box;
}

QUrl downloadAddress(const UpdateServer &server, const std::optional<QString> &link)
{
    const QUrl address(link.value_or(QString()).trimmed(), QUrl::StrictMode);
    return isWebAddress(address) ? address : server.homePage;
}

MessageBox noUpdateServerBox()
{
    return informationBox(
        Texts::tr("This build of Tessaly Lumora V3 has no update server to ask. New versions come the "
                  "way that this one came, for instance with the package manager of your system.")
        + QStringLiteral("\n\n") + Texts::tr("You are running version %1.").arg(localVersion()));
}

MessageBox checkFailedBox(const QString &reason)
{
    MessageBox box =
        informationBox(Texts::tr("It could not be found out whether there is a newer version of Tessaly Lumora.")
            + QStringLiteral("\n\n") + forBox(reason));
    box.icon = MessageBox::Icon::Exclamation;
    return box;
}

MessageBox downloadNotOpenedBox(const QUrl &address)
{
    MessageBox box = informationBox(Texts::tr("Nothing on this system opens the address of the download:")
        + QStringLiteral("\n\n") + address.toDisplayString());
    box.icon = MessageBox::Icon::Exclamation;
    return box;
}
