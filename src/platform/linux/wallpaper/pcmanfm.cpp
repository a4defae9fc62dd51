#include "platform/filepath.h"
#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/command.h"

#include <QSettings>
#include <QStandardPaths>

#undef signals
#include <glib.h>

// The desktops of LXQt and LXDE are painted by their file managers, which take a wallpaper by a command and keep it in
// their settings.

namespace {

struct Shown
{
    QString picture;
    QString mode;
};

QString configPath(const char *below)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QLatin1Char('/')
        + QLatin1String(below);
}

Shown shownByLxqt()
{
    const QSettings settings(configPath("pcmanfm-qt/lxqt/settings.conf"), QSettings::IniFormat);
    return {settings.value(QStringLiteral("Desktop/Wallpaper")).toString(),
        settings.value(QStringLiteral("Desktop/WallpaperMode")).toString()};
}

QString keyFileText(GKeyFile *file, const char *key)
{
    gchar *text = g_key_file_get_string(file, "*", key, nullptr);
    const QString value = text ? pathFromBytes(text) : QString();
    g_free(text);
    return value;
}

Shown shownByLxde()
{
    Shown shown;
    // The profile is called after the session.
    const QByteArray session = qgetenv("DESKTOP_SESSION");
    const QByteArray profile = session.isEmpty() || session.contains('/') ? QByteArray("LXDE") : session;
    GKeyFile *file = g_key_file_new();
    const QByteArray path = pathToBytes(configPath("pcmanfm/" + profile + "/desktop-items-0.conf"));
    if (g_key_file_load_from_file(file, path.constData(), G_KEY_FILE_NONE, nullptr))
        shown = {keyFileText(file, "wallpaper"), keyFileText(file, "wallpaper_mode")};
    g_key_file_free(file);
    return shown;
}

QString modeText(WallpaperPlacement placement)
{
    switch (placement) {
    case WallpaperPlacement::Centered:
        return QStringLiteral("center");
    case WallpaperPlacement::Tiled:
        return QStringLiteral("tile");
    case WallpaperPlacement::Stretched:
        break;
    }
    return QStringLiteral("stretch");
}

constexpr QLatin1String noPicture("color");
constexpr QLatin1String noneInSettings("none"); ///< how one of them writes the same down

class PcmanfmBackend final : public WallpaperBackend
{
public:
    explicit PcmanfmBackend(bool lxqt)
        : m_lxqt(lxqt)
        , m_program(lxqt ? QStringLiteral("pcmanfm-qt") : QStringLiteral("pcmanfm"))
    {
    }

    bool isThere() override { return command::isInstalled(m_program); }

    QJsonObject current() override
    {
        const Shown shown = shownNow();
        return shown.mode.isEmpty() ? QJsonObject() : told(shown);
    }

    Result<QJsonObject> set(const QString &picture, WallpaperPlacement placement) override
    {
        return show({picture, modeText(placement)});
    }

    /// The file manager keeps the name of the picture that it does not show any more.
    Result<QJsonObject> clear() override
    {
        const QString picture = shownNow().picture;
        if (const auto shown = show({QString(), QString(noPicture)}); !shown)
            return shown.failure();
        return told({picture, m_lxqt ? QString(noneInSettings) : QString(noPicture)});
    }

    Result<void> restore(const QJsonObject &before) override
    {
        const QJsonObject values = before.value(QLatin1String("desktop")).toObject();
        const auto shown =
            show({values.value(QLatin1String("picture")).toString(), values.value(QLatin1String("mode")).toString()});
        if (!shown)
            return shown.failure();
        return {};
    }

private:
    Shown shownNow() const { return m_lxqt ? shownByLxqt() : shownByLxde(); }

    static QJsonObject told(const Shown &shown)
    {
        return {{QStringLiteral("desktop"),
            QJsonObject{{QStringLiteral("picture"), shown.picture}, {QStringLiteral("mode"), shown.mode}}}};
    }

    Result<QJsonObject> show(const Shown &shown) const
    {
        QStringList arguments;
        if (!shown.picture.isEmpty())
            arguments.append(QStringLiteral("--set-wallpaper=") + shown.picture);
        const QString mode = shown.mode == noneInSettings ? QString(noPicture) : shown.mode;
        arguments.append(QStringLiteral("--wallpaper-mode=") + mode);
        if (const Result<void> run = command::run(m_program, arguments); !run)
            return run.failure();
        return told(shown);
    }

    bool m_lxqt;
    QString m_program;
};

}

std::unique_ptr<WallpaperBackend> makePcmanfmBackend(WallpaperWay way)
{
    return std::make_unique<PcmanfmBackend>(way == WallpaperWay::Lxqt);
}
