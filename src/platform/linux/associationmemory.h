#pragma once

#include "engine/result.h"

#include <QByteArray>
#include <QMap>
#include <QStringList>
#include <QVector>

/// What was there before the program made types its own: enough to give everything back exactly.
struct AssociationMemory
{
    /// The values of a type's lines, as they were and as they became; no line is no value.
    struct Lines
    {
        QVector<QByteArray> before;
        QVector<QByteArray> written;
        bool operator==(const Lines &) const = default;
    };
    QMap<QByteArray, Lines> types;
    QStringList files; ///< that were made below $XDG_DATA_HOME, relative to it
    bool madeList = false; ///< there was no mimeapps.list
    bool madeGroup = false; ///< there was no group in it
    bool operator==(const AssociationMemory &) const = default;

    bool isEmpty() const { return types.isEmpty() && files.isEmpty(); }

    /// The memory in a file; an empty one when there is none, or when it is not understood.
    static AssociationMemory read(const QString &path);
    /// An empty memory is no file.
    Result<void> write(const QString &path) const;
};
