#include "thumbnails/frmMakeThumbNails.h"

#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmThumbNail.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// The progress window of a thumbnail run: what it says, what stops the run, and its preview.
class tst_frmMakeThumbNails : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        useBuiltModules();
        m_home = std::make_unique<TemporaryHome>();
        QVERIFY(showMainViewer());
    }
    void cleanup()
    {
        unload<frmMakeThumbNails>();
        unload<frmThumbNail>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void theWindowIsOneLargeButton();
    void thePreviewWidensTheWindow();

private:
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_frmMakeThumbNails::theWindowIsOneLargeButton()
{
    auto &window = form<frmMakeThumbNails>();
    window.showOver(&form<frmThumbNail>());
    QVERIFY(window.windowTitle().isEmpty());
    QCOMPARE(window.lblInformation->text(), QStringLiteral("&Click Window to cancel processing."));
    QCOMPARE(window.lblMakingThumbnail->text(), QStringLiteral("Making Thumbnail:"));
    QCOMPARE(window.lblThumbnailsPer->text(), QStringLiteral("Thumbnails"));
    QCOMPARE(window.lblPerMin->text(), QStringLiteral("per / min"));
    QCOMPARE(window.lblShowThumbnail->text(), QStringLiteral("&Show Thumbnail"));
    QVERIFY(window.KeepGoing);
    const auto stops = [&](QWidget *widget) {
        window.KeepGoing = true;
        QTest::mouseClick(widget, Qt::LeftButton);
        return !window.KeepGoing;
    };
    for (QWidget *widget : std::initializer_list<QWidget *>{
             &window, window.lblFileCount, window.lblFileName, window.lblInformation, window.lblMakingThumbnail})
        QVERIFY2(stops(widget), qPrintable(widget->objectName()));
    for (QWidget *widget : std::initializer_list<QWidget *>{
             window.lblSpeed, window.lblShowThumbnail, window.chkShowThumbnail, window.pgbThumbnails})
        QVERIFY2(!stops(widget), qPrintable(widget->objectName()));
    window.KeepGoing = true;
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QVERIFY(window.focusWidget() != window.txtClose && window.KeepGoing);
    QTest::keyClick(&window, Qt::Key_C, Qt::AltModifier);
    QCOMPARE(window.focusWidget(), window.txtClose);
    QVERIFY(!window.KeepGoing);
    window.KeepGoing = true;
    QTest::keyClick(&window, Qt::Key_Escape);
    QVERIFY(!window.KeepGoing && window.isVisible());
    window.KeepGoing = true;
    QVERIFY(!unload<frmMakeThumbNails>());
    QVERIFY(!window.KeepGoing);
    window.hide();
}

void tst_frmMakeThumbNails::thePreviewWidensTheWindow()
{
    auto &window = form<frmMakeThumbNails>();
    window.showOver(&form<frmThumbNail>());
    QVERIFY(!window.chkShowThumbnail->isChecked() && !window.imgThumbnail->isVisible());
    QCOMPARE(window.width(), 560);
    QTest::mouseClick(window.lblShowThumbnail, Qt::LeftButton);
    QVERIFY(window.chkShowThumbnail->isChecked());
    QCOMPARE(window.width(), 664);
    window.showPreview(rampImage({500, 375}));
    QVERIFY(!window.imgThumbnail->pixmap(Qt::ReturnByValue).isNull());
    QTest::mouseClick(window.lblShowThumbnail, Qt::LeftButton);
    QCOMPARE(window.width(), 560);
    QVERIFY(window.imgThumbnail->pixmap(Qt::ReturnByValue).isNull());
    window.hide();
}

QTEST_MAIN(tst_frmMakeThumbNails)
#include "tst_frmMakeThumbNails.moc"
