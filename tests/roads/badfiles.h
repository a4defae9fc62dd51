#pragma once

#include "platform/filepath.h"
#include "platform/files.h"
#include "support/support.h"

#include <QBuffer>

#include <sys/stat.h>
#include <unistd.h>

inline constexpr qint64 longest = 5000; ///< milliseconds that one bad file may cost
inline constexpr qint64 mebibyte = 1 << 20;

inline QByteArray imageBytes(QSize size, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!rampImage(size).save(&buffer, format))
        qFatal("cannot write a %s", format);
    return bytes;
}

inline QByteArray bytesOfFile(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, 1 << 30);
    return bytes ? *bytes : QByteArray();
}

inline void link(const char *target, const QString &path)
{
    if (::symlink(target, pathToBytes(path).constData()) != 0)
        qFatal("no link %s", qPrintable(path));
}

inline void makeFifo(const QString &path)
{
    if (::mkfifo(pathToBytes(path).constData(), 0600) != 0)
        qFatal("no FIFO %s", qPrintable(path));
}

/// The names of a folder with nothing left out, to find what an interrupted write left behind.
inline QStringList everyName(const QString &folder)
{
    QStringList names;
    const auto tell = [&](const char *name, EntryKind) { names << pathFromBytes(name); };
    ignore(forEachEntry(folder, tell, HiddenEntries::Told));
    names.sort();
    return names;
}

/// Names with everything that a grammar on the way could take for its own.
inline QStringList hostileNames()
{
    QStringList names;
    for (const char *name : {"double \" quote", "two\nlines", "return\r\n", "#fragment", "100%41", "bar =| bar",
             "comma, \"quoted\", comma", "foreign \xe9\xff", "cut \xe2\x82 sequence", " leading blank", "back\\slash",
             "*** End of List ***", "[File List]", "file:", "%", "-- dashes", "tab\there", "'single'", "$(HOME) `ls`",
             "turned \xe2\x80\xae round", "\xf0\x9f\x8e\xa8 four bytes", "?query=1&b"})
        names << pathFromBytes(name) + QStringLiteral(".png");
    return names;
}
