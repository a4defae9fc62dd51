// The folder search beside `find` with the same patterns, in the same run and in turns, on a tree made for it.
//   bench_foldersearch [files] [folders] [rounds]
// Prints the medians and their ratio; 1 is returned when both do not find the same number of files.

#include "viewer/foldersearch.h"
#include "platform/filepath.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

EnabledFileTypes everyFileType()
{
    EnabledFileTypes enabled;
    enabled.fileTypes.set();
    enabled.avFileTypes.set();
    enabled.polyFileTypes.set();
    return enabled;
}

/// Folders three levels deep, 20 files in each, two of three of an enabled type.
bool makeTree(const QString &base, int files, int folders)
{
    static constexpr const char *extensions[] = {"jpg", "PNG", "txt", "tif", "mp3", "xmp", "gif", "Jpeg", "db"};
    for (int folder = 0; folder < folders; ++folder) {
        const QString path = QStringLiteral("%1/a%2/b%3/c%4").arg(base).arg(folder % 17).arg(folder % 193).arg(folder);
        if (!QDir().mkpath(path))
            return false;
        for (int file = folder; file < files; file += folders) {
            const QString name =
                QStringLiteral("%1/DSC_%2.%3").arg(path).arg(file).arg(QLatin1String(extensions[file / folders % 9]));
            const int made = ::open(pathToBytes(name).constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
            if (made < 0)
                return false;
            ::close(made);
        }
    }
    return true;
}

QStringList findArguments(const QString &base, const FilePatterns &patterns)
{
    QStringList arguments = {base, QStringLiteral("-type"), QStringLiteral("f"), QStringLiteral("(")};
    const QString all = patterns.picture + QLatin1Char(';') + patterns.motion + QLatin1Char(';') + patterns.poly;
    const QStringList each = all.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString &pattern : each) {
        if (arguments.size() > 4)
            arguments << QStringLiteral("-o");
        arguments << QStringLiteral("-iname") << pattern;
    }
    return arguments << QStringLiteral(")");
}

/// Milliseconds, and the number of files found; -1 when the program cannot be run.
double timeFind(const QStringList &arguments, qsizetype &found)
{
    QElapsedTimer timer;
    timer.start();
    QProcess find;
    find.start(QStringLiteral("find"), arguments);
    if (!find.waitForFinished(-1) || find.exitCode() != 0)
        return -1;
    found = find.readAllStandardOutput().count('\n');
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double timeWalk(const QString &base, const FilePatterns &patterns, qsizetype &found)
{
    QElapsedTimer timer;
    timer.start();
    QStringList paths;
    FolderWalk walk;
    walk.found = [&](const QStringList &some) {
        paths += some;
        return true;
    };
    walkFolders(base, patterns, walk);
    found = paths.size();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const auto argument = [&](int index, int otherwise) {
        const int value = application.arguments().value(index).toInt();
        return value > 0 ? value : otherwise;
    };
    const int files = argument(1, 100'000);
    const int folders = argument(2, 5'000);
    const int rounds = argument(3, 11);
    const QTemporaryDir tree;
    if (!tree.isValid() || !makeTree(tree.path(), files, folders)) {
        std::fprintf(stderr, "cannot make the tree\n");
        return 1;
    }
    const FilePatterns patterns = filePatterns(everyFileType());
    const QStringList arguments = findArguments(tree.path(), patterns);
    // Sixty patterns cost find more than the disk does: its bare listing says what the disk alone takes.
    const QStringList bareArguments = arguments.mid(0, 3);
    std::vector<double> findTimes;
    std::vector<double> bareTimes;
    std::vector<double> walkTimes;
    qsizetype byFind = 0;
    qsizetype byBare = 0;
    qsizetype byWalk = 0;
    for (int round = 0; round < rounds; ++round) {
        findTimes.push_back(timeFind(arguments, byFind));
        bareTimes.push_back(timeFind(bareArguments, byBare));
        walkTimes.push_back(timeWalk(tree.path(), patterns, byWalk));
    }
    std::printf("%d files in %d folders, %d rounds\n", files, folders, rounds);
    std::printf("find         %8.1f ms, %lld found\n", median(findTimes), static_cast<long long>(byFind));
    std::printf("find, bare   %8.1f ms, %lld found\n", median(bareTimes), static_cast<long long>(byBare));
    std::printf("walkFolders  %8.1f ms, %lld found\n", median(walkTimes), static_cast<long long>(byWalk));
    std::printf("ratio        %8.2f, to the bare listing %.2f\n", median(walkTimes) / median(findTimes),
        median(walkTimes) / median(bareTimes));
    return byFind == byWalk && median(findTimes) > 0 ? 0 : 1;
}
