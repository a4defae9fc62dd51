#pragma once

#include "platform/files.h"
#include "platform/folders.h"

#include <QDir>

/// What a file holds; the word "unreadable" when there is none.
inline QByteArray contents(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, 256 << 20);
    return bytes ? *bytes : QByteArray("unreadable");
}

/// Hidden files and dead links too.
inline QStringList allNames(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

inline QString namesIn(const QString &folder)
{
    return allNames(folder).join(QLatin1Char(' '));
}

/// What the operations log of this home tells, without the times: "copied /to/a /from/a".
inline QStringList logged()
{
    QStringList lines = QString::fromUtf8(contents(stateFolder() + QStringLiteral("operations.log")))
                            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString &line : lines)
        line = line.section(QLatin1Char('\t'), 1).replace(QLatin1Char('\t'), QLatin1Char(' ')).trimmed();
    return lines;
}
