#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// ASX play lists: XML-like text with `<ref href="...">` and `<entryref href="...">` in any case, or lines
/// "Ref1=address". Encoding: by byte-order mark (UTF-8, UTF-16), else UTF-8, else Latin-1.

/// The local files a list names, in its order, as absolute paths; `folder` is the list's own and ends in a separator.
/// Addresses on a network are left out: a play list must not make the program call anybody.
QStringList asxEntries(const QByteArray &bytes, const QString &folder);

bool isAsxName(const QString &path);

/// The files of the list at `path`, with lists named in it put in their place: three deep at most, 1000 entries at
/// most. Reads files, so it can take its time on a mount that does not answer.
QStringList readAsx(const QString &path);
