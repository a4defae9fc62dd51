#include "platform/linux/wallpaper/xserver.h"

#include <QSysInfo>

#include <cstdlib>
#include <cstring>

#include <xcb/randr.h>

namespace {

template <class T> struct Free
{
    void operator()(T *reply) const { std::free(reply); }
};
template <class T> using Reply = std::unique_ptr<T, Free<T>>;

constexpr int requestHeader = 64; ///< bytes, more than any request here has before its data

const xcb_screen_t *screenOf(xcb_connection_t *connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screens.rem > 1)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

}

XServer::XServer()
{
    int number = 0;
    m_connection = xcb_connect(nullptr, &number);
    if (xcb_connection_has_error(m_connection) == 0)
        m_screen = screenOf(m_connection, number);
}

XServer::~XServer()
{
    xcb_disconnect(m_connection);
}

QSize XServer::size() const
{
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, root()), nullptr));
    return geometry ? QSize(geometry->width, geometry->height)
                    : QSize(m_screen->width_in_pixels, m_screen->height_in_pixels);
}

QVector<QRect> XServer::monitors() const
{
    QVector<QRect> found;
    const auto *extension = xcb_get_extension_data(m_connection, &xcb_randr_id);
    if (extension && extension->present) {
        // Monitors came with version 1.5, and a server talks only as new as its client says it is.
        const Reply<xcb_randr_query_version_reply_t> version(
            xcb_randr_query_version_reply(m_connection, xcb_randr_query_version(m_connection, 1, 5), nullptr));
        const Reply<xcb_randr_get_monitors_reply_t> reply(
            xcb_randr_get_monitors_reply(m_connection, xcb_randr_get_monitors(m_connection, root(), 1), nullptr));
        for (auto all = reply ? xcb_randr_get_monitors_monitors_iterator(reply.get())
                              : xcb_randr_monitor_info_iterator_t{};
             all.rem > 0; xcb_randr_monitor_info_next(&all))
            found.append(QRect(all.data->x, all.data->y, all.data->width, all.data->height));
    }
    found.removeIf([](const QRect &monitor) { return monitor.isEmpty(); });
    if (found.isEmpty())
        found.append(QRect(QPoint(), size()));
    return found;
}

xcb_atom_t XServer::atom(const char *name) const
{
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, quint16(std::strlen(name)), name), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

std::optional<quint32> XServer::rootProperty(const char *name, xcb_atom_t type) const
{
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 0, root(), atom(name), type, 0, 1), nullptr));
    if (!reply || reply->type != type || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    quint32 value = 0;
    std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
    return value;
}

void XServer::setRootProperty(const char *name, xcb_atom_t type, quint32 value)
{
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, root(), atom(name), type, 32, 1, &value);
}

void XServer::deleteRootProperty(const char *name)
{
    xcb_delete_property(m_connection, root(), atom(name));
}

/// How an image has to lie in memory to be what the server calls a Z pixmap; invalid for rare visuals.
QImage::Format XServer::pixelFormat() const
{
    constexpr auto ownOrder =
        QSysInfo::ByteOrder == QSysInfo::LittleEndian ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    if (xcb_get_setup(m_connection)->image_byte_order != ownOrder)
        return QImage::Format_Invalid;
    for (auto depth = xcb_screen_allowed_depths_iterator(m_screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id != m_screen->root_visual)
                continue;
            if (m_screen->root_depth == 24 && visual.data->red_mask == 0xff0000)
                return QImage::Format_RGB32;
            if (m_screen->root_depth == 30)
                return visual.data->red_mask == 0x3ff00000 ? QImage::Format_RGB30 : QImage::Format_BGR30;
            if (m_screen->root_depth == 16 && visual.data->red_mask == 0xf800)
                return QImage::Format_RGB16;
        }
    }
    return QImage::Format_Invalid;
}

Result<xcb_pixmap_t> XServer::makePixmap(const QImage &image)
{
    const QImage::Format format = pixelFormat();
    if (format == QImage::Format_Invalid)
        return Failure{QStringLiteral("no pictures in this server's colours")};
    const QImage pixels = image.convertToFormat(format);
    const xcb_pixmap_t pixmap = xcb_generate_id(m_connection);
    const auto made = xcb_create_pixmap_checked(
        m_connection, m_screen->root_depth, pixmap, root(), quint16(pixels.width()), quint16(pixels.height()));
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection, made));
    if (error)
        return Failure{QStringLiteral("the server has no room for the picture")};
    const xcb_gcontext_t context = xcb_generate_id(m_connection);
    xcb_create_gc(m_connection, context, pixmap, 0, nullptr);
    const qint64 largest = qint64(xcb_get_maximum_request_length(m_connection)) * 4 - requestHeader;
    const int rows = int(std::max<qint64>(1, largest / pixels.bytesPerLine()));
    for (int y = 0; y < pixels.height(); y += rows) {
        const int count = qMin(rows, pixels.height() - y);
        xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, quint16(pixels.width()), quint16(count),
            0, qint16(y), 0, m_screen->root_depth, quint32(count * pixels.bytesPerLine()), pixels.constScanLine(y));
    }
    xcb_free_gc(m_connection, context);
    return pixmap;
}

Result<QImage> XServer::pixelsOf(xcb_pixmap_t pixmap)
{
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, pixmap), nullptr));
    const QImage::Format format = pixelFormat();
    if (!geometry || geometry->depth != m_screen->root_depth || format == QImage::Format_Invalid)
        return Failure{QStringLiteral("the pixmap of the root window cannot be read")};
    QImage image(geometry->width, geometry->height, format);
    constexpr int rows = 256; // an answer of some megabytes at a time
    for (int y = 0; y < image.height(); y += rows) {
        const int count = qMin(rows, image.height() - y);
        const Reply<xcb_get_image_reply_t> part(xcb_get_image_reply(m_connection,
            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, qint16(y), quint16(image.width()),
                quint16(count), ~0u),
            nullptr));
        const qsizetype bytes = count * image.bytesPerLine();
        if (!part || xcb_get_image_data_length(part.get()) < bytes)
            return Failure{QStringLiteral("the pixmap of the root window cannot be read")};
        std::memcpy(image.scanLine(y), xcb_get_image_data(part.get()), size_t(bytes));
    }
    return image;
}

void XServer::showPixmapOnRoot(xcb_pixmap_t pixmap)
{
    changeBackground(XCB_CW_BACK_PIXMAP, pixmap);
}

void XServer::showColorOnRoot(QRgb color)
{
    QImage pixel(1, 1, QImage::Format_RGB32);
    pixel.fill(color);
    const QImage native = pixel.convertToFormat(pixelFormat());
    quint32 value = m_screen->black_pixel;
    if (!native.isNull())
        std::memcpy(&value, native.constBits(), native.depth() == 16 ? 2 : 4);
    changeBackground(XCB_CW_BACK_PIXEL, value);
}

void XServer::changeBackground(quint32 attribute, quint32 value)
{
    xcb_change_window_attributes(m_connection, root(), attribute, &value);
    xcb_clear_area(m_connection, 0, root(), 0, 0, 0, 0);
}

QRgb XServer::colorOfRoot()
{
    // Nothing tells a window's background but a window on it that has the same one, which takes one pixel here.
    const xcb_window_t window = xcb_generate_id(m_connection);
    const quint32 values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(m_connection, window);
    const Result<QImage> pixel = pixelsOf(window);
    xcb_destroy_window(m_connection, window);
    return pixel ? pixel->pixel(0, 0) : qRgb(0, 0, 0);
}

void XServer::finish()
{
    const Reply<xcb_get_input_focus_reply_t> answer(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}
