#pragma once

#include "engine/result.h"

#include <QImage>
#include <QRect>
#include <QVector>

#include <optional>

#include <xcb/xcb.h>

/// A connection to the X server with what a wallpaper needs of it.
class XServer
{
public:
    XServer();
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    bool isConnected() const { return m_screen != nullptr; }
    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_screen->root; }
    QSize size() const; ///< of the root window now, which may have changed since the server's start
    QVector<QRect> monitors() const; ///< at least one

    /// The first 32-bit value of a property of the root window; none when it is not there or of another type.
    std::optional<quint32> rootProperty(const char *name, xcb_atom_t type) const;
    void setRootProperty(const char *name, xcb_atom_t type, quint32 value);
    void deleteRootProperty(const char *name);

    /// A pixmap of the root's depth with these pixels.
    Result<xcb_pixmap_t> makePixmap(const QImage &image);
    /// The pixels of such a pixmap.
    Result<QImage> pixelsOf(xcb_pixmap_t pixmap);
    /// The background of the root window, painted at once.
    void showPixmapOnRoot(xcb_pixmap_t pixmap);
    void showColorOnRoot(QRgb color);
    /// The colour of that background in its top left corner, whatever lies over it.
    QRgb colorOfRoot();
    /// Waits until the server has done all that was asked for.
    void finish();

private:
    xcb_atom_t atom(const char *name) const;
    QImage::Format pixelFormat() const;
    void changeBackground(quint32 attribute, quint32 value);

    xcb_connection_t *m_connection = nullptr;
    const xcb_screen_t *m_screen = nullptr;
};
