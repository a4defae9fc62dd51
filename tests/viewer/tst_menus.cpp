#include "app/globals.h"
#include "app/settings.h"
#include "editor/frmZoomView.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmBrowseFolder.h"
#include "viewer/frmMainViewer.h"

#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTabBar>
#include <QToolButton>
#include <QtTest>

/// The menus as a whole: their keys, and what the help page tells about them.
class tst_menus : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void everyKeyBelongsToOneCommand();
    void theHelpPageListsTheKeysOfTheMenus();
    void theToolbarGivesUpCaptionsBeforeCommands();
    void theEditorNeedsNoPicture_data();
    void theEditorNeedsNoPicture();
    void aDragOpensTheOtherList();

private:
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

/// Every command of a menu and of the menus in it.
QList<QAction *> commandsOf(const QList<QAction *> &items, bool onlyVisible)
{
    QList<QAction *> commands;
    for (QAction *item : items) {
        if (item->isSeparator() || (onlyVisible && !item->isVisible()))
            continue;
        if (item->menu())
            commands += commandsOf(item->menu()->actions(), onlyVisible);
        else
            commands.append(item);
    }
    return commands;
}

QString keyOf(const QAction *command)
{
    return command->shortcut().toString(QKeySequence::PortableText);
}

QString captionOf(const QAction *command)
{
    return command->text().remove(QLatin1Char('&')).simplified();
}

}

void tst_menus::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    globals.MediaPlayerVersion = 0;
    saveOption("Show Intro Select at Startup", QStringLiteral("0"));
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    form<frmMainViewer>().show();
    QTRY_VERIFY(globals.MainViewerActivated);
}

/// Two commands with one key do nothing at all when it is pressed. Commands out of sight count: they may come back.
void tst_menus::everyKeyBelongsToOneCommand()
{
    QHash<QString, QString> owners;
    for (const QAction *command : commandsOf(form<frmMainViewer>().menuBar()->actions(), false)) {
        const QString key = keyOf(command);
        if (key.isEmpty())
            continue;
        QVERIFY2(!owners.contains(key), qPrintable(key + QStringLiteral(": ") + owners.value(key) + command->text()));
        owners.insert(key, command->text());
    }
    QVERIFY(owners.size() > 40);
}

void tst_menus::theHelpPageListsTheKeysOfTheMenus()
{
    QFile page(QStringLiteral(":/lumora/help/index.html"));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(page.readAll());
    static const QRegularExpression row(QStringLiteral("<kbd>([^<]*)</kbd></td><td>([^<]*)</td>"));
    QStringList told;
    for (auto match = row.globalMatch(text); match.hasNext();) {
        const auto found = match.next();
        told.append(found.captured(1) + QStringLiteral(": ")
            + found.captured(2).replace(QLatin1String("&amp;"), QLatin1String("&")));
    }
    QStringList shown;
    for (const QAction *command : commandsOf(form<frmMainViewer>().menuBar()->actions(), true)) {
        if (!keyOf(command).isEmpty())
            shown.append(keyOf(command) + QStringLiteral(": ") + captionOf(command));
    }
    QCOMPARE(told, shown);
}

/// A window as wide as at the first start, with the captions at the right as they then are.
void tst_menus::theToolbarGivesUpCaptionsBeforeCommands()
{
    auto &viewer = form<frmMainViewer>();
    viewer.mnuViewToolbarsCaptionsRight_Click();
    const auto *more = viewer.Toolbar1->findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button"));
    const auto styleOf = [&](const char *key) {
        const QAction *action = viewer.toolbarButton(QLatin1String(key));
        return qobject_cast<QToolButton *>(viewer.Toolbar1->widgetForAction(const_cast<QAction *>(action)))
            ->toolButtonStyle();
    };
    for (const int width : {1180, 2400, 1180}) {
        viewer.resize(width, 780);
        QTRY_COMPARE(viewer.Toolbar1->width(), width);
        QTRY_VERIFY2(!more->isVisible(), qPrintable(QString::number(width)));
        QVERIFY(styleOf("slide") == Qt::ToolButtonTextBesideIcon && styleOf("wpaperc") == Qt::ToolButtonIconOnly);
        QCOMPARE(styleOf("zoominc"), width < 2000 ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    }
    viewer.mnuViewToolbarsCaptionsBottom_Click();
    QCOMPARE(styleOf("zoominc"), Qt::ToolButtonTextUnderIcon);
    viewer.mnuViewToolbarsCaptionsRight_Click();
    QCOMPARE(styleOf("zoominc"), Qt::ToolButtonIconOnly);
}

void tst_menus::theEditorNeedsNoPicture_data()
{
    QTest::addColumn<QKeySequence>("keys");
    QTest::newRow("editor") << QKeySequence(Qt::CTRL | Qt::Key_E);
    QTest::newRow("folder browser") << QKeySequence(Qt::CTRL | Qt::Key_B);
}

/// The menu they stand in is off while both lists are empty; their keys are not.
void tst_menus::theEditorNeedsNoPicture()
{
    QFETCH(QKeySequence, keys);
    auto &window = form<frmMainViewer>();
    window.ClearDisplayList();
    window.cmdClearSelectionList_Click();
    QVERIFY(!window.mnuPicture->isEnabled());
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QAction *const command = keys[0].key() == Qt::Key_E ? window.mnuPictureViewer : window.mnuBrowseFolderView;
    QSignalSpy triggered(command, &QAction::triggered);
    QTest::keySequence(&window, keys);
    QCOMPARE(triggered.count(), 1);
    unload<frmZoomView>();
    unload<frmBrowseFolder>();
}

/// The lists are never in sight together, so a drag from one to the other must be able to turn the page.
void tst_menus::aDragOpensTheOtherList()
{
    auto &window = form<frmMainViewer>();
    window.tabFileList->setCurrentIndex(0);
    QTabBar *const tabs = window.tabFileList->tabBar();
    QVERIFY2(tabs->acceptDrops(), "no drag reaches the tabs");
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("file:///nowhere/a.jpg"))});
    const QPoint over = tabs->tabRect(1).center();
    QDragEnterEvent enter(over, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(tabs, &enter);
    QDragMoveEvent move(over, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(tabs, &move);
    QTRY_COMPARE(window.tabFileList->currentIndex(), 1);
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(tabs, &leave);
}

QTEST_MAIN(tst_menus)
#include "tst_menus.moc"
