#include "app/checkjpg.h"
#include "engine/rounding.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmDatabaseStats.h"
#include "thumbnails/frmMakeThumbNails.h"
#include "thumbnails/thumbnailsize.h"
#include "thumbnails/viewertest.h"
#include "ui/guards.h"
#include "viewer/frmMessage.h"

#include <QClipboard>
#include <QMenu>

/// The commands of the Thumbnail Viewer: its menus, its tool bar, the cache.
class tst_thumbnailcommands : public QObject, ViewerOverList
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { makeFiles(); }
    void init() { startOver(); }
    void cleanup() { endAll(); }
    void theRightButtonOpensTheMenu();
    void theEditorOpensAndTheMarkStays();
    void commandsCopyToTheClipboard();
    void theToolBarIsRememberedWithItsCaptions();
    void menuMarksAreTheOptions();
    void clearingAsksAndTells_data();
    void clearingAsksAndTells();
    void compactionIsTold();
    void aRunLeavesTheMenuOn();
    void aRunKeepsViewerAndCache_data();
    void aRunKeepsViewerAndCache();
    void statisticsAreWaitedFor();
    void withoutACacheItsMenuIsOff();
    void noKeyBelongsToTwoCommands();
};

void tst_thumbnailcommands::theRightButtonOpensTheMenu()
{
    open();
    QTest::mouseClick(cell(6), Qt::RightButton);
    QMenu *menu = viewer().mnupopupmain->menu();
    QVERIFY(menu->isVisible());
    QCOMPARE(viewer().SelectedIndex, 6);
    QStringList shown;
    for (const QAction *item : menu->actions()) {
        if (item->isVisible())
            shown << item->text();
    }
    QCOMPARE(shown,
        (QStringList{QStringLiteral("&Make ThumbNail"), QStringLiteral("&Copy Image to Clipboard"),
            QStringLiteral("C&opy Media Filename to Clipboard"), QStringLiteral("&Display Media File"),
            QStringLiteral("Display in &Zoom Viewer / Pixelon")}));
    menu->close();
    viewer().PageBusy = true;
    viewer().imgThumbnail_MouseUp(7, Qt::RightButton, {});
    viewer().PageBusy = false;
    QVERIFY(!menu->isVisible());
    QCOMPARE(viewer().SelectedIndex, 6);
    viewer().mnupopup[4]->trigger();
    QVERIFY(!isLoaded<frmThumbNail>());
    QCOMPARE(list().selectedIndices(), QList<int>{5});
}

void tst_thumbnailcommands::theEditorOpensAndTheMarkStays()
{
    open(3);
    viewer().imgThumbnail_Click(4);
    viewer().toolbarButton(QStringLiteral("Editor"))->trigger();
    QVERIFY(isLoaded<frmZoomView>());
    QVERIFY(list().isSelected(6));
    QCOMPARE(list().listIndex(), 3);
    QVERIFY(isLoaded<frmThumbNail>());
}

void tst_thumbnailcommands::commandsCopyToTheClipboard()
{
    open();
    viewer().imgThumbnail_Click(5);
    viewer().toolbarButton(QStringLiteral("Copy"))->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), m_files[4]);
    viewer().mnuEditCopyImage->trigger();
    QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(44, 30));
    QVERIFY(!form<checkjpg>().Gvbox2.picture());
    list().clear();
    viewer().mnupopup[3]->trigger();
    QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(44, 30)); // the file has left the list
}

