#include "platform/filepath.h"
#include "platform/linux/wallpaper/backend.h"

#include <map>

#undef signals
#include <gio/gio.h>

// GNOME, Cinnamon and MATE read the wallpaper from settings; whoever draws it follows a change by itself.
// https://gitlab.gnome.org/GNOME/gsettings-desktop-schemas

namespace {

template <class T, auto release> struct Releaser
{
    void operator()(T *object) const { release(object); }
};
template <class T, auto release> using Owned = std::unique_ptr<T, Releaser<T, release>>;
using Settings = Owned<GSettings, g_object_unref>;
using Schema = Owned<GSettingsSchema, g_settings_schema_unref>;
using SchemaKey = Owned<GSettingsSchemaKey, g_settings_schema_key_unref>;
using Variant = Owned<GVariant, g_variant_unref>;
using Context = Owned<GMainContext, g_main_context_unref>;

struct Key
{
    const char *schema;
    const char *name;
};

/// A desktop and its keys. A key that this version of the desktop does not have is left out, but for the first picture.
struct SettingsDesktop
{
    WallpaperWay way;
    Key pictures[2]; ///< the second for the dark look
    bool uris; ///< pictures are addresses, not paths
    Key placement;
    const char *noPicture; ///< the placement that shows none; null: an empty picture does
    Key slideshow; ///< would change the picture again
};

// clang-format off
constexpr SettingsDesktop settingsDesktops[] = {
    {WallpaperWay::Gnome,
        {{"org.gnome.desktop.background", "picture-uri"}, {"org.gnome.desktop.background", "picture-uri-dark"}}, true,
        {"org.gnome.desktop.background", "picture-options"}, "none", {}},
    {WallpaperWay::Cinnamon,
        {{"org.cinnamon.desktop.background", "picture-uri"}, {}}, true,
        {"org.cinnamon.desktop.background", "picture-options"}, "none",
        {"org.cinnamon.desktop.background.slideshow", "slideshow-enabled"}},
    {WallpaperWay::Mate,
        {{"org.mate.background", "picture-filename"}, {}}, false,
        {"org.mate.background", "picture-options"}, nullptr, {}},
};
// clang-format on

const char *placementText(WallpaperPlacement placement)
{
    switch (placement) {
    case WallpaperPlacement::Centered:
        return "centered";
    case WallpaperPlacement::Stretched:
        return "stretched";
    case WallpaperPlacement::Tiled:
        break;
    }
    return "wallpaper";
}

/// Events of this thread's settings go nowhere, instead of into the program's event loop.
class OwnContext
{
public:
    OwnContext() { g_main_context_push_thread_default(m_context.get()); }
    ~OwnContext() { g_main_context_pop_thread_default(m_context.get()); }
    OwnContext(const OwnContext &) = delete;
    OwnContext &operator=(const OwnContext &) = delete;

private:
    Context m_context{g_main_context_new()};
};

/// Several keys of one or more schemas, changed all at once.
class SettingsChange
{
public:
    bool has(const Key &key) { return key.name && schemaOf(key) && g_settings_schema_has_key(schemaOf(key), key.name); }

    /// The user's own value as text, null when the desktop's default holds.
    QJsonValue read(const Key &key)
    {
        const Variant value(g_settings_get_user_value(settingsOf(key), key.name));
        if (!value)
            return QJsonValue::Null;
        gchar *text = g_variant_print(value.get(), TRUE);
        const QString printed = QString::fromUtf8(text);
        g_free(text);
        return printed;
    }

    /// Writes what read() gave.
    void write(const Key &key, const QJsonValue &value)
    {
        if (value.isNull()) {
            g_settings_reset(settingsOf(key), key.name);
            return;
        }
        const QByteArray text = value.toString().toUtf8();
        const SchemaKey description(g_settings_schema_get_key(schemaOf(key), key.name));
        const GVariantType *type = g_settings_schema_key_get_value_type(description.get());
        const Variant parsed(g_variant_parse(type, text.constData(), nullptr, nullptr, nullptr));
        write(key, parsed.get());
    }
    void write(const Key &key, const QString &text)
    {
        const Variant value(g_variant_ref_sink(g_variant_new_string(text.toUtf8().constData())));
        write(key, value.get());
    }
    void writeFalse(const Key &key)
    {
        const Variant value(g_variant_ref_sink(g_variant_new_boolean(FALSE)));
        write(key, value.get());
    }

