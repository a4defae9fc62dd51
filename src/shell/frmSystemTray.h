#pragma once

#include "platform/traypresence.h"
#include "ui/form.h"

#include <QAction>
#include <QList>
#include <QMenu>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>

#include <span>

class frmSystemTray;

/// A row of the icon's menu.
struct TrayRow
{
    QAction *frmSystemTray::*item;
    const char *name;
    const char *caption; ///< "-" in front starts a new group
    void (frmSystemTray::*click)(); ///< null: this build does not have what it opens, and the item is not shown
    bool needsItem; ///< off while the DisplayList is empty
};
std::span<const TrayRow> trayRows();

/// The program's icon among the status icons of the desktop, and its menu, which reaches the Main Viewer's commands
/// while that is minimised. The window itself is never in sight. Where the desktop shows no status icons there is
/// none, and nothing else differs; it comes and goes with them.
class frmSystemTray : public FormWindow
{
    Q_OBJECT
public:
    explicit frmSystemTray(QWidget *parent = nullptr);
    ~frmSystemTray() override;

    QMenu *mnuLPopup;
    QAction *mnuRestore{}, *mnuMaximize{}, *mnuMinimize{}, *mnuLoadList{}, *mnuSaveList{}, *mnuFullScreenSlideShow{},
        *mnuSlideShowInterval{}, *mnuPreviousImage{}, *mnuNextImage{}, *mnuAbout{}, *mnuExit{};

    /// Has the icon shown as soon as the desktop is known to show such. Returns at once.
    void Form_Activate() override;
    void Form_Unload() override;

    void mnuRestore_Click();
    void mnuMaximize_Click();
    void mnuMinimize_Click();
    void mnuLoadList_Click();
    void mnuSaveList_Click();
    void mnuFullScreenSlideShow_Click();
    void mnuSlideShowInterval_Click();
    void mnuPreviousImage_Click();
    void mnuNextImage_Click();
    void mnuExit_Click();

    /// Turns the items that need a list on and off.
    void updateItems();
    /// The icon is there: the Main Viewer can be minimised to it.
    bool hasIcon() const { return m_icon != nullptr; }

    /// The Main Viewer was minimised. With "Minimize to System Tray" on and an icon to come back by, it leaves the
    /// screen altogether; otherwise it stays minimised as any window.
    void takeMainViewer();
    /// The Main Viewer is out of sight, and only the icon tells that the program runs.
    bool holdsMainViewer() const;
    /// Gives the Main Viewer back to the screen in the state that it had before it was minimised. Else nothing.
    void returnMainViewer();

private:
    void showIcon();
    void removeIcon();
    void trayChanged();
    void iconActivated(QSystemTrayIcon::ActivationReason reason);
    void bringUp(Qt::WindowState state);
    void putBack(Qt::WindowState state);
    void hideOwned();
    bool commandsAreFree();

    TrayPresence m_presence;
    QSystemTrayIcon *m_icon = nullptr;
    QTimer m_look; ///< while the Main Viewer is held: whether there is still an icon to come back by
    bool m_holdsMainViewer = false;
    QList<QPointer<QWidget>> m_owned; ///< windows of the Main Viewer that left the screen with it
};
