#pragma once

#include "engine/codecs/bytes.h"

#include <QDateTime>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

/// A folder inside an OLE2 compound file that is held in memory: the file's root or a storage below it.
class OleFolder
{
public:
    /// Nothing when the bytes are no compound file. `file` must stay as long as any folder of it.
    static std::optional<OleFolder> open(const QByteArray &file);

    QStringList names() const;
    std::optional<OleFolder> folder(const QString &name) const;
    /// A stream's bytes, as far as they can be read; empty when there is none of that name.
    QByteArray stream(const QString &name) const;

private:
    explicit OleFolder(std::shared_ptr<void> handle, qsizetype fileBytes)
        : m_handle(std::move(handle))
        , m_fileBytes(fileBytes)
    {
    }
    std::shared_ptr<void> m_handle;
    qsizetype m_fileBytes; ///< no stream is longer
};

/// The first section of a property set stream. Layout: the published [MS-OLEPS]. What is missing or of another type
/// reads as nothing.
class OleProperties
{
public:
    OleProperties() = default;
    explicit OleProperties(const QByteArray &stream);

    std::optional<quint32> number(quint32 id) const;
    std::optional<float> real(quint32 id) const;
    QString text(quint32 id) const;
    QDateTime time(quint32 id) const; ///< UTC; invalid when there is none
    Bytes blob(quint32 id) const;

private:
    enum Type {
        Int16 = 2,
        Int32 = 3,
        Real32 = 4,
        UInt16 = 18,
        UInt32 = 19,
        Text = 30,
        WideText = 31,
        Time = 64,
        Blob = 65
    };

    /// Where the value of a property of this type begins; 0 when there is none.
    size_t valueAt(quint32 id, quint32 type) const;
    Bytes part(size_t at, quint64 count) const;

    QByteArray m_stream;
    std::map<quint32, size_t> m_places; ///< of each property's type
};
