#include "platform/folders.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/linux/descriptor.h"

#include <QStandardPaths>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <filesystem>

#include <pwd.h>
#include <sys/stat.h>

namespace {

constexpr qint64 largestBookmarkFile = 4 * 1024 * 1024;

QString withSeparator(const QString &folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

/// An absolute folder from the environment; the base directory rules say that a relative value is not to be used.
QString folderFromEnvironment(const char *variable)
{
    const QByteArray value = qgetenv(variable);
    return value.startsWith('/') ? withSeparator(pathFromBytes(value)) : QString();
}

QString homeFolder()
{
    const QString home = folderFromEnvironment("HOME");
    if (!home.isEmpty())
        return home;
    const passwd *user = ::getpwuid(::getuid());
    return user && user->pw_dir && user->pw_dir[0] == '/' ? withSeparator(pathFromBytes(user->pw_dir))
                                                          : QStringLiteral("/");
}

QString baseFolder(const char *variable, const char *belowHome)
{
    const QString folder = folderFromEnvironment(variable);
    return folder.isEmpty() ? homeFolder() + QLatin1String(belowHome) : folder;
}

/// Makes the folder and those above it that are missing, for this user alone.
void makeFoldersTo(const QString &folder)
{
    for (qsizetype at = folder.indexOf(QLatin1Char('/'), 1); at > 0; at = folder.indexOf(QLatin1Char('/'), at + 1))
        ignore(::mkdir(nativePath(folder.left(at)).constData(), 0700));
}

QString madeFolder(const QString &base)
{
    const QString folder = base + QStringLiteral("lumora/");
    makeFoldersTo(folder);
    return folder;
}

/// A folder in a place where others may write too counts only when it is really ours and closed to them.
bool isPrivate(const QString &folder)
{
    struct stat state = {};
    const QByteArray native = nativePath(folder.chopped(1));
    return ::lstat(native.constData(), &state) == 0 && S_ISDIR(state.st_mode) && state.st_uid == ::geteuid()
        && (state.st_mode & 0077) == 0;
}

QString existingOrHome(QStandardPaths::StandardLocation location)
{
    const QString folder = QStandardPaths::writableLocation(location);
    return folderExists(folder) ? withSeparator(folder) : homeFolder();
}

void addBookmark(QStringList &folders, const QString &uri)
{
    const QString path = pathFromFileUri(uri);
    if (path.isEmpty() || !folderExists(path))
        return;
    const QString folder = withSeparator(path);
    if (!folders.contains(folder))
        folders.append(folder);
}

/// One bookmark a line: the address, then perhaps a blank and a name.
void addLineBookmarks(QStringList &folders, const QString &file)
{
    const Result<QByteArray> bytes = readFile(file, largestBookmarkFile);
    if (!bytes)
        return;
    const QList<QByteArray> lines = bytes->split('\n');
    for (const QByteArray &line : lines)
        addBookmark(folders, pathFromBytes(line.split(' ').first().trimmed()));
}

/// The XBEL file of places (http://pyxml.sourceforge.net/topics/xbel/): bookmark elements with an address; an entry the
/// user has hidden says so in its metadata.
void addXbelBookmarks(QStringList &folders, const QString &file)
{
    const Result<QByteArray> bytes = readFile(file, largestBookmarkFile);
    if (!bytes)
        return;
    QXmlStreamReader xml(*bytes);
    QString address;
    bool hidden = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("bookmark")) {
            address = xml.attributes().value(QLatin1String("href")).toString();
            hidden = false;
        } else if (xml.isStartElement() && xml.name() == QLatin1String("IsHidden")) {
            hidden = xml.readElementText(QXmlStreamReader::SkipChildElements) == QLatin1String("true");
        } else if (xml.isEndElement() && xml.name() == QLatin1String("bookmark") && !hidden) {
            addBookmark(folders, address);
        }
    }
}

/// Text of the mount table, where blanks and the like stand as a backslash and three octal digits.
QByteArray unescapedMountField(const QByteArray &field)
{
    QByteArray text;
    for (qsizetype at = 0; at < field.size(); ++at) {
        bool octal = false;
        const int value = field[at] == '\\' ? field.mid(at + 1, 3).toInt(&octal, 8) : 0;
        if (octal && at + 3 < field.size()) {
            text.append(static_cast<char>(value));
            at += 3;
        } else {
            text.append(field[at]);
        }
    }
    return text;
}

/// Kernel and container plumbing holds no pictures.
bool isPlumbing(const QByteArray &fileSystem, const QByteArray &mountPoint)
{
    static constexpr std::array kinds = {"autofs", "bpf", "binfmt_misc", "cgroup", "cgroup2", "configfs", "debugfs",
        "devpts", "devtmpfs", "efivarfs", "fusectl", "hugetlbfs", "mqueue", "nsfs", "overlay", "proc", "pstore",
        "ramfs", "rpc_pipefs", "squashfs", "sysfs", "tmpfs", "securityfs", "selinuxfs", "tracefs", "fuse.lxcfs",
        "fuse.portal", "fuse.gvfsd-fuse"};
    static constexpr std::array places = {
        "/boot", "/dev", "/efi", "/etc", "/proc", "/run", "/snap", "/sys", "/usr", "/var/lib"};
    if (std::any_of(kinds.begin(), kinds.end(), [&](const char *kind) { return fileSystem == kind; }))
        return true;
    if (mountPoint.startsWith("/run/media/"))
        return false;
    return std::any_of(places.begin(), places.end(),
        [&](const char *place) { return mountPoint == place || mountPoint.startsWith(QByteArray(place) + '/'); });
}

