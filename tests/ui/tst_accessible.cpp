#include "actions/frmConvertFileType.h"
#include "actions/frmListManagement.h"
#include "app/frmIntroSelect.h"
#include "app/frmTip.h"
#include "app/globals.h"
#include "app/settings.h"
#include "shell/frmGradient.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmDatabaseStats.h"
#include "thumbnails/frmThumbNail.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmSelectPictureDirectoryForm.h"
#include "viewer/frmSlideShowFullScreen.h"
#include "viewer/frmlocatefiles.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QMenuBar>
#include <QtTest>

/// What a screen reader, the Tab key and the Alt key find in the windows as they are shown.
class tst_accessible : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void everyControlTellsItsName_data() { windows(); }
    void everyControlTellsItsName();
    void aLabelThatShowsAValueTellsTheValue();
    void tabReachesEveryControlAndNothingThatCannotBeSeen_data() { windows(); }
    void tabReachesEveryControlAndNothingThatCannotBeSeen();
    void tabGoesThroughTheFolderDialogAsTheEyeDoes();
    void keysLeadToTheTabsThatAreSeen();
    void noTwoControlsShareALetter_data() { windows(); }
    void noTwoControlsShareALetter();

private:
    void windows();
    QWidget *shown();
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

/// Qt builds some controls from others: the field of a spin box, the bars of a list. The whole speaks for them.
bool isPartOfAnother(const QWidget *widget)
{
    const QWidget *parent = widget->parentWidget();
    return qobject_cast<const QAbstractSpinBox *>(parent) || qobject_cast<const QComboBox *>(parent)
        || (parent && parent->objectName().startsWith(QLatin1String("qt_scrollarea")));
}

bool takesInput(const QWidget *widget)
{
    return widget->focusPolicy() != Qt::NoFocus || qobject_cast<const QAbstractButton *>(widget)
        || qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QAbstractSlider *>(widget);
}

QString nameOf(QWidget *widget)
{
    const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    return interface ? interface->text(QAccessible::Name) : QString();
}

QString described(const QWidget *widget)
{
    return QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName();
}

/// The controls that Tab goes to, from the one that has the focus once round.
QVector<QWidget *> tabRound(QWidget *window)
{
    QVector<QWidget *> round;
    constexpr int longestRound = 200;
    for (int step = 0; step < longestRound; ++step) {
        QTest::keyClick(window, Qt::Key_Tab);
        QWidget *focused = window->focusWidget();
        if (!focused || round.contains(focused))
            break;
        round.append(focused);
    }
    return round;
}

} // namespace

void tst_accessible::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    ScriptedDialogs::install();
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    saveOption("LastVisitedFolder", m_home->path());
    globals.MediaPlayerVersion = 0;
}

void tst_accessible::cleanup()
{
    for (QWidget *window : QApplication::topLevelWidgets())
        window->hide();
}

void tst_accessible::windows()
{
    QTest::addColumn<QWidget *>("window");
    QTest::addColumn<int>("tab");
    const auto row = [](QWidget &window) { QTest::addRow("%s", qPrintable(window.objectName())) << &window << -1; };
    row(form<frmMainViewer>());
    row(form<frmSelectPictureDirectoryForm>());
    row(form<frmIntroSelect>());
    row(form<frmTip>());
    row(form<frmListManagement>());
    row(form<frmDatabaseStats>());
    row(form<frmThumbNail>());
    row(form<frmlocatefiles>());
    row(form<frmGradient>());
    row(form<frmConvertFileType>());
    row(form<frmSlideShowFullScreen>());
    frmPreferences &preferences = form<frmPreferences>();
    for (int tab = 0; tab < preferences.SSTab1->count(); ++tab) {
        if (preferences.SSTab1->isTabVisible(tab))
            QTest::addRow("frmPreferences: %s", qPrintable(preferences.SSTab1->tabText(tab)))
                << static_cast<QWidget *>(&preferences) << tab;
    }
}

/// The window of the row, active.
QWidget *tst_accessible::shown()
{
    QFETCH(QWidget *, window);
    QFETCH(int, tab);
    if (tab >= 0)
        form<frmPreferences>().SSTab1->setCurrentIndex(tab);
    window->show();
    window->activateWindow();
    if (!QTest::qWaitForWindowActive(window))
        qWarning("the window does not become active");
    return window;
}

