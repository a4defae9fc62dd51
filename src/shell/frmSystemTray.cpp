#include "shell/frmSystemTray.h"

#include "app/frmPreviousInstance.h"
#include "app/globals.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>

#include <utility>

namespace {

using T = frmSystemTray;
constexpr int lookAgain = 2000; ///< milliseconds
constexpr int iconSizes[] = {16, 22, 24, 32, 48, 64};

#define ITEM(name) &T::name, #name
// clang-format off
const TrayRow rows[] = {
    {ITEM(mnuRestore), QT_TRANSLATE_NOOP("frmSystemTray", "&Restore"), &T::mnuRestore_Click, false},
    {ITEM(mnuMaximize), QT_TRANSLATE_NOOP("frmSystemTray", "Ma&ximize"), &T::mnuMaximize_Click, false},
    {ITEM(mnuMinimize), QT_TRANSLATE_NOOP("frmSystemTray", "Mi&nimize"), &T::mnuMinimize_Click, false},
    {ITEM(mnuLoadList), QT_TRANSLATE_NOOP("frmSystemTray", "-&Load List"), &T::mnuLoadList_Click, false},
    {ITEM(mnuSaveList), QT_TRANSLATE_NOOP("frmSystemTray", "&Save List"), &T::mnuSaveList_Click, false},
    {ITEM(mnuFullScreenSlideShow), QT_TRANSLATE_NOOP("frmSystemTray", "-&Run Full Screen Media Show"), &T::mnuFullScreenSlideShow_Click, true},
    {ITEM(mnuSlideShowInterval), QT_TRANSLATE_NOOP("frmSystemTray", "Slide Show &Time Interval"), &T::mnuSlideShowInterval_Click, true},
    {ITEM(mnuPreviousImage), QT_TRANSLATE_NOOP("frmSystemTray", "-&Previous Media File"), &T::mnuPreviousImage_Click, true},
    {ITEM(mnuNextImage), QT_TRANSLATE_NOOP("frmSystemTray", "&Next Media File"), &T::mnuNextImage_Click, true},
    {ITEM(mnuAbout), QT_TRANSLATE_NOOP("frmSystemTray", "-&About"), nullptr, false},
    {ITEM(mnuExit), QT_TRANSLATE_NOOP("frmSystemTray", "&Exit"), &T::mnuExit_Click, false},
};
// clang-format on
#undef ITEM

/// The pixels alone: with the icon's name the desktop would look for it among its own icons, and need not find it.
QIcon pixelsOf(const QIcon &icon)
{
    QIcon pixels;
    for (const int size : iconSizes)
        pixels.addPixmap(icon.pixmap(size, size));
    return pixels;
}

/// Of a minimised window: what it was before.
Qt::WindowState stateBefore(const QWidget &window)
{
    return window.isMaximized() ? Qt::WindowMaximized : Qt::WindowNoState;
}

}

std::span<const TrayRow> trayRows()
{
    return rows;
}

frmSystemTray::frmSystemTray(QWidget *parent)
    : FormWindow(parent)
    , mnuLPopup(new QMenu(this))
{
    mnuLPopup->setObjectName(QStringLiteral("mnuLPopup"));
    for (const TrayRow &row : rows) {
        QString caption = tr(row.caption);
        if (caption.startsWith(QLatin1Char('-'))) {
            caption.remove(0, 1);
            mnuLPopup->addSeparator();
        }
        QAction *item = mnuLPopup->addAction(caption);
        item->setObjectName(QString::fromLatin1(row.name));
        item->setVisible(row.click);
        // The desktop waits for the answer to its click; no command runs, and no box stands, inside of that.
        if (row.click)
            connect(item, &QAction::triggered, this, row.click, Qt::QueuedConnection);
        this->*row.item = item;
    }
    connect(mnuLPopup, &QMenu::aboutToShow, this, &frmSystemTray::updateItems);
    connect(&m_presence, &TrayPresence::changed, this, &frmSystemTray::trayChanged);
    connect(&m_look, &QTimer::timeout, this, &frmSystemTray::trayChanged);
    m_look.setInterval(lookAgain);
}

frmSystemTray::~frmSystemTray() = default;

void frmSystemTray::Form_Activate()
{
    m_presence.watch();
}

void frmSystemTray::Form_Unload()
{
    disconnect(&m_presence, nullptr, this, nullptr);
    m_look.stop();
    removeIcon();
    Yield();
    Yield();
}

void frmSystemTray::trayChanged()
{
    // Another window has shown it; what belongs to it comes along.
    if (m_holdsMainViewer && !holdsMainViewer() && !globals.ProgramExiting)
        putBack(stateBefore(form<frmMainViewer>()));
    if (m_presence.isThere() && !globals.ProgramExiting)
        showIcon();
    else
        removeIcon();
}

void frmSystemTray::showIcon()
{
    if (m_icon || !QSystemTrayIcon::isSystemTrayAvailable())
        return;
    auto &viewer = form<frmMainViewer>();
    m_icon = new QSystemTrayIcon(pixelsOf(viewer.windowIcon()), this);
    m_icon->setToolTip(tr("Tessaly Lumora V3"));
    m_icon->setContextMenu(mnuLPopup);
    connect(m_icon, &QSystemTrayIcon::activated, this, &frmSystemTray::iconActivated, Qt::QueuedConnection);
    updateItems();
    m_icon->show();
    viewer.mnuOptionsMinimizeSystemTray->setEnabled(true);
}

