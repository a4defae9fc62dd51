#include "platform/linux/desktopfiles.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"

#include <QFileInfo>

#include <algorithm>
#include <cstring>

#include <unistd.h>

namespace {

const QString entryFile = QStringLiteral("applications/org.lumora.Lumora.desktop");
const QString mimeFile = QStringLiteral("mime/packages/org.lumora.Lumora.xml");
const QString iconFile = QStringLiteral("icons/hicolor/scalable/apps/lumora.svg");
constexpr qint64 largestFile = 1024 * 1024;

/// As every value of an entry stands there.
QByteArray escapedText(QByteArray text)
{
    return text.replace('\\', "\\\\").replace('\t', "\\t");
}

/// A word of a command: in quotes, with four characters escaped for them, and "%" for itself.
QByteArray commandWord(const QByteArray &path)
{
    QByteArray word = "\"";
    for (const char character : path) {
        if (strchr("\"`$\\", character))
            word += '\\';
        word += character;
        if (character == '%')
            word += '%';
    }
    return escapedText(word + '"');
}

/// The data folders of the system, however the user's own one is written among them.
QStringList systemFolders()
{
    const QString own = QFileInfo(dataHomeFolder()).canonicalFilePath();
    QStringList folders = qEnvironmentVariable("XDG_DATA_DIRS").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (folders.isEmpty())
        folders = {QStringLiteral("/usr/local/share"), QStringLiteral("/usr/share")};
    folders.removeIf([&](const QString &folder) {
        return !folder.startsWith(QLatin1Char('/')) || QFileInfo(folder).canonicalFilePath() == own;
    });
    return folders;
}

bool isInstalled(const QString &file)
{
    const QStringList folders = systemFolders();
    return std::any_of(folders.begin(), folders.end(),
        [&](const QString &folder) { return FileExists(folder + QLatin1Char('/') + file); });
}

Result<void> makeFoldersOf(const QString &file)
{
    const QString base = dataHomeFolder();
    for (qsizetype at = file.indexOf(QLatin1Char('/')); at > 0; at = file.indexOf(QLatin1Char('/'), at + 1)) {
        const QString folder = base + file.left(at);
        if (folderExists(folder))
            continue;
        if (Result<void> made = makeFolder(folder); !made)
            return made;
    }
    return {};
}

void addCommands(MadeFiles &result, const QString &file)
{
    const QString base = dataHomeFolder();
    if (file == entryFile)
        result.commands.append({QStringLiteral("update-desktop-database"), {base + QStringLiteral("applications")}});
    else if (file == mimeFile)
        result.commands.append({QStringLiteral("update-mime-database"), {base + QStringLiteral("mime")}});
}

void removeOne(MadeFiles &result, const QString &file)
{
    if (file != entryFile && file != mimeFile && file != iconFile)
        return; // of whoever wrote into the memory
    if (::unlink(pathToBytes(dataHomeFolder() + file).constData()) == 0)
        addCommands(result, file);
}

Result<void> makeOne(MadeFiles &result, const QString &file, const QByteArray &bytes, const QStringList &made)
{
    const QString path = dataHomeFolder() + file;
    if (isInstalled(file)) {
        if (made.contains(file))
            removeOne(result, file);
        return {};
    }
    const Result<QByteArray> present = readFile(path, largestFile);
    if (!made.contains(file) && FileExists(path))
        return {}; // somebody's own
    result.files.append(file);
    if (present && *present == bytes)
        return {};
    if (Result<void> folders = makeFoldersOf(file); !folders)
        return folders;
    addCommands(result, file);
    return writeFileAtomically(path, bytes);
}

} // namespace

Result<QByteArray> ownDesktopEntry(const QByteArray &entry, const QString &program)
{
    if (!program.startsWith(QLatin1Char('/')) || hasForeignBytes(program) || program.contains(QLatin1Char('\n'))
        || program.contains(QLatin1Char('\r')))
        return Failure{QStringLiteral("no desktop entry can name %1").arg(displayPath(program))};
    const QByteArray path = pathToBytes(program);
    QByteArrayList lines = entry.split('\n');
    for (QByteArray &line : lines) {
        if (line.startsWith("Exec=lumora"))
            line = "Exec=" + commandWord(path) + line.mid(qsizetype(strlen("Exec=lumora")));
        else if (line.startsWith("TryExec="))
            line = "TryExec=" + escapedText(path);
        else if (line == "[Desktop Entry]")
            line += "\nNoDisplay=true";
    }
    return lines.join('\n');
}

MadeFiles makeDesktopFiles(const DesktopFiles &files, const QStringList &made)
{
    MadeFiles result;
    QByteArray entry;
    if (!isInstalled(entryFile)) {
        const Result<QByteArray> own = ownDesktopEntry(files.entry, files.program);
        if (!own) {
            result.files = made;
            result.result = own.failure();
            return result;
        }
        entry = *own;
    }
    const std::pair<QString, QByteArray> all[] = {
        {iconFile, files.icon}, {mimeFile, files.mimePackage}, {entryFile, entry}};
    for (const auto &[file, bytes] : all) {
        if (Result<void> one = makeOne(result, file, bytes, made); !one)
            result.result = one.failure();
    }
    return result;
}

MadeFiles removeDesktopFiles(const QStringList &made)
{
    MadeFiles result;
    for (const QString &file : made)
        removeOne(result, file);
    return result;
}
