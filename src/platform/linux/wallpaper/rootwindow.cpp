#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/screenpicture.h"
#include "platform/linux/wallpaper/xserver.h"

#include <QBuffer>
#include <QImageWriter>

// Where nobody else paints the desktop, the wallpaper is the background of the X root window. By convention its pixmap
// is named in the property _XROOTPMAP_ID, from which translucent windows and compositors take it, and it outlives the
// client that made it. ESETROOT_PMAP_ID names it once more: who replaces it frees it by ending what is left of that
// client.

namespace {

constexpr char pixmapProperty[] = "_XROOTPMAP_ID";
constexpr char freeableProperty[] = "ESETROOT_PMAP_ID";
/// The pixmap that this program made, or 0 when it took the picture away.
constexpr char oursProperty[] = "_LUMORA_ROOTPMAP_ID";

constexpr QLatin1String part("root");
constexpr QLatin1String pictureKey("picture");
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
        const auto ours = server.rootProperty(oursProperty, XCB_ATOM_PIXMAP);
        if (ours && *ours == pixmap.value_or(XCB_NONE))
            return {};
        QJsonObject values;
        if (const Result<QImage> pixels = pixmap ? server.pixelsOf(*pixmap) : Failure{}; pixels) {
            QBuffer bytes;
            bytes.open(QIODevice::WriteOnly);
            QImageWriter writer(&bytes, "png");
            if (writer.write(*pixels) && writeFileAtomically(m_savedPicture, bytes.data()))
                values.insert(pictureKey, m_savedPicture);
        }
        return {{part, values}};
    }

    Result<QJsonObject> set(const QString &, WallpaperPlacement placement) override
    {
        const Result<QImage> pixels = m_job.pixels();
        if (!pixels)
            return pixels.failure();
        XServer server;
        const QImage screens = pictureOnScreens(*pixels, server.size(), server.monitors(), placement);
        if (const Result<void> shown = show(server, screens, true); !shown)
            return shown.failure();
        return QJsonObject();
    }

    Result<QJsonObject> clear() override
    {
        XServer server;
        replacePixmap(server, XCB_NONE);
        server.setRootProperty(oursProperty, XCB_ATOM_PIXMAP, XCB_NONE);
        server.showBlackOnRoot();
        server.finish();
        return QJsonObject();
    }

    Result<void> restore(const QJsonObject &before) override
    {
        XServer server;
        const QString picture = before.value(part).toObject().value(pictureKey).toString();
        if (picture.isEmpty()) {
            replacePixmap(server, XCB_NONE);
            server.deleteRootProperty(oursProperty);
            server.showOnRoot(XCB_NONE);
            server.finish();
            return {};
        }
        const Result<QByteArray> bytes = readFile(picture, largestPicture);
        const QImage pixels = bytes ? QImage::fromData(*bytes, "png") : QImage();
        if (pixels.isNull())
            return Failure{QStringLiteral("the picture of before cannot be read")};
        const Result<void> shown = show(server, pixels, false);
        ::unlink(pathToBytes(picture).constData());
        return shown;
    }

private:
    Result<void> show(XServer &server, const QImage &image, bool ours)
    {
        const Result<xcb_pixmap_t> pixmap = server.makePixmap(image);
        if (!pixmap)
            return pixmap.failure();
        replacePixmap(server, *pixmap);
        if (ours)
            server.setRootProperty(oursProperty, XCB_ATOM_PIXMAP, *pixmap);
        else
            server.deleteRootProperty(oursProperty);
        server.showOnRoot(*pixmap);
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
