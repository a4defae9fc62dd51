#include "platform/linux/wallpaper/xserver.h"
#include "platform/wallpapertest.h"

#include <QProcess>
#include <QStandardPaths>

#include <xcb/randr.h>
#include <xcb/xcbext.h>

namespace {

constexpr QSize desktopSize(700, 400);
const QRect leftMonitor(0, 0, 400, 300);
const QRect rightMonitor(400, 0, 300, 400);

/// A picture without any symmetry: four quarters.
QImage quarters(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const bool right = x >= size.width() / 2;
            const bool low = y >= size.height() / 2;
            image.setPixel(x, y, low ? (right ? 0xffffff00 : 0xff0000ff) : (right ? 0xff00ff00 : 0xffff0000));
        }
    }
    return image;
}

/// Makes a part of the desktop a monitor, as users divide a large one. The library's own call for it (libxcb-randr
/// 1.15) sends a request that is too long.
void divide(XServer &server, const char *name, const QRect &place, QVector<xcb_randr_output_t> outputs)
{
    xcb_connection_t *connection = server.connection();
    struct Request
    {
        quint8 major = 0;
        quint8 minor = 0;
        quint16 length = 0;
        xcb_window_t window = 0;
        xcb_randr_monitor_info_t monitor{};
    } request;
    request.window = server.root();
    xcb_intern_atom_reply_t *atom =
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, quint16(qstrlen(name)), name), nullptr);
    request.monitor.name = atom->atom;
    free(atom);
    request.monitor.x = qint16(place.x());
    request.monitor.y = qint16(place.y());
    request.monitor.width = quint16(place.width());
    request.monitor.height = quint16(place.height());
    request.monitor.nOutput = quint16(outputs.size());
    const xcb_protocol_request_t kind{3, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
    iovec parts[] = {{}, {}, {&request, sizeof request}, {outputs.data(), size_t(outputs.size()) * 4}, {}};
    xcb_send_request(connection, 0, parts + 2, &kind);
    server.finish();
}

constexpr char pixmapProperty[] = "_XROOTPMAP_ID";

}

/// The background of the X root window, on a virtual server with two monitors of different size.
class tst_wallpaperroot : public WallpaperTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void centeredLiesInTheMiddleOfEachMonitor();
    void aLargerPictureIsCutToItsMonitor();
    void stretchedFillsEachMonitor();
    void tilesBeginAtTheTopLeft();
    void theOldPixmapIsFreed();
    void somebodyElsesPixmapComesBack();
    void theColorOfTheDesktopStays();

private:
    /// What a client that comes now finds in the property, as pixels.
    static QImage found()
    {
        XServer server;
        const auto pixmap = server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP);
        if (!pixmap || server.rootProperty("ESETROOT_PMAP_ID", XCB_ATOM_PIXMAP) != pixmap)
            return {};
        const Result<QImage> image = server.pixelsOf(*pixmap);
        return image ? *image : QImage();
    }
    /// What stands on the screen.
    static QImage seen()
    {
        XServer server;
        const Result<QImage> image = server.pixelsOf(server.root());
        return image ? *image : QImage();
    }
    QString saved(const QImage &image)
    {
        const QString path = home() + QStringLiteral("quarters.bmp");
        image.save(path);
        return path;
    }
    QProcess m_server;
};

