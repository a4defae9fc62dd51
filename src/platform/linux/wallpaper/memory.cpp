#include "platform/linux/wallpaper/memory.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <unistd.h>

namespace {

constexpr QLatin1String beforeKey("before");
constexpr QLatin1String oursKey("ours");
constexpr qint64 largestMemory = 1 << 20;

/// Whether any text in the value names a file of the folder, as a path or as an address.
bool mentions(const QJsonValue &value, const QString &folder)
{
    if (value.isString())
        return value.toString().contains(folder) || value.toString().contains(fileUri(folder));
    const auto inList = [&folder](const auto &list) {
        return std::any_of(
            list.begin(), list.end(), [&](const QJsonValue &member) { return mentions(member, folder); });
    };
    if (value.isArray())
        return inList(value.toArray());
    return value.isObject() && inList(value.toObject());
}

}

WallpaperMemory::WallpaperMemory(const QString &path, const QString &copyFolder)
    : m_path(path)
    , m_copyFolder(copyFolder)
{
    if (const Result<QByteArray> bytes = readFile(path, largestMemory))
        m_state = QJsonDocument::fromJson(*bytes).object();
}

QJsonObject WallpaperMemory::before() const
{
    return m_state.value(beforeKey).toObject();
}

bool WallpaperMemory::isOurs(const QString &part, const QJsonValue &value) const
{
    const QJsonObject ours = m_state.value(oursKey).toObject();
    return (ours.contains(part) && ours.value(part) == value) || mentions(value, m_copyFolder);
}

Result<void> WallpaperMemory::remember(const QJsonObject &current)
{
    QJsonObject remembered = before();
    for (auto part = current.begin(); part != current.end(); ++part) {
        if (!isOurs(part.key(), part.value()))
            remembered.insert(part.key(), part.value());
    }
    if (remembered == before())
        return {};
    QJsonObject state = m_state;
    state.insert(beforeKey, remembered);
    return save(state);
}

Result<void> WallpaperMemory::rememberOurs(const QJsonObject &ours)
{
    // Nothing to bring back: a file would promise it.
    if (before().isEmpty() || m_state.value(oursKey).toObject() == ours)
        return {};
    QJsonObject state = m_state;
    state.insert(oursKey, ours);
    return save(state);
}

Result<void> WallpaperMemory::save(const QJsonObject &state)
{
    const Result<void> written = writeFileAtomically(m_path, QJsonDocument(state).toJson());
    if (written)
        m_state = state;
    return written;
}

void WallpaperMemory::forget()
{
    ::unlink(pathToBytes(m_path).constData());
    m_state = {};
}