bool isNetwork(const QByteArray &fileSystem)
{
    return fileSystem.startsWith("nfs") || fileSystem.startsWith("fuse") || fileSystem.startsWith("smb")
        || fileSystem == "cifs" || fileSystem == "9p" || fileSystem == "afs" || fileSystem == "ceph";
}

/// The system's own program folders are never the program's data folder, not even when root may write there.
bool isSystemProgramFolder(const QString &folder)
{
    return folder == QLatin1String("/usr/bin/") || folder == QLatin1String("/usr/local/bin/")
        || folder == QLatin1String("/bin/") || folder == QLatin1String("/usr/games/");
}

QString programFolder()
{
    std::array<char, 4096> buffer = {};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    return length > 0 ? SplitFilePath(pathFromBytes(QByteArray(buffer.data(), length))).folder : QString();
}

/// The folder of a build or a portable copy, else the installed one; empty where there is neither.
QString besideProgram(const char *built, const char *installed)
{
    const QString program = programFolder();
    for (const char *place : {built, installed}) {
        const QString folder = withSeparator(absolutePath(program + QLatin1String(place), QStringLiteral("/")));
        if (!program.isEmpty() && folderExists(folder))
            return folder;
    }
    return {};
}

} // namespace

QString WindowsSystemFolders::desktop() const
{
    return existingOrHome(QStandardPaths::DesktopLocation);
}

QString WindowsSystemFolders::documents() const
{
    return existingOrHome(QStandardPaths::DocumentsLocation);
}

QString WindowsSystemFolders::favorites() const
{
    const QStringList folders = bookmarks();
    return folders.isEmpty() ? homeFolder() : folders.first();
}

QString WindowsSystemFolders::pictures() const
{
    return existingOrHome(QStandardPaths::PicturesLocation);
}

QString workingFolder()
{
    std::error_code failed;
    const std::string folder = std::filesystem::current_path(failed).native();
    return failed ? QStringLiteral("/") : withSeparator(pathFromBytes(QByteArray::fromStdString(folder)));
}

QStringList mountedVolumes()
{
    QStringList volumes = {QStringLiteral("/")};
    // Read as a table and not asked of each volume: a network server that has gone must not hold the program up.
    const Result<QByteArray> table = readFile(QStringLiteral("/proc/self/mountinfo"), 16 * 1024 * 1024);
    if (!table)
        return volumes;
    const QList<QByteArray> lines = table->split('\n');
    for (const QByteArray &line : lines) {
        // proc(5): the mount point is the fifth field, the file system's kind the first one behind the lone hyphen.
        const qsizetype hyphen = line.indexOf(" - ");
        const QByteArray mountPoint = unescapedMountField(line.split(' ').value(4));
        const QByteArray fileSystem = line.mid(hyphen + 3).split(' ').value(0);
        if (hyphen < 0 || !mountPoint.startsWith('/') || isPlumbing(fileSystem, mountPoint))
            continue;
        const QString folder = withSeparator(pathFromBytes(mountPoint));
        if (!volumes.contains(folder) && (isNetwork(fileSystem) || folderExists(folder)))
            volumes.append(folder);
    }
    std::sort(volumes.begin() + 1, volumes.end(), nameLess);
    return volumes;
}

QStringList bookmarks()
{
    QStringList folders;
    const QString config = baseFolder("XDG_CONFIG_HOME", ".config/");
    addLineBookmarks(folders, config + QStringLiteral("gtk-3.0/bookmarks"));
    addLineBookmarks(folders, config + QStringLiteral("gtk-4.0/bookmarks"));
    addLineBookmarks(folders, homeFolder() + QStringLiteral(".gtk-bookmarks"));
    addXbelBookmarks(folders, baseFolder("XDG_DATA_HOME", ".local/share/") + QStringLiteral("user-places.xbel"));
    return folders;
}

QString AppFolder()
{
    const QString chosen = folderFromEnvironment("LUMORA_APP_FOLDER");
    if (!chosen.isEmpty())
        return chosen;
    const QString program = programFolder();
    if (!program.isEmpty() && !isSystemProgramFolder(program) && ::access(nativePath(program).constData(), W_OK) == 0)
        return program;
    return madeFolder(baseFolder("XDG_DATA_HOME", ".local/share/"));
}

QString dataFolder()
{
    const QString chosen = folderFromEnvironment("LUMORA_DATA");
    return chosen.isEmpty() ? besideProgram("lumora-data/", "../share/lumora/") : chosen;
}

QString translationsFolder()
{
    return besideProgram("lumora-translations/", "../share/lumora/translations/");
}

QString dataHomeFolder()
{
    const QString folder = baseFolder("XDG_DATA_HOME", ".local/share/");
    makeFoldersTo(folder);
    return folder;
}

QString configFolder()
{
    return madeFolder(baseFolder("XDG_CONFIG_HOME", ".config/"));
}

QString cacheFolder()
{
    return madeFolder(baseFolder("XDG_CACHE_HOME", ".cache/"));
}

QString stateFolder()
{
    return madeFolder(baseFolder("XDG_STATE_HOME", ".local/state/"));
}

QString runtimeFolder()
{
    const QString base = folderFromEnvironment("XDG_RUNTIME_DIR");
    if (!base.isEmpty() && folderExists(base)) {
        const QString folder = madeFolder(base);
        if (isPrivate(folder))
            return folder;
    }
    const QString temporary = QStringLiteral("/tmp/lumora-%1/").arg(::geteuid());
    makeFoldersTo(temporary);
    return isPrivate(temporary) ? temporary : madeFolder(stateFolder() + QStringLiteral("run/"));
}
