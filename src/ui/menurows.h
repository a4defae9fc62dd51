#pragma once

#include "ui/icons.h"

#include <QAction>
#include <QHash>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

#include <span>

/// Makes the menus of a window from its rows, in their order: each row's action is put into the member that the row
/// names and gets the row's name as its objectName. A Row has `item`, `name`, `menu`, `caption` ("-" in front starts a
/// group), `shortcut`, `icon`, `click` and `flags` of `Submenu` and `Check`; one without a `click` stays out of sight
/// but for the flag `Shown`. The answer is the menus by their names.
template <class Window, class Row> QHash<QString, QMenu *> makeMenuRows(Window &window, std::span<const Row> rows)
{
    QHash<QString, QMenu *> menus;
    for (const Row &row : rows) {
        QString caption = Window::tr(row.caption);
        QMenu *owner = menus.value(QString::fromLatin1(row.menu));
        if (caption.startsWith(QLatin1Char('-'))) {
            caption.remove(0, 1);
            owner->addSeparator();
        }
        QAction *action = nullptr;
        if (row.flags & Row::Submenu) {
            QMenu *menu = owner ? owner->addMenu(caption) : window.menuBar()->addMenu(caption);
            menus.insert(QString::fromLatin1(row.name), menu);
            action = menu->menuAction();
        } else {
            bool shown = row.click;
            if constexpr (requires { Row::Shown; })
                shown = shown || (row.flags & Row::Shown);
            action = owner->addAction(caption);
            action->setShortcut(QKeySequence(QString::fromLatin1(row.shortcut)));
            action->setCheckable(row.flags & Row::Check);
            action->setVisible(shown);
            if (row.click)
                QObject::connect(action, &QAction::triggered, &window, row.click);
        }
        if (*row.icon && action->isVisible())
            action->setIcon(themedIcon(QString::fromLatin1(row.icon)));
        action->setObjectName(QString::fromLatin1(row.name));
        window.*row.item = action;
    }
    return menus;
}

/// A window's one tool bar. It stays where it is; Qt's own button for what has no room tells what it is for.
inline void addFixedToolBar(QMainWindow &window, QToolBar &bar)
{
    bar.setMovable(false);
    bar.setWindowTitle(QMainWindow::tr("Main Toolbar"));
    bar.setIconSize(QSize(24, 24));
    window.addToolBar(&bar);
    if (auto *more = bar.findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button"))) {
        more->setAccessibleName(QMainWindow::tr("More commands"));
        more->setToolTip(more->accessibleName());
    }
}
