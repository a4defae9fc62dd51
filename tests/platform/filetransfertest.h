#pragma once

#include "platform/filepath.h"
#include "platform/filetransfer.h"
#include "support/contents.h"

#include <QRandomGenerator>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using Kind = FileOutcome::Kind;

inline struct stat stateOf(const QString &path)
{
    struct stat state = {};
    if (::lstat(pathToBytes(path).constData(), &state) != 0)
        state.st_mode = 0;
    return state;
}

inline QByteArray noise(int bytes)
{
    QByteArray all(bytes, '\0');
    for (char &byte : all)
        byte = static_cast<char>(QRandomGenerator::global()->bounded(256));
    return all;
}

/// Moves and collects what was told, as "0 done".
inline QStringList moved(const QVector<MoveOrder> &orders, const std::function<bool(int)> &again = {})
{
    QStringList told;
    moveFiles(orders, [&](int order, const FileOutcome &outcome) {
        static const char *const words[] = {"done", "access", "failed"};
        told.append(QStringLiteral("%1 %2").arg(order).arg(QLatin1String(words[int(outcome.kind)])));
        return !outcome && again && again(order);
    });
    return told;
}

/// What the tests of copies and moves share: a folder of their own with files that they write.
class FileTransferTest : public QObject
{
protected:
    void makeFolder()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        ::chmod(qPrintable(m_folder->path()), 0777);
    }
    QString path(const char *name) const { return m_folder->path() + QLatin1Char('/') + QString::fromUtf8(name); }
    QString write(const char *name, const QByteArray &bytes, mode_t mode = 0644) const
    {
        const QString file = path(name);
        QDir().mkpath(SplitFilePath(file).folder);
        ignore(writeFileAtomically(file, bytes));
        ::chmod(pathToBytes(file).constData(), mode);
        return file;
    }
    /// A file with everything that is to be kept.
    QString writeRich(const QByteArray &bytes) const
    {
        const QString file = write("rich", bytes, 0640);
        const QByteArray native = pathToBytes(file);
        ::setxattr(native.constData(), "user.note", "kept", 4, 0);
        const timespec times[] = {{1'000'000'000, 5}, {1'100'000'000, 123'456'789}};
        ::utimensat(AT_FDCWD, native.constData(), times, 0);
        return file;
    }
    void verifyRich(const QString &file, const QByteArray &bytes) const
    {
        const struct stat state = stateOf(file);
        QCOMPARE(contents(file), bytes);
        QCOMPARE(state.st_mode & 07777, mode_t(0640));
        QCOMPARE(qint64(state.st_mtim.tv_sec), qint64(1'100'000'000));
        QCOMPARE(qint64(state.st_mtim.tv_nsec), qint64(123'456'789));
        char note[8] = {};
        const ssize_t length = ::getxattr(pathToBytes(file).constData(), "user.note", note, sizeof note);
        if (length >= 0 || errno != EOPNOTSUPP)
            QCOMPARE(QByteArray(note, qMax<qsizetype>(length, 0)), QByteArray("kept"));
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};
