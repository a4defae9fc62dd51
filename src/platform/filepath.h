#pragma once

#include <QByteArray>
#include <QString>

/// Paths as text. A path is whatever bytes the file system holds; as text it is UTF-8 decoded, and each byte that is
/// not UTF-8 stands as the lone surrogate U+DC80 + (byte - 0x80), so that text and bytes convert without loss. Qt's own
/// QFile::encodeName loses such bytes: open files through platform/files.h.

QString pathFromBytes(const QByteArray &bytes);
QByteArray pathToBytes(const QString &path);

/// True when the path holds bytes that are not UTF-8.
bool hasForeignBytes(const QString &path);
/// For display: foreign bytes become U+FFFD, line breaks and other control characters a visible sign.
QString displayPath(const QString &path);

/// The path as a percent-encoded file:// URI, and back. The second gives an empty text for anything but a local file
/// URI.
QString fileUri(const QString &path);
QString pathFromFileUri(const QString &uri);

/// What follows the last separator; the whole text when there is none.
QString FileNameOfPath(const QString &path);

struct PathParts
{
    QString drive; ///< always empty on this platform
    QString folder; ///< with the separator at its end
    QString file;
};
PathParts SplitFilePath(const QString &path);

/// Absolute, without "." and ".." and doubled separators; links stay as they are.
QString absolutePath(const QString &path, const QString &currentFolder);
