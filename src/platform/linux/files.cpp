#include "platform/files.h"

#include "platform/filepath.h"
#include "platform/linux/descriptor.h"

#include <QCoreApplication>

#include <algorithm>
#include <new>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

bool statPath(const QString &path, struct stat &state)
{
    const QByteArray native = nativePath(path);
    return !native.isEmpty() && ::stat(native.constData(), &state) == 0;
}

qint64 nanoseconds(const timespec &time)
{
    return static_cast<qint64>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

struct FolderStream
{
    explicit FolderStream(DIR *opened)
        : folder(opened)
    {
    }
    ~FolderStream()
    {
        if (folder)
            ::closedir(folder);
    }
    Q_DISABLE_COPY_MOVE(FolderStream)
    DIR *const folder;
};

DIR *openFolder(const QString &path)
{
    const QByteArray native = nativePath(path);
    return native.isEmpty() ? nullptr : ::opendir(native.constData());
}

/// Asks the file system only where the entry itself does not say: links, and file systems without types in entries.
EntryKind kindOf(DIR *folder, const dirent *entry)
{
    if (entry->d_type == DT_REG)
        return EntryKind::File;
    if (entry->d_type == DT_DIR)
        return EntryKind::Folder;
    if (entry->d_type != DT_LNK && entry->d_type != DT_UNKNOWN)
        return EntryKind::Other;
    struct stat state = {};
    bool isLink = entry->d_type == DT_LNK;
    if (!isLink) {
        if (::fstatat(::dirfd(folder), entry->d_name, &state, AT_SYMLINK_NOFOLLOW) != 0)
            return EntryKind::Other;
        isLink = S_ISLNK(state.st_mode);
    }
    if (isLink && ::fstatat(::dirfd(folder), entry->d_name, &state, 0) != 0)
        return EntryKind::Other;
    if (S_ISREG(state.st_mode))
        return EntryKind::File;
    if (S_ISDIR(state.st_mode))
        return isLink ? EntryKind::FolderLink : EntryKind::Folder;
    return EntryKind::Other;
}

bool folderHoldsFile(const QString &path)
{
    const FolderStream stream(openFolder(path));
    if (!stream.folder)
        return false;
    while (const dirent *entry = ::readdir(stream.folder)) {
        if (kindOf(stream.folder, entry) == EntryKind::File)
            return true;
    }
    return false;
}

bool isDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// The digit run that begins at `at`: `at` moves behind it, the result is the run without leading zeros.
QStringView takeNumber(QStringView text, qsizetype &at)
{
    while (at < text.size() && text[at] == u'0')
        ++at;
    const qsizetype first = at;
    while (at < text.size() && isDigit(text[at].unicode()))
        ++at;
    return text.mid(first, at - first);
}

char32_t takeCodePoint(QStringView text, qsizetype &at)
{
    const QChar unit = text[at++];
    if (unit.isHighSurrogate() && at < text.size() && text[at].isLowSurrogate())
        return QChar::surrogateToUcs4(unit, text[at++]);
    return unit.unicode();
}

char32_t folded(char32_t value)
{
    if (value < 0x80)
        return value >= 'A' && value <= 'Z' ? value + 0x20 : value;
    return QChar::toCaseFolded(value);
}

int compareCodePoints(QStringView a, QStringView b)
{
    qsizetype atA = 0;
    qsizetype atB = 0;
    while (atA < a.size() && atB < b.size()) {
        const char32_t valueA = takeCodePoint(a, atA);
        const char32_t valueB = takeCodePoint(b, atB);
        if (valueA != valueB)
            return valueA < valueB ? -1 : 1;
    }
    return static_cast<int>(atB == b.size()) - static_cast<int>(atA == a.size());
}

int compareNames(QStringView a, QStringView b)
{
    qsizetype atA = 0;
    qsizetype atB = 0;
    while (atA < a.size() && atB < b.size()) {
        if (isDigit(a[atA].unicode()) && isDigit(b[atB].unicode())) {
            const QStringView numberA = takeNumber(a, atA);
            const QStringView numberB = takeNumber(b, atB);
            if (numberA.size() != numberB.size())
                return numberA.size() < numberB.size() ? -1 : 1;
            if (const int order = numberA.compare(numberB))
                return order;
            continue;
        }
        const char32_t valueA = folded(takeCodePoint(a, atA));
        const char32_t valueB = folded(takeCodePoint(b, atB));
        if (valueA != valueB)
            return valueA < valueB ? -1 : 1;
    }
    const int order = static_cast<int>(atB == b.size()) - static_cast<int>(atA == a.size());
    return order != 0 ? order : compareCodePoints(a, b);
}

} // namespace

QByteArray nativePath(const QString &path)
{
    const QByteArray bytes = pathToBytes(path);
    // Cut at a null byte the path would name another file.
    return bytes.contains('\0') ? QByteArray() : bytes;
}

Failure systemFailure(const char *what, const QString &path, int error)
{
    const QString said = QCoreApplication::translate("Files", what);
    return Failure{QStringLiteral("%1 %2: %3").arg(said, displayPath(path), qt_error_string(error))};
}