void tst_wallpaperroot::initTestCase()
{
    startInNoSession();
    if (QStandardPaths::findExecutable(QStringLiteral("Xvfb")).isEmpty())
        QSKIP("XVFB MISSING: the package xvfb is needed");
    m_server.start(QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
            QStringLiteral("%1x%2x24").arg(desktopSize.width()).arg(desktopSize.height()), QStringLiteral("-noreset"),
            QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    QVERIFY(m_server.waitForReadyRead(30000));
    qputenv("DISPLAY", ":" + m_server.readLine().trimmed());
    XServer server;
    QVERIFY(server.isConnected());
    // The one output goes to the left; the right one has none.
    xcb_randr_get_screen_resources_current_reply_t *resources = xcb_randr_get_screen_resources_current_reply(
        server.connection(), xcb_randr_get_screen_resources_current(server.connection(), server.root()), nullptr);
    divide(server, "L", leftMonitor, {*xcb_randr_get_screen_resources_current_outputs(resources)});
    free(resources);
    divide(server, "R", rightMonitor, {});
    QCOMPARE(server.monitors(), QVector({leftMonitor, rightMonitor}));
}

void tst_wallpaperroot::cleanupTestCase()
{
    m_server.terminate();
    m_server.waitForFinished();
}

void tst_wallpaperroot::init()
{
    if (desktopWallpaper().canRestore())
        restore();
}

void tst_wallpaperroot::centeredLiesInTheMiddleOfEachMonitor()
{
    const QImage picture = quarters({101, 60});
    set(saved(picture), WallpaperPlacement::Centered);
    const QImage shown = found();
    QCOMPARE(shown.size(), desktopSize);
    for (const QRect &monitor : {leftMonitor, rightMonitor}) {
        QRect place(QPoint(), picture.size());
        place.moveTopLeft(monitor.topLeft()
            + QPoint((monitor.width() - picture.width()) / 2, (monitor.height() - picture.height()) / 2));
        QCOMPARE(shown.copy(place), picture);
        QCOMPARE(shown.pixel(place.topLeft() - QPoint(1, 0)), 0xff000000);
    }
    QCOMPARE(seen(), shown);
}

void tst_wallpaperroot::aLargerPictureIsCutToItsMonitor()
{
    const QImage picture = quarters({500, 350});
    set(saved(picture), WallpaperPlacement::Centered);
    const QImage shown = found();
    QCOMPARE(shown.copy(leftMonitor), picture.copy(50, 25, 400, 300));
    QCOMPARE(shown.copy(QRect(400, 25, 300, 350)), picture.copy(100, 0, 300, 350));
}

void tst_wallpaperroot::stretchedFillsEachMonitor()
{
    set(saved(quarters({20, 20})), WallpaperPlacement::Stretched);
    const QImage shown = found();
    for (const QRect &monitor : {leftMonitor, rightMonitor}) {
        QCOMPARE(shown.pixel(monitor.topLeft()), 0xffff0000);
        QCOMPARE(shown.pixel(monitor.topRight()), 0xff00ff00);
        QCOMPARE(shown.pixel(monitor.bottomLeft()), 0xff0000ff);
        QCOMPARE(shown.pixel(monitor.bottomRight()), 0xffffff00);
        const QPoint middle = monitor.center();
        QCOMPARE(shown.pixel(middle - QPoint(20, 20)), 0xffff0000);
        QCOMPARE(shown.pixel(middle + QPoint(20, 20)), 0xffffff00);
    }
    // The corner that no monitor shows.
    QCOMPARE(shown.pixel(10, 350), 0xff000000);
}

void tst_wallpaperroot::tilesBeginAtTheTopLeft()
{
    const QImage picture = quarters({150, 130}).convertToFormat(QImage::Format_Indexed8);
    set(saved(picture), WallpaperPlacement::Tiled);
    const QImage shown = found();
    const QImage colors = picture.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < desktopSize.height(); y += 7) {
        for (int x = 0; x < desktopSize.width(); x += 7)
            QCOMPARE(shown.pixel(x, y), colors.pixel(x % 150, y % 130));
    }
    QCOMPARE(seen(), shown);
}

void tst_wallpaperroot::theOldPixmapIsFreed()
{
    set(saved(quarters({20, 20})), WallpaperPlacement::Tiled);
    XServer server;
    const auto old = server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP);
    QVERIFY(old && server.pixelsOf(*old));
    set(saved(quarters({30, 30})), WallpaperPlacement::Tiled);
    QVERIFY(server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP) != old);
    QVERIFY(!server.pixelsOf(*old));
    const auto last = server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP);
    clear();
    QVERIFY(!server.pixelsOf(*last));
    QVERIFY(!server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP));
    QImage black(desktopSize, QImage::Format_RGB32);
    black.fill(Qt::black);
    QCOMPARE(seen(), black);
}

void tst_wallpaperroot::somebodyElsesPixmapComesBack()
{
    // A client that lives and names its pixmap in the one property only: nobody may end it.
    XServer other;
    const QImage tile = quarters({64, 48});
    const Result<xcb_pixmap_t> pixmap = other.makePixmap(tile);
    QVERIFY(pixmap);
    other.setRootProperty(pixmapProperty, XCB_ATOM_PIXMAP, *pixmap);
    other.showPixmapOnRoot(*pixmap);
    other.finish();
    const QImage before = seen();
    set(saved(quarters({10, 10})), WallpaperPlacement::Stretched);
    set(saved(quarters({20, 10})), WallpaperPlacement::Centered);
    QVERIFY(seen() != before);
    QVERIFY(other.pixelsOf(*pixmap));
    restore();
    QCOMPARE(seen(), before);
    QCOMPARE(found(), tile);
    QVERIFY(!desktopWallpaper().canRestore());
}

void tst_wallpaperroot::theColorOfTheDesktopStays()
{
    const QRgb color = qRgb(0x22, 0x44, 0x66);
    {
        XServer server;
        for (const char *name : {pixmapProperty, "ESETROOT_PMAP_ID"})
            server.deleteRootProperty(name);
        server.showColorOnRoot(color);
        server.finish();
    }
    const QImage before = seen();
    QCOMPARE(before.pixel(100, 100), color);
    for (int i = 0; i < 2; ++i) {
        set(saved(quarters({10, 10})), WallpaperPlacement::Centered);
        QCOMPARE(seen().pixel(1, 1), color);
        QVERIFY(seen() != before);
    }
    clear();
    QCOMPARE(seen(), before);
    set(saved(quarters({10, 10})), WallpaperPlacement::Stretched);
    QVERIFY(desktopWallpaper().canRestore());
    restore();
    QCOMPARE(seen(), before);
    XServer server;
    QVERIFY(!server.rootProperty(pixmapProperty, XCB_ATOM_PIXMAP));
}

QTEST_MAIN(tst_wallpaperroot)
#include "tst_wallpaperroot.moc"
