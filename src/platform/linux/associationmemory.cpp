#include "platform/linux/associationmemory.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace {

constexpr qint64 largestMemory = 32 * 1024 * 1024;

// Bytes of any kind stand there as the characters of the same numbers.
QJsonArray fromBytes(const QVector<QByteArray> &values)
{
    QJsonArray array;
    for (const QByteArray &value : values)
        array.append(QString::fromLatin1(value));
    return array;
}

// A line end would make other lines of a value; nobody has written one there.
QVector<QByteArray> toBytes(const QJsonValue &values)
{
    QVector<QByteArray> bytes;
    const QJsonArray array = values.toArray();
    for (const QJsonValue &value : array)
        bytes.append(value.toString().toLatin1().split('\n').constFirst());
    return bytes;
}

} // namespace

AssociationMemory AssociationMemory::read(const QString &path)
{
    AssociationMemory memory;
    const Result<QByteArray> text = readFile(path, largestMemory);
    if (!text)
        return memory;
    const QJsonObject object = QJsonDocument::fromJson(*text).object();
    const QJsonObject types = object.value(QLatin1String("types")).toObject();
    for (auto type = types.begin(); type != types.end(); ++type) {
        const QJsonObject lines = type.value().toObject();
        memory.types.insert(type.key().toLatin1(),
            {toBytes(lines.value(QLatin1String("before"))), toBytes(lines.value(QLatin1String("written")))});
    }
    const QJsonArray files = object.value(QLatin1String("files")).toArray();
    for (const QJsonValue &file : files)
        memory.files.append(file.toString());
    memory.madeList = object.value(QLatin1String("madeList")).toBool();
    memory.madeGroup = object.value(QLatin1String("madeGroup")).toBool();
    return memory;
}

Result<void> AssociationMemory::write(const QString &path) const
{
    if (isEmpty()) {
        if (::unlink(pathToBytes(path).constData()) == 0 || errno == ENOENT)
            return {};
        return Failure{QStringLiteral("%1: %2").arg(displayPath(path), QString::fromLocal8Bit(std::strerror(errno)))};
    }
    QJsonObject lines;
    for (auto type = types.begin(); type != types.end(); ++type)
        lines.insert(QString::fromLatin1(type.key()),
            QJsonObject{{QStringLiteral("before"), fromBytes(type->before)},
                {QStringLiteral("written"), fromBytes(type->written)}});
    const QJsonObject object{{QStringLiteral("types"), lines},
        {QStringLiteral("files"), QJsonArray::fromStringList(files)}, {QStringLiteral("madeList"), madeList},
        {QStringLiteral("madeGroup"), madeGroup}};
    return writeFileAtomically(path, QJsonDocument(object).toJson());
}