void frmSystemTray::removeIcon()
{
    if (m_icon) {
        m_icon->hide();
        // It may be the icon's own event that led here.
        m_icon->deleteLater();
        m_icon = nullptr;
    }
    if (globals.ProgramExiting || !isLoaded<frmMainViewer>())
        return;
    auto &viewer = form<frmMainViewer>();
    viewer.mnuOptionsMinimizeSystemTray->setEnabled(false);
    if (holdsMainViewer()) {
        // In sight, but not in the way: nobody has asked for it.
        viewer.setAttribute(Qt::WA_ShowWithoutActivating);
        putBack(stateBefore(viewer));
        viewer.setAttribute(Qt::WA_ShowWithoutActivating, false);
    }
}

/// The desktop knows one kind of click; it does what a double click would. Wheel, middle button and the pointer over
/// the icon do nothing; the right button is the menu's, which the desktop opens itself.
void frmSystemTray::iconActivated(QSystemTrayIcon::ActivationReason reason)
{
    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
        mnuMaximize_Click();
}

void frmSystemTray::updateItems()
{
    if (!isLoaded<frmMainViewer>())
        return;
    const bool any = form<frmMainViewer>().lblCount->text().toInt() >= 1;
    for (const TrayRow &row : rows) {
        if (row.needsItem)
            (this->*row.item)->setEnabled(any);
    }
}

// --- the Main Viewer's window

/// Another window may have shown it meanwhile.
bool frmSystemTray::holdsMainViewer() const
{
    return m_holdsMainViewer && isLoaded<frmMainViewer>() && !form<frmMainViewer>().isVisible();
}

void frmSystemTray::bringUp(Qt::WindowState state)
{
    if (globals.ProgramExiting)
        return;
    auto &viewer = form<frmMainViewer>();
    // From now on it runs as if it had never made room for the editor or the folder browser.
    globals.StartInEditor = false;
    globals.StartInFolderBrowser = false;
    if (globals.MainViewerActivated && !viewer.Timer1.isActive())
        viewer.Timer1.start();
    putBack(state);
    BringToFront(&viewer);
    // A modal window keeps the keyboard: the one behind it could do nothing with it.
    if (QWidget *modal = QApplication::activeModalWidget())
        BringToFront(modal);
}

void frmSystemTray::mnuRestore_Click()
{
    bringUp(Qt::WindowNoState);
}

void frmSystemTray::mnuMaximize_Click()
{
    bringUp(Qt::WindowMaximized);
}

void frmSystemTray::mnuMinimize_Click()
{
    if (!globals.ProgramExiting && form<frmMainViewer>().isVisible())
        form<frmMainViewer>().showMinimized();
}

void frmSystemTray::takeMainViewer()
{
    if (globals.ProgramExiting || !hasIcon() || !m_presence.isThere())
        return;
    auto &viewer = form<frmMainViewer>();
    // A modal window would lose the window that it belongs to.
    if (!viewer.isMinimized() || !viewer.isVisible() || !viewer.mnuOptionsMinimizeSystemTray->isChecked()
        || QApplication::activeModalWidget())
        return;
    m_holdsMainViewer = true;
    m_look.start();
    hideOwned();
    viewer.hide();
}

/// Some window systems take the windows of a minimised one along and some do not; none brings them back.
void frmSystemTray::hideOwned()
{
    m_owned.clear();
    const auto windows = form<frmMainViewer>().findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (QWidget *window : windows) {
        if (!window->isWindow() || !window->isVisible())
            continue;
        m_owned.append(window);
        window->hide();
    }
}

void frmSystemTray::putBack(Qt::WindowState state)
{
    m_holdsMainViewer = false;
    m_look.stop();
    auto &viewer = form<frmMainViewer>();
    viewer.setWindowState(state);
    viewer.show();
    for (const QPointer<QWidget> &window : std::exchange(m_owned, {})) {
        const auto *itsForm = dynamic_cast<const Form *>(window.data());
        if (!window || (itsForm && itsForm->isUnloaded()))
            continue;
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
        window->show();
    }
}

void frmSystemTray::returnMainViewer()
{
    if (holdsMainViewer())
        bringUp(stateBefore(form<frmMainViewer>()));
}

// --- the Main Viewer's commands

/// The icon's menu cannot be kept shut while a modal window waits for its answer: that one comes to the front instead.
bool frmSystemTray::commandsAreFree()
{
    if (globals.ProgramExiting)
        return false;
    QWidget *modal = QApplication::activeModalWidget();
    if (modal)
        BringToFront(modal);
    return !modal && form<frmMainViewer>().isEnabled();
}

void frmSystemTray::mnuLoadList_Click()
{
    if (commandsAreFree())
        form<frmMainViewer>().mnuFileLoad_Click();
}

void frmSystemTray::mnuSaveList_Click()
{
    if (commandsAreFree())
        form<frmMainViewer>().mnuFileSave_Click();
}

void frmSystemTray::mnuFullScreenSlideShow_Click()
{
    if (commandsAreFree())
        form<frmMainViewer>().mnuSlideShowFullScreen->trigger();
}

void frmSystemTray::mnuSlideShowInterval_Click()
{
    if (commandsAreFree())
        form<frmMainViewer>().mnuSlideShowInterval_Click();
}

void frmSystemTray::mnuPreviousImage_Click()
{
    if (commandsAreFree())
        form<frmMainViewer>().PreviousListItem();
}

void frmSystemTray::mnuNextImage_Click()
{
    if (commandsAreFree())
        form<frmMainViewer>().NextListItem();
}

void frmSystemTray::mnuExit_Click()
{
    form<frmMainViewer>().mnuFileExit_Click();
}
