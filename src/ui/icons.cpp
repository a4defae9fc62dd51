#include "ui/icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QStandardPaths>
#include <QSvgRenderer>

#include <mutex>

// Outside any namespace, as the macro asks: the resources (drawings, tips, help) stand in a static library, where
// nothing else pulls them in.
static void registerResources()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Q_INIT_RESOURCE(icons);
        Q_INIT_RESOURCE(lumora);
    });
}

namespace {

constexpr char fallbackDrawing[] = "lumora-command";
constexpr char ownPrefix[] = "lumora";

QByteArray drawingBytes(const QString &file)
{
    registerResources();
    QFile drawing(file);
    return drawing.open(QIODevice::ReadOnly) ? drawing.readAll() : QByteArray();
}

QByteArray ownDrawing(const QString &name)
{
    if (name == QLatin1String(ownPrefix))
        return drawingBytes(QStringLiteral(":/lumora/icons/lumora.svg"));
    return drawingBytes(QStringLiteral(":/lumora/icons/commands/%1.svg").arg(name));
}

bool paletteIsDark()
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

/// Looks for a drawing of the fall-back theme by its place. The theme's index is not read: that costs more than all the
/// drawings of a toolbar.
QByteArray fallbackThemeDrawing(const QString &name)
{
    const QString theme = paletteIsDark() ? QStringLiteral("breeze-dark") : QStringLiteral("breeze");
    static constexpr const char *groups[] = {
        "actions", "places", "devices", "status", "apps", "mimetypes", "categories"};
    const QStringList folders = QStandardPaths::locateAll(
        QStandardPaths::GenericDataLocation, QStringLiteral("icons/") + theme, QStandardPaths::LocateDirectory);
    for (const QString &folder : folders) {
        for (const char *group : groups) {
            for (const int size : {22, 24, 32, 16}) {
                QByteArray bytes = drawingBytes(
                    QStringLiteral("%1/%2/%3/%4.svg").arg(folder, QLatin1String(group)).arg(size).arg(name));
                if (!bytes.isEmpty())
                    return bytes;
            }
        }
    }
    return {};
}

/// "edit-clear-history" is drawn as "edit-clear" when there is nothing nearer.
QByteArray shortenedOwnDrawing(QString name)
{
    for (qsizetype dash = name.lastIndexOf(QLatin1Char('-')); dash > 0; dash = name.lastIndexOf(QLatin1Char('-'))) {
        name.truncate(dash);
        if (name == QLatin1String(ownPrefix))
            break;
        QByteArray bytes = ownDrawing(name);
        if (!bytes.isEmpty())
            return bytes;
    }
    return {};
}

bool userHasTheme()
{
    const QString theme = QIcon::themeName();
    return !theme.isEmpty() && theme != QLatin1String("hicolor");
}

QColor inkOf(QIcon::Mode mode)
{
    return QGuiApplication::palette().color(mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText);
}

/// Puts the palette's colour in where a drawing says currentColor.
QByteArray inked(QByteArray svg, const QColor &ink)
{
    const QByteArray color = "color=\"" + ink.name().toLatin1() + '"';
    static const QByteArray own = "color=\"#6b7075\"";
    if (svg.contains(own))
        return svg.replace(own, color);
    return svg.replace("<svg ", "<svg " + color + ' ');
}

QPixmap renderedSvg(const QByteArray &svg, QSize size, QIcon::Mode mode)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(inked(svg, inkOf(mode)));
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&pixmap);
    if (mode == QIcon::Disabled)
        painter.setOpacity(0.4);
    renderer.render(&painter, QRectF(QPointF(), QSizeF(size)));
    return pixmap;
}

/// An icon that is found and drawn when it is first painted, and again when the palette or the user's theme has
/// changed.
class LazyIconEngine : public QIconEngine
{
public:
    LazyIconEngine(const QString &name, const QString &file)
        : m_name(name)
        , m_file(file)
    {
    }

    QIconEngine *clone() const override { return new LazyIconEngine(*this); }
    QString key() const override { return QStringLiteral("LumoraIcon"); }
    QString iconName() override { return m_name; }
    bool isNull() override { return false; }
    QSize actualSize(const QSize &size, QIcon::Mode, QIcon::State) override { return size; }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        QPixmap drawn = scaledPixmap((QSizeF(rect.size()) * scale).toSize(), mode, state, scale);
        drawn.setDevicePixelRatio(1);
        painter->drawPixmap(rect, drawn);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        if (size.isEmpty())
            return {};
        resolve();
        if (!m_themeIcon.isNull())
            return m_themeIcon.pixmap((QSizeF(size) / scale).toSize(), scale, mode, state);
        const QString cacheKey = QStringLiteral("LumoraIcon|%1|%2|%3x%4|%5|%6")
                                     .arg(m_name, inkOf(mode).name())
                                     .arg(size.width())
                                     .arg(size.height())
                                     .arg(mode)
                                     .arg(m_generation);
        QPixmap pixmap;
        if (!QPixmapCache::find(cacheKey, &pixmap)) {
            pixmap = renderedSvg(m_svg, size, mode);
            QPixmapCache::insert(cacheKey, pixmap);
        }
        return pixmap;
    }

private:
    void resolve()
    {
        const QString generation =
            QIcon::themeName() + (paletteIsDark() ? QStringLiteral("|dark") : QStringLiteral("|light"));
        if (generation == m_generation)
            return;
        m_generation = generation;
        m_themeIcon = {};
        m_svg = m_file.isEmpty() ? QByteArray() : drawingBytes(m_file);
        if (!m_svg.isEmpty())
            return;
        // The program's own commands are never asked of a theme: its shortened match would give the program's icon.
        if (!m_name.startsWith(QLatin1String(ownPrefix)) && userHasTheme() && QIcon::hasThemeIcon(m_name)) {
            m_themeIcon = QIcon::fromTheme(m_name);
            return;
        }
        m_svg = ownDrawing(m_name);
        if (m_svg.isEmpty())
            m_svg = fallbackThemeDrawing(m_name);
        if (m_svg.isEmpty())
            m_svg = shortenedOwnDrawing(m_name);
        if (m_svg.isEmpty())
            m_svg = ownDrawing(QLatin1String(fallbackDrawing));
    }

    QString m_name;
    QString m_file; ///< a drawing of the program that no theme replaces; empty for names
    QString m_generation; ///< theme and ground for which the two below were found
    QIcon m_themeIcon;
    QByteArray m_svg;
};

}

QIcon themedIcon(const QString &name)
{
    return QIcon(new LazyIconEngine(name, {}));
}

QIcon fileTypeIcon(const QString &code)
{
    registerResources();
    const QString file = QStringLiteral(":/lumora/icons/types/%1.svg").arg(code);
    return !code.contains(QLatin1Char('/')) && QFile::exists(file)
        ? QIcon(new LazyIconEngine(QStringLiteral("type/") + code, file))
        : QIcon();
}

void installIconThemes()
{
    registerResources();
    QGuiApplication::setWindowIcon(themedIcon(QLatin1String(ownPrefix)));
}