void tst_thumbnailcommands::theToolBarIsRememberedWithItsCaptions()
{
    open();
    const auto stored = [](const char *key) { return GetSetting({}, QStringLiteral("Toolbars"), QLatin1String(key)); };
    QCOMPARE(viewer().tblThumbnails->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
    viewer().mnuViewToolbarCaptionsBottom->trigger();
    QCOMPARE(viewer().tblThumbnails->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
    QCOMPARE(stored("ThumbNailsCaptionsBottom"), QStringLiteral("True"));
    QCOMPARE(stored("ThumbNailsCaptionsRight"), QStringLiteral("False"));
    viewer().mnuViewToolbarsShowCaptions->trigger();
    QCOMPARE(viewer().tblThumbnails->toolButtonStyle(), Qt::ToolButtonIconOnly);
    viewer().mnuMainToolbar->trigger();
    QVERIFY(!viewer().tblThumbnails->isVisible());
    QCOMPARE(cell(1)->y() - 1, roundToInt((viewer().picGrid->height() - 100 * viewer().GridRows) / 2.0));
    QCOMPARE(stored("ThumbNailsToolbar"), QStringLiteral("False"));
    unload<frmThumbNail>();
    viewer().show();
    QVERIFY(!viewer().tblThumbnails->isVisible());
    QVERIFY(!viewer().mnuViewToolbarsShowCaptions->isChecked() && viewer().mnuViewToolbarCaptionsBottom->isChecked());
    viewer().mnuMainToolbar->trigger();
    viewer().mnuViewToolbarsShowCaptions->trigger();
    viewer().mnuViewToolbarCaptionsRight->trigger();
}

void tst_thumbnailcommands::menuMarksAreTheOptions()
{
    form<frmPreferences>().chkOverWriteThumbnails->setChecked(true);
    open();
    QVERIFY(viewer().mnuThumbnailsOverwrite->isChecked() && viewer().mnuThumbnailsCacheThumbnails->isChecked());
    viewer().mnuThumbnailsOverwrite->trigger();
    viewer().mnuThumbnailsCacheThumbnails->trigger();
    viewer().mnuThumbnailStyle->trigger();
    QVERIFY(!form<frmPreferences>().chkOverWriteThumbnails->isChecked());
    QVERIFY(!form<frmPreferences>().chkCacheThumbnails->isChecked());
    QCOMPARE(form<frmPreferences>().chkThumbNailStyle->isChecked(), viewer().mnuThumbnailStyle->isChecked());
    viewer().mnuThumbnailStyle->trigger();
    static_cast<ScriptedDialogs &>(dialogs()).answerColor(QColor(10, 20, 30));
    viewer().mnuViewerThumbnailBackgroundColor->trigger();
    QCOMPARE(viewer().ThumbnailBackColor, QColor(10, 20, 30));
    QVERIFY(!viewer().mnuOptionsPreferences[3]->isVisible()); // the player has no page
    QTimer::singleShot(0, &form<frmPreferences>(), [] { form<frmPreferences>().cmdOK_Click(); });
    viewer().mnuOptionsPreferences[6]->trigger();
    QCOMPARE(form<frmPreferences>().SSTab1->currentIndex(), int(frmPreferences::ThumbnailOptions));
}

void tst_thumbnailcommands::clearingAsksAndTells_data()
{
    QTest::addColumn<bool>("all");
    QTest::addColumn<bool>("yes");
    QTest::newRow("all sizes") << true << true;
    QTest::newRow("this size") << false << true;
    QTest::newRow("not at all") << true << false;
}

void tst_thumbnailcommands::clearingAsksAndTells()
{
    QFETCH(bool, all);
    QFETCH(bool, yes);
    open();
    auto &cache = form<frmDataBase>();
    QVERIFY(cache.DatabaseOpen);
    const auto store = [&](int size) {
        QImage square(size, size, QImage::Format_RGB32);
        square.fill(Qt::red);
        cache.ImageBox1.setPolyPicture(LoadedPicture::fromPicture(Picture::fromImage(square)));
        cache.Store_Click(true, QStringLiteral("/kept"), 1, 1, QDate(2026, 11, 23));
    };
    const auto holds = [&](int size) {
        cache.OpenImagesDatabase(QString::number(size));
        return cache.Find_Click(QStringLiteral("/kept"), size);
    };
    store(100);
    store(60);
    auto &answers = static_cast<ScriptedDialogs &>(dialogs());
    answers.answer(yes ? MessageBox::Answer::Yes : MessageBox::Answer::No);
    if (yes)
        answers.answer(MessageBox::Answer::Ok);
    (all ? viewer().mnuThumbnailsClearAllCache : viewer().mnuThumbnailsClearCache)->trigger();
    const MessageBox question{QStringLiteral("Delete Thumbnail cache:"),
        QStringLiteral("Are you sure you want to delete the thumbnail cache?"), MessageBox::Icon::Question,
        MessageBox::Buttons::YesNo, MessageBox::Answer::No};
    QCOMPARE(answers.boxes.size(), yes ? 2 : 1);
    QVERIFY(answers.boxes[0] == question);
    QVERIFY(!yes
        || (answers.boxes[1].title == QLatin1String("Thumbnail Cache:")
            && answers.boxes[1].text == QLatin1String("Thumbnail Cache Cleared.")));
    QVERIFY(viewer().mnuThumbnailS->isEnabled());
    QCOMPARE(holds(60), !(all && yes));
    QCOMPARE(holds(100), !yes);
}

void tst_thumbnailcommands::compactionIsTold()
{
    open();
    QString told;
    int refused = 0;
    setYieldHook([&](int) {
        if (isLoaded<frmMessage>())
            told = form<frmMessage>().lblMessage->text();
        refused += !unload<frmThumbNail>();
    });
    viewer().mnuThumbnailsCompact->trigger();
    setYieldHook({});
    QCOMPARE(told, QStringLiteral("\nCompacting Thumbnail Database\nthis may take several minutes."));
    QVERIFY(refused > 0 && isLoaded<frmThumbNail>());
    QVERIFY(!isLoaded<frmMessage>());
    QVERIFY(viewer().mnuThumbnailS->isEnabled());
}

/// Its window comes to the front and goes again while the cache is at work.
void tst_thumbnailcommands::aRunLeavesTheMenuOn()
{
    fillList(3);
    open();
    setYieldHook([&](int) { viewer().Form_Activate(); });
    viewer().mnuThumbnailsGenerateAll->trigger();
    setYieldHook({});
    QVERIFY(viewer().mnuThumbnailS->isEnabled());
    QCOMPARE(cell(3)->picture().size(), QSize(100, 100));
}

void tst_thumbnailcommands::aRunKeepsViewerAndCache_data()
{
    QTest::addColumn<QString>("inside");
    for (const char *inside : {"statistics", "a page", "another size"})
        QTest::newRow(inside) << QString::fromLatin1(inside);
}

void tst_thumbnailcommands::aRunKeepsViewerAndCache()
{
    QFETCH(QString, inside);
    fillList(2);
    open();
    QAction *closing = viewer().toolbarButton(QStringLiteral("Close"));
    int opened = 0;
    int closable = 0;
    bool disturbing = false;
    setYieldHook([&](int yield) {
        if (disturbing)
            return;
        const ScopedFlag once(disturbing);
        if (inside == QLatin1String("statistics")) {
            QTimer::singleShot(0, this, [&] { opened += isLoaded<frmDatabaseStats>() && unload<frmDatabaseStats>(); });
            viewer().mnuThumbnailStats_Click();
        } else if (inside == QLatin1String("a page"))
            viewer().SetItUp();
        else if (yield == 1)
            viewer().mnuViewerThumbNailSize_Click(140);
        closable +=
            isLoaded<frmMakeThumbNails>() && (closing->isEnabled() || viewer().mnuViewerCloseViewer->isEnabled());
    });
    viewer().mnuThumbnailsGenerateAllSizes->trigger();
    setYieldHook({});
    QCOMPARE(opened, 0);
    QCOMPARE(closable, 0);
    QVERIFY(closing->isEnabled() && viewer().mnuViewerCloseViewer->isEnabled());
    QCOMPARE(viewer().ThumbnailSize, inside == QLatin1String("another size") ? 140 : 100);
    QCOMPARE(currentThumbnailSize(), viewer().ThumbnailSize);
    viewer().mnuViewerThumbNailSize_Click(100);
}

void tst_thumbnailcommands::statisticsAreWaitedFor()
{
    open();
    bool waited = false;
    QTimer::singleShot(0, this, [&] {
        waited = yieldDepth() > 0 && form<frmDatabaseStats>().IsOpen;
        form<frmDatabaseStats>().OKButton->click();
    });
    viewer().mnuThumbnailStats->trigger();
    QVERIFY(waited);
    QVERIFY(!isLoaded<frmDatabaseStats>());
    // The end of the viewer ends the wait too.
    QTimer::singleShot(0, this, [] { unload<frmThumbNail>(); });
    viewer().mnuThumbnailStats->trigger();
    QVERIFY(!isLoaded<frmThumbNail>());
}

void tst_thumbnailcommands::withoutACacheItsMenuIsOff()
{
    form<frmDataBase>().DatabaseOpen = false;
    open();
    QVERIFY(!viewer().mnuThumbnailS->isEnabled());
    QVERIFY(!viewer().mnuThumbnailsCacheThumbnails->isChecked());
    QVERIFY(form<frmPreferences>().chkCacheThumbnails->isChecked());
    QCOMPARE(shownCells(), upTo(35));
}

void tst_thumbnailcommands::noKeyBelongsToTwoCommands()
{
    QStringList keys;
    for (const ThumbnailMenuRow &row : thumbnailMenuRows()) {
        const QString key = QString::fromLatin1(row.shortcut);
        QVERIFY2(key.isEmpty() || !keys.contains(key), row.shortcut);
        keys << key;
    }
    QVERIFY(keys.size() > 30);
}

QTEST_MAIN(tst_thumbnailcommands)
#include "tst_thumbnailcommands.moc"
