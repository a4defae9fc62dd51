#include "platform/trash.h"

#include "platform/filepath.h"
#include "platform/folders.h"
#include "platform/linux/filesteps.h"

#include <QCoreApplication>

#include <climits>
#include <cstdlib>
#include <memory>

#include <fcntl.h>

namespace {

constexpr char infoEnding[] = ".trashinfo";
constexpr int mostNames = 100'000;

struct TrashTexts
{
    Q_DECLARE_TR_FUNCTIONS(Trash)
};

Failure problem(const QString &sentence, int error)
{
    return Failure{sentence + QLatin1Char(' ') + qt_error_string(error)};
}

/// A real folder, not a link to one, that is this user's alone to write into.
bool isOwnFolder(const QByteArray &folder)
{
    State state = {};
    return ::lstat(folder.constData(), &state) == 0 && S_ISDIR(state.st_mode) && state.st_uid == ::geteuid();
}

bool makeOwnFolder(const QByteArray &folder)
{
    return (::mkdir(folder.constData(), 0700) == 0 || errno == EEXIST) && isOwnFolder(folder);
}

bool makeTrash(const QByteArray &trash)
{
    return makeOwnFolder(trash) && makeOwnFolder(trash + "/files") && makeOwnFolder(trash + "/info");
}

/// The folder at the top of the file system that a path of a folder lies in, without a separator at its end but for the
/// root.
QByteArray topFolder(QByteArray folder, dev_t device)
{
    while (folder.size() > 1) {
        const QByteArray above = folder.left(qMax<qsizetype>(folder.lastIndexOf('/'), 1));
        State state = {};
        if (::stat(above.constData(), &state) != 0 || state.st_dev != device)
            break;
        folder = above;
    }
    return folder;
}

struct Trash
{
    QByteArray folder; ///< empty when there is none
    QByteArray top; ///< names in it are kept relative to this; empty in the user's own
};

/// Without links on the way; empty when it is not there.
QByteArray resolved(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.constData(), nullptr), &std::free);
    return real ? QByteArray(real.get()) : QByteArray();
}

Trash trashFor(const QByteArray &fileFolder, dev_t device)
{
    State state = {};
    const QByteArray data = nativePath(dataHomeFolder());
    ignore(::mkdir((data + "Trash").constData(), 0700));
    const QByteArray own = resolved(data + "Trash");
    if (!own.isEmpty() && ::stat(own.constData(), &state) == 0 && state.st_dev == device)
        return makeTrash(own) ? Trash{own, {}} : Trash{};
    const QByteArray top = topFolder(fileFolder, device);
    const QByteArray prefix = top == "/" ? top : top + '/';
    const QByteArray user = QByteArray::number(::geteuid());
    const QByteArray shared = prefix + ".Trash";
    if (::lstat(shared.constData(), &state) == 0 && S_ISDIR(state.st_mode) && (state.st_mode & S_ISVTX)
        && makeTrash(shared + '/' + user))
        return {shared + '/' + user, top};
    const QByteArray private_ = prefix + ".Trash-" + user;
    return makeTrash(private_) ? Trash{private_, top} : Trash{};
}

/// A name for the trash: the file's own at first, then with a number in front of its ending. Short enough for the
/// information file's.
QByteArray trashName(const QByteArray &name, int attempt)
{
    const QByteArray number = attempt == 1 ? QByteArray() : '.' + QByteArray::number(attempt);
    const qsizetype dot = name.lastIndexOf('.');
    const QByteArray ending = dot > 0 && name.size() - dot <= 32 ? name.mid(dot) : QByteArray();
    const qsizetype room = NAME_MAX - qsizetype(sizeof infoEnding) - number.size() - ending.size();
    return name.chopped(ending.size()).left(room) + number + ending;
}

/// Writes the information file, which must be there before the file comes. Takes the name for us.
int writeInfo(const QByteArray &path, const QByteArray &original, const QDateTime &now)
{
    Descriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
        return errno;
    const QByteArray text = "[Trash Info]\nPath=" + original.toPercentEncoding("/")
        + "\nDeletionDate=" + now.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() + '\n';
    const SizeSignalBlocked blocked;
    const bool written = ::write(file.number(), text.constData(), size_t(text.size())) == text.size() && file.close();
    if (written)
        return 0;
    const int error = errno;
    ::unlink(path.constData());
    return error == 0 ? ENOSPC : error;
}

QString nameForUser(const QString &path)
{
    return displayPath(FileNameOfPath(path));
}

} // namespace

Result<TrashedFile> trashFile(const QString &path, const QDateTime &now)
{
    const QString sentence = TrashTexts::tr("\"%1\" was not moved to the trash.").arg(nameForUser(path));
    Place file;
    if (!file.open(path) || !file.exists)
        return problem(sentence, ENOENT);
    if (!S_ISREG(file.state.st_mode) && !S_ISLNK(file.state.st_mode))
        return problem(sentence, EINVAL);
    const QByteArray native = nativePath(path);
    const QByteArray folder = resolved(native.left(qMax<qsizetype>(native.lastIndexOf('/'), 1)));
    const Trash trash = trashFor(folder, file.state.st_dev);
    if (trash.folder.isEmpty())
        return Failure{sentence + QLatin1Char(' ') + TrashTexts::tr("There is no trash on its disk.")};
    QByteArray original = native;
    if (!trash.top.isEmpty())
        original = (folder == "/" ? folder : folder + '/').mid(trash.top == "/" ? 1 : trash.top.size() + 1) + file.name;
    for (int attempt = 1; attempt < mostNames; ++attempt) {
        const QByteArray name = trashName(file.name, attempt);
        const QByteArray info = trash.folder + "/info/" + name + infoEnding;
        const QByteArray stored = trash.folder + "/files/" + name;
        int error = writeInfo(info, original, now);
        if (error == 0) {
            error = renameNew(file.folder.number(), file.name, AT_FDCWD, stored);
            if (error == 0)
                return TrashedFile{path, pathFromBytes(stored), pathFromBytes(info)};
            ::unlink(info.constData());
        }
        if (error != EEXIST)
            return problem(sentence, error);
    }
    return problem(sentence, EEXIST);
}

Result<void> restoreTrashedFile(const TrashedFile &file)
{
    const QString sentence = TrashTexts::tr("\"%1\" was not brought back.").arg(nameForUser(file.path));
    const int error = renameNew(AT_FDCWD, nativePath(file.stored), AT_FDCWD, nativePath(file.path));
    if (error == EEXIST)
        return Failure{sentence + QLatin1Char(' ') + TrashTexts::tr("There is another file of that name now.")};
    if (error != 0)
        return problem(sentence, error);
    // Without its file the information is dead; a desktop that cannot remove it passes it over.
    ::unlink(nativePath(file.info).constData());
    return {};
}