void tst_accessible::everyControlTellsItsName()
{
    QWidget *window = shown();
    const QList<QWidget *> all = window->findChildren<QWidget *>();
    int named = 0;
    for (QWidget *widget : all) {
        if (widget->window() != window || isPartOfAnother(widget) || !takesInput(widget))
            continue;
        if (widget->isHidden() || qobject_cast<const QLabel *>(widget))
            continue; // a label takes input for its text to be copied, and is named by it
        QVERIFY2(!nameOf(widget).isEmpty(), qPrintable(described(widget)));
        ++named;
    }
    QVERIFY(named > 0);
}

void tst_accessible::aLabelThatShowsAValueTellsTheValue()
{
    frmSelectPictureDirectoryForm &dialog = form<frmSelectPictureDirectoryForm>();
    frmMainViewer &viewer = form<frmMainViewer>();
    for (QLabel *label : {dialog.lblColors, dialog.lblWidth, dialog.lblFileSize, dialog.lblHeight, dialog.lblFileName,
             viewer.lblCount, viewer.CurrentPicture}) {
        const QString before = label->text();
        label->setText(QStringLiteral("1234"));
        QCOMPARE(nameOf(label), QStringLiteral("1234"));
        QVERIFY2(!label->accessibleDescription().isEmpty(), qPrintable(label->objectName()));
        label->setText(before);
    }
}

void tst_accessible::tabReachesEveryControlAndNothingThatCannotBeSeen()
{
    QWidget *window = shown();
    const QVector<QWidget *> round = tabRound(window);
    for (const QWidget *widget : round) {
        QVERIFY2(widget->isVisible() && !widget->visibleRegion().isEmpty(), qPrintable(described(widget)));
        QVERIFY2(widget->isEnabled(), qPrintable(described(widget)));
    }
    const QList<QAbstractButton *> buttons = window->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->isVisible() && button->isEnabled() && !qobject_cast<QRadioButton *>(button)
            && button->focusPolicy() != Qt::NoFocus)
            QVERIFY2(round.contains(button), qPrintable(described(button)));
    }
}

void tst_accessible::tabGoesThroughTheFolderDialogAsTheEyeDoes()
{
    frmSelectPictureDirectoryForm &dialog = form<frmSelectPictureDirectoryForm>();
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.cmdCancel->setFocus();
    const QVector<QWidget *> expected = {dialog.cmdFolder[0], dialog.cmdFolder[1], dialog.cmdFolder[2],
        dialog.cmdFolder[3], dialog.Drive1, dialog.Dir1, dialog.File1, dialog.chkSearchSubs, dialog.cmdSelectFileTypes,
        dialog.cmdOK, dialog.cmdCancel};
    QCOMPARE(tabRound(&dialog), expected);
}

void tst_accessible::keysLeadToTheTabsThatAreSeen()
{
    frmPreferences &preferences = form<frmPreferences>();
    preferences.SSTab1->setCurrentIndex(0);
    preferences.show();
    QSet<int> seen;
    for (int step = 0; step < preferences.SSTab1->count(); ++step) {
        QTest::keyClick(preferences.SSTab1, Qt::Key_Tab, Qt::ControlModifier);
        const int tab = preferences.SSTab1->currentIndex();
        QVERIFY2(preferences.SSTab1->isTabVisible(tab), qPrintable(preferences.SSTab1->tabText(tab)));
        seen.insert(tab);
    }
    QCOMPARE(seen.size(), preferences.SSTab1->count());
}

void tst_accessible::noTwoControlsShareALetter()
{
    QWidget *window = shown();
    if (window == &form<frmConvertFileType>())
        QSKIP("two of its texts share a letter: the key goes from one to the other");
    QMap<QChar, QString> taken;
    const auto take = [&](const QString &text) {
        const qsizetype mark = QString(text).replace(QLatin1String("&&"), QLatin1String("  ")).indexOf(u'&');
        if (mark < 0)
            return true;
        const QChar letter = text[mark + 1].toUpper();
        if (taken.contains(letter))
            qWarning("%s and %s", qPrintable(text), qPrintable(taken.value(letter)));
        return !std::exchange(taken[letter], text).size();
    };
    const QList<QWidget *> all = window->findChildren<QWidget *>();
    for (QWidget *widget : all) {
        if (widget->window() != window || !widget->isVisible())
            continue;
        if (const auto *button = qobject_cast<QAbstractButton *>(widget))
            QVERIFY(take(button->text()));
        if (const auto *label = qobject_cast<QLabel *>(widget); label && label->buddy())
            QVERIFY(take(label->text()));
        if (const auto *bar = qobject_cast<QMenuBar *>(widget)) {
            const QList<QAction *> menus = bar->actions();
            for (const QAction *menu : menus)
                QVERIFY(take(menu->text()));
        }
    }
}

QTEST_MAIN(tst_accessible)
#include "tst_accessible.moc"