    /// Makes the changes and waits until they are stored. All or, when one was refused, none.
    Result<void> apply()
    {
        if (!m_refused.isEmpty())
            return Failure{QStringLiteral("not to be changed: ") + m_refused};
        for (const auto &[name, settings] : m_settings)
            g_settings_apply(settings.get());
        g_settings_sync();
        return {};
    }

private:
    GSettingsSchema *schemaOf(const Key &key)
    {
        Schema &schema = m_schemas[key.schema];
        GSettingsSchemaSource *source = g_settings_schema_source_get_default();
        if (!schema && source)
            schema.reset(g_settings_schema_source_lookup(source, key.schema, TRUE));
        return schema.get();
    }
    GSettings *settingsOf(const Key &key)
    {
        Settings &settings = m_settings[key.schema];
        if (!settings) {
            // By the schema that was found: asking for one that is not there would end the program.
            settings.reset(g_settings_new_full(schemaOf(key), nullptr, nullptr));
            g_settings_delay(settings.get());
        }
        return settings.get();
    }
    void write(const Key &key, GVariant *value)
    {
        const SchemaKey description(g_settings_schema_get_key(schemaOf(key), key.name));
        const bool possible = value && g_settings_is_writable(settingsOf(key), key.name)
            && g_variant_is_of_type(value, g_settings_schema_key_get_value_type(description.get()))
            && g_settings_schema_key_range_check(description.get(), value);
        if (!possible || !g_settings_set_value(settingsOf(key), key.name, value))
            m_refused = QString::fromLatin1(key.name);
    }

    std::map<QByteArray, Schema> m_schemas;
    std::map<QByteArray, Settings> m_settings;
    QString m_refused;
};

class SettingsBackend final : public WallpaperBackend
{
public:
    explicit SettingsBackend(const SettingsDesktop &desktop)
        : m_desktop(desktop)
    {
    }

    bool isThere() override
    {
        const OwnContext context;
        SettingsChange settings;
        return settings.has(m_desktop.pictures[0]) && settings.has(m_desktop.placement);
    }

    QJsonObject current() override
    {
        const OwnContext context;
        SettingsChange settings;
        QJsonObject values;
        for (const Key &key : keys(settings))
            values.insert(QLatin1String(key.name), settings.read(key));
        return {{QStringLiteral("desktop"), values}};
    }

    Result<QJsonObject> set(const QString &picture, WallpaperPlacement placement) override
    {
        const QString text = m_desktop.uris ? fileUri(picture) : picture;
        return change([&](SettingsChange &settings) {
            for (const Key &key : m_desktop.pictures) {
                if (settings.has(key))
                    settings.write(key, text);
            }
            settings.write(m_desktop.placement, QString::fromLatin1(placementText(placement)));
        });
    }

    Result<QJsonObject> clear() override
    {
        return change([&](SettingsChange &settings) {
            if (m_desktop.noPicture)
                settings.write(m_desktop.placement, QString::fromLatin1(m_desktop.noPicture));
            else
                settings.write(m_desktop.pictures[0], QString());
        });
    }

    Result<void> restore(const QJsonObject &before) override
    {
        const OwnContext context;
        SettingsChange settings;
        const QJsonObject values = before.value(QLatin1String("desktop")).toObject();
        for (const Key &key : keys(settings)) {
            if (values.contains(QLatin1String(key.name)))
                settings.write(key, values.value(QLatin1String(key.name)));
        }
        return settings.apply();
    }

private:
    QVector<Key> keys(SettingsChange &settings) const
    {
        QVector<Key> present;
        for (const Key &key :
            {m_desktop.pictures[0], m_desktop.pictures[1], m_desktop.placement, m_desktop.slideshow}) {
            if (settings.has(key))
                present.append(key);
        }
        return present;
    }

    template <class Write> Result<QJsonObject> change(Write write)
    {
        {
            const OwnContext context;
            SettingsChange settings;
            write(settings);
            if (settings.has(m_desktop.slideshow))
                settings.writeFalse(m_desktop.slideshow);
            if (const Result<void> applied = settings.apply(); !applied)
                return applied.failure();
        }
        return current();
    }

    const SettingsDesktop &m_desktop;
};

}

std::unique_ptr<WallpaperBackend> makeSettingsBackend(WallpaperWay way)
{
    for (const SettingsDesktop &desktop : settingsDesktops) {
        if (desktop.way == way)
            return std::make_unique<SettingsBackend>(desktop);
    }
    return nullptr;
}
