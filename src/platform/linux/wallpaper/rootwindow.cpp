#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/screenpicture.h"
#include "platform/linux/wallpaper/xserver.h"

#include <QBuffer>
#include <QColor>
#include <QImageWriter>

#include <unistd.h>

// Where nobody else paints the desktop, the wallpaper is the background of the X root window. By convention its pixmap
// is named in the property _XROOTPMAP_ID, from which translucent windows and compositors take it, and it outlives the
// client that made it. ESETROOT_PMAP_ID names it once more: who replaces it frees it by ending what is left of that
// client.

namespace {

constexpr char pixmapProperty[] = "_XROOTPMAP_ID";
constexpr char freeableProperty[] = "ESETROOT_PMAP_ID";
/// The pixmap that this program made, or 0 when it took the picture away.
constexpr char oursProperty[] = "_LUMORA_ROOTPMAP_ID";
/// The colour that the desktop had before, which stays around and behind the pictures.
constexpr char colorProperty[] = "_LUMORA_ROOT_COLOR";

constexpr QLatin1String part("root");
constexpr QLatin1String pictureKey("picture");
constexpr QLatin1String colorKey("color");
constexpr qint64 largestPicture = 1 << 30;

class RootWindowBackend final : public WallpaperBackend
{
public:
    explicit RootWindowBackend(const WallpaperJob &job)
        : m_job(job)
        , m_savedPicture(job.stateFolder + QStringLiteral("wallpaper-before-root.png"))
    {
    }

    bool isThere() override { return XServer().isConnected(); }

    bool showsFiles() const override { return false; }

    /// The pixels are kept at once: the pixmap goes with the change.
    QJsonObject current() override
    {
        XServer server;
        const auto pixmap = server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP);
        if (isOurs(server))
            return {};
        if (!pixmap)
            return {{part, QJsonObject{{colorKey, QColor(server.colorOfRoot()).name()}}}};
        const Result<QImage> pixels = server.pixelsOf(*pixmap);
        QBuffer bytes;
        bytes.open(QIODevice::WriteOnly);
        if (!pixels || !QImageWriter(&bytes, "png").write(*pixels)
            || !writeFileAtomically(m_savedPicture, bytes.data()))
            return {};
        return {{part, QJsonObject{{pictureKey, m_savedPicture}}}};
    }

    Result<QJsonObject> set(const QString &, WallpaperPlacement placement) override
    {
        const Result<QImage> pixels = m_job.pixels();
        if (!pixels)
            return pixels.failure();
        XServer server;
        const QRgb ground = keptColor(server);
        const QImage screens = pictureOnScreens(*pixels, server.size(), server.monitors(), placement, ground);
        if (const Result<void> shown = show(server, screens, true); !shown)
            return shown.failure();
        return QJsonObject();
    }

    Result<QJsonObject> clear() override
    {
        XServer server;
        const QRgb color = keptColor(server);
        replacePixmap(server, XCB_NONE);
        server.setRootProperty(oursProperty, XCB_ATOM_PIXMAP, XCB_NONE);
        server.showColorOnRoot(color);
        server.finish();
        return QJsonObject();
    }

    Result<void> restore(const QJsonObject &before) override
    {
        XServer server;
        const QJsonObject values = before.value(part).toObject();
        if (values.contains(colorKey)) {
            replacePixmap(server, XCB_NONE);
            forgetOurs(server);
            server.showColorOnRoot(QColor(values.value(colorKey).toString()).rgb());
            server.finish();
            return {};
        }
        const QString picture = values.value(pictureKey).toString();
        const Result<QByteArray> bytes = readFile(picture, largestPicture);
        const QImage pixels = bytes ? QImage::fromData(*bytes, "png") : QImage();
        if (pixels.isNull())
            return Failure{QStringLiteral("the picture of before cannot be read")};
        const Result<void> shown = show(server, pixels, false);
        ::unlink(pathToBytes(picture).constData());
        return shown;
    }

private:
    static bool isOurs(const XServer &server)
    {
        const auto ours = server.rootProperty(oursProperty, XCB_ATOM_PIXMAP);
        return ours && *ours == server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP).value_or(XCB_NONE);
    }

    static void forgetOurs(XServer &server)
    {
        server.deleteRootProperty(oursProperty);
        server.deleteRootProperty(colorProperty);
    }

    /// The desktop's own colour, kept from before the first picture of this program; black behind other pictures.
    static QRgb keptColor(XServer &server)
    {
        QRgb color = server.rootProperty(colorProperty, XCB_ATOM_CARDINAL).value_or(qRgb(0, 0, 0));
        if (!isOurs(server)) {
            const bool picture = server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP).has_value();
            color = picture ? qRgb(0, 0, 0) : server.colorOfRoot();
            server.setRootProperty(colorProperty, XCB_ATOM_CARDINAL, color);
        }
        return color;
    }

    Result<void> show(XServer &server, const QImage &image, bool ours)
    {
        const Result<xcb_pixmap_t> pixmap = server.makePixmap(image);
        if (!pixmap)
            return pixmap.failure();
        replacePixmap(server, *pixmap);
        if (ours)
            server.setRootProperty(oursProperty, XCB_ATOM_PIXMAP, *pixmap);
        else
            forgetOurs(server);
        server.showPixmapOnRoot(*pixmap);
        // The pixmap stays when this connection, which has made nothing else, is closed.
        xcb_set_close_down_mode(server.connection(), XCB_CLOSE_DOWN_RETAIN_PERMANENT);
        server.finish();
        return {};
    }

    /// Puts a pixmap, or none, into both properties and frees the one before, if that may be done.
    static void replacePixmap(XServer &server, xcb_pixmap_t pixmap)
    {
        // Nobody may see the one property without the other, or use the old pixmap while it goes.
        xcb_grab_server(server.connection());
        const auto old = server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP);
        const auto freeable = server.rootProperty(freeableProperty, XCB_ATOM_PIXMAP);
        for (const char *name : {pixmapProperty, freeableProperty}) {
            if (pixmap != XCB_NONE)
                server.setRootProperty(name, XCB_ATOM_PIXMAP, pixmap);
            else
                server.deleteRootProperty(name);
        }
        if (old && freeable && *old == *freeable && *old != XCB_NONE)
            xcb_kill_client(server.connection(), *old);
        xcb_ungrab_server(server.connection());
    }

    const WallpaperJob &m_job;
    QString m_savedPicture;
};

}

std::unique_ptr<WallpaperBackend> makeRootWindowBackend(const WallpaperJob &job)
{
    return std::make_unique<RootWindowBackend>(job);
}
