#pragma once

#include "engine/result.h"
#include "platform/internettransfer.h"
#include "platform/messagebox.h"

#include <QString>
#include <QUrl>

#include <optional>

/// Where the maker of a build publishes its versions: short texts below "/version3.0/".
struct UpdateServer
{
    QUrl address; ///< http or https; empty: there is none, and nothing is ever fetched
    QUrl homePage; ///< opened when the server names no download
};
/// The one that this build was given (LUMORA_UPDATE_SERVER and LUMORA_HOME_PAGE of CMake).
const UpdateServer &builtInUpdateServer();

/// The address of one of the server's texts by its name, such as "latestversion".
QUrl updateAddress(const UpdateServer &server, const char *name);

/// "major.minor.revision" of this program.
QString localVersion();

/// The version that the server's answer publishes, blanks around it taken off. Line ends stay and count: a file whose
/// text ends in one names another version than the same text without. A page of another kind, or of an error, fails.
Result<QString> publishedVersion(const Result<WebText> &answer);

/// What the published version means for whoever runs the local one. Versions are compared as texts, character by
/// character: 3.1.99 is beyond 3.1.425, and no text at all is behind every version.
struct VersionFinding
{
    const char *messageName; ///< of the server's own text for this case
    QString text; ///< where the server has none
    bool offersDownload; ///< the server's own text is a question; Yes opens the download
};
VersionFinding versionFinding(const QString &published, const QString &local);

/// What stands behind the mark "*B*" of a message or link. None for a text without the mark, such as an error page.
std::optional<QString> markedText(const Result<WebText> &answer);

/// The box for a finding and the server's own text, or none.
MessageBox findingBox(const VersionFinding &finding, const std::optional<QString> &message);
/// The address to open after a Yes: the link, or the home page where it is missing or no address of the web.
QUrl downloadAddress(const UpdateServer &server, const std::optional<QString> &link);

MessageBox noUpdateServerBox();
MessageBox checkFailedBox(const QString &reason);
MessageBox downloadNotOpenedBox(const QUrl &address);