Result<void> makeFolder(const QString &path)
{
    if (::mkdir(nativePath(path).constData(), 0777) != 0)
        return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot make"), path, errno);
    return {};
}

std::optional<qint64> freeSpace(const QString &folder)
{
    struct statvfs state = {};
    if (::statvfs(nativePath(folder).constData(), &state) != 0)
        return std::nullopt;
    return static_cast<qint64>(state.f_bavail) * static_cast<qint64>(state.f_frsize);
}

bool FileExists(const QString &path)
{
    if (path.endsWith(QLatin1Char('/')))
        return folderHoldsFile(path);
    struct stat state = {};
    return statPath(path, state) && S_ISREG(state.st_mode);
}

bool folderExists(const QString &path)
{
    struct stat state = {};
    return statPath(path, state) && S_ISDIR(state.st_mode);
}

std::optional<FileStamp> fileStamp(const QString &path)
{
    struct stat state = {};
    if (!statPath(path, state) || !S_ISREG(state.st_mode))
        return std::nullopt;
    return FileStamp{
        state.st_dev, state.st_ino, state.st_size, qMax(nanoseconds(state.st_mtim), nanoseconds(state.st_ctim))};
}

QDateTime fileDateTime(const QString &path)
{
    struct stat state = {};
    if (!statPath(path, state) || !S_ISREG(state.st_mode))
        return {};
    return QDateTime::fromMSecsSinceEpoch(nanoseconds(state.st_mtim) / 1'000'000);
}

Result<int> openRegularFile(const QString &path)
{
    // Asked first by name: merely opening a FIFO or a device can wake its other end.
    struct stat state = {};
    if (!statPath(path, state))
        return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot find"), path, errno);
    if (!S_ISREG(state.st_mode))
        return Failure{QCoreApplication::translate("Files", "%1 is not a regular file").arg(displayPath(path))};
    int descriptor = -1;
    do {
        descriptor = ::open(nativePath(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot open"), path, errno);
    // And once more of what was really opened: the name may stand for something else by now.
    if (::fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode)) {
        ::close(descriptor);
        return Failure{QCoreApplication::translate("Files", "%1 is not a regular file").arg(displayPath(path))};
    }
    return descriptor;
}

Result<QByteArray> readFile(const QString &path, qint64 maximumBytes)
{
    const Result<int> opened = openRegularFile(path);
    if (!opened)
        return opened.failure();
    const Descriptor file(*opened);
    struct stat state = {};
    if (::fstat(file.number(), &state) != 0)
        return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot look at"), path, errno);
    const Failure tooLarge{
        QCoreApplication::translate("Files", "%1 is larger than %2 bytes").arg(displayPath(path)).arg(maximumBytes)};
    if (state.st_size > maximumBytes)
        return tooLarge;
    try {
        // One byte more than told, so that the last read can say "end"; a file that grows meanwhile is read on.
        QByteArray bytes(state.st_size + 1, Qt::Uninitialized);
        qint64 filled = 0;
        while (true) {
            const ssize_t count =
                ::read(file.number(), bytes.data() + filled, static_cast<size_t>(bytes.size() - filled));
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot read"), path, errno);
            if (count == 0)
                break;
            filled += count;
            if (filled > maximumBytes)
                return tooLarge;
            if (filled == bytes.size())
                bytes.resize(filled + qMin<qint64>(qMax<qint64>(filled, 4096), maximumBytes - filled + 1));
        }
        bytes.truncate(filled);
        return bytes;
    } catch (const std::bad_alloc &) {
        return Failure{QCoreApplication::translate("Files", "not enough memory to read %1").arg(displayPath(path))};
    }
}

Result<void> forEachEntry(
    const QString &folder, const std::function<void(const char *name, EntryKind kind)> &tell, HiddenEntries hidden)
{
    const FolderStream stream(openFolder(folder));
    if (!stream.folder)
        return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot list"), folder, errno);
    while (true) {
        errno = 0;
        const dirent *entry = ::readdir(stream.folder);
        if (!entry)
            break;
        const bool isItself = qstrcmp(entry->d_name, ".") == 0 || qstrcmp(entry->d_name, "..") == 0;
        if (!isItself && (entry->d_name[0] != '.' || hidden == HiddenEntries::Told))
            tell(entry->d_name, kindOf(stream.folder, entry));
    }
    if (errno != 0)
        return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot list"), folder, errno);
    return {};
}

Result<FolderListing> listFolder(const QString &folder)
{
    FolderListing listing;
    const Result<void> listed = forEachEntry(folder, [&](const char *name, EntryKind kind) {
        if (kind == EntryKind::File)
            listing.files.append(pathFromBytes(name));
        else if (kind == EntryKind::Folder)
            listing.folders.append(pathFromBytes(name));
        else if (kind == EntryKind::FolderLink)
            listing.folderLinks.append(pathFromBytes(name));
    });
    if (!listed)
        return listed.failure();
    for (QStringList *names : {&listing.files, &listing.folders, &listing.folderLinks})
        std::sort(names->begin(), names->end(), nameLess);
    return listing;
}

bool nameLess(const QString &a, const QString &b)
{
    return compareNames(a, b) < 0;
}
