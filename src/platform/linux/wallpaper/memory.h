#pragma once

#include "engine/result.h"

#include <QJsonObject>
#include <QString>

/// What hung on one desktop before the program changed it, kept in a file, by the parts that a backend tells.
///
/// A part is remembered anew whenever something hangs there that is not the program's: a picture out of its folder, or
/// what it was told to have left there.
class WallpaperMemory
{
public:
    WallpaperMemory(const QString &path, const QString &copyFolder);

    QJsonObject before() const;
    /// To be called before a change, with what hangs there.
    Result<void> remember(const QJsonObject &current);
    /// To be called after a change, with what hangs there now.
    Result<void> rememberOurs(const QJsonObject &ours);
    void forget();

private:
    bool isOurs(const QString &part, const QJsonValue &value) const;
    Result<void> save(const QJsonObject &state);

    QString m_path;
    QString m_copyFolder;
    QJsonObject m_state;
};
