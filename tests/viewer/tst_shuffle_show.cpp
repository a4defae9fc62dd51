#include "viewer/showtest.h"

/// The show and the steps by hand in shuffle mode.
class tst_shuffle_show : public ShowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(start()); }
    void init() { m_dialogs = &fresh(); }
    void cleanup() { setDialogs(nullptr); }

    void shuffleShowsEachOnceAndStops();
    void shuffleGoesRoundAgain();
    void shuffleByHandAsksAtItsEnd();
    void theListChangesWhileTheShuffleAsks();
    void theToolbarsNextShuffles();

private:
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_shuffle_show::shuffleShowsEachOnceAndStops()
{
    fill(pictures(5));
    viewer().mnuSlideShowShuffleOrder->trigger();
    for (int run = 0; run < 2; ++run) {
        QSet<int> seen;
        viewer().mnuSlideShowRunSlideShow_Click();
        for (int i = 0; i < 5; ++i) {
            QVERIFY(viewer().isShowRunning());
            seen.insert(current());
            QCOMPARE(viewer().lstDisplay->selectedIndices(), QList<int>{current() - 1});
            tick();
        }
        QCOMPARE(seen.size(), 5);
        QVERIFY(isIdle());
        QVERIFY2(!globals.ShowStopRequested, "the next click starts another run");
        QCOMPARE(m_dialogs->boxes.size(), 0);
    }
}

void tst_shuffle_show::shuffleGoesRoundAgain()
{
    fill(pictures(3));
    viewer().mnuSlideShowShuffleOrder->trigger();
    viewer().mnuSlideShowLoopAround->setChecked(true);
    viewer().mnuSlideShowRunSlideShow_Click();
    for (int i = 0; i < 3; ++i)
        tick();
    QVERIFY(viewer().isShowRunning());
    QCOMPARE(globals.ShuffleCount, 1);
    // A list that has grown is another one, and none of it has been shown.
    viewer().lstDisplay->addItem(pictures(4).last());
    viewer().lblCount->setText(QStringLiteral("4"));
    tick();
    QCOMPARE(globals.ShuffleHistory.size(), 5);
    QCOMPARE(globals.ShuffleCount, 1);
    viewer().mnuSlideShowRunSlideShow_Click();
}

void tst_shuffle_show::shuffleByHandAsksAtItsEnd()
{
    fill(pictures(3));
    viewer().mnuSlideShowShuffleOrder->trigger();
    for (int i = 0; i < 3; ++i)
        viewer().mnuSlideShowShuffleMediaFile->trigger();
    QCOMPARE(globals.ShuffleCount, 3);
    const int last = current();

    m_dialogs->answer(MessageBox::Answer::No);
    viewer().PickShuffleItem();
    QCOMPARE(current(), last);
    QCOMPARE(globals.ShuffleCount, 3);
    const MessageBox asked = m_dialogs->boxes.last();
    QCOMPARE(asked.title, QStringLiteral("Rest Shuffle History"));
    QVERIFY(asked.text.startsWith(QLatin1String(
        "You have 'Shuffle Mode' enabled under the 'Media Show' menu and have not enabled 'Loop Around Mode' under the "
        "'Media Show menu.  Do you want to 'Reset the Shuffle History Media List'?  This will allow")));
    QVERIFY(asked.icon == MessageBox::Icon::Question && asked.buttons == MessageBox::Buttons::YesNo);

    m_dialogs->answer(MessageBox::Answer::Yes);
    m_dialogs->answer(MessageBox::Answer::Ok);
    viewer().PickShuffleItem();
    QCOMPARE(m_dialogs->boxes.last().title, QStringLiteral("Reset Shuffle History"));
    QCOMPARE(m_dialogs->boxes.last().text, QStringLiteral("Shuffle Media History List Reset"));
    QCOMPARE(globals.ShuffleCount, 1);

    viewer().mnuSlideShowLoopAround->setChecked(true);
    for (int i = 0; i < 3; ++i)
        viewer().PickShuffleItem();
    QVERIFY2(globals.ShuffleCount == 1, "round again without a question");
}

void tst_shuffle_show::theListChangesWhileTheShuffleAsks()
{
    // The answer is Yes, and comes with another list: an empty one, then a longer one.
    struct ChangingDialogs : Dialogs
    {
        std::function<void()> change;
        MessageBox::Answer show(QWidget *, const MessageBox &) override
        {
            change();
            return MessageBox::Answer::Yes;
        }
        std::optional<FileAnswer> openFile(QWidget *, const FileQuestion &) override { return {}; }
        std::optional<FileAnswer> saveFile(QWidget *, const FileQuestion &) override { return {}; }
        std::optional<QString> chooseFolder(QWidget *, const QString &, const QString &) override { return {}; }
        std::optional<QString> inputText(QWidget *, const QString &, const QString &, const QString &) override
        {
            return {};
        }
        std::optional<QColor> chooseColor(QWidget *, const QColor &) override { return {}; }
    };
    for (const int entries : {0, 6}) {
        fresh();
        fill(pictures(2));
        viewer().mnuSlideShowShuffleOrder->trigger();
        viewer().PickShuffleItem();
        viewer().PickShuffleItem();
        auto changing = std::make_unique<ChangingDialogs>();
        changing->change = [&] {
            viewer().ClearDisplayList();
            if (entries > 0)
                fill(pictures(entries));
        };
        setDialogs(std::move(changing));
        viewer().PickShuffleItem();
        QCOMPARE(globals.ShuffleHistory.size(), entries + 1);
        QCOMPARE(globals.ShuffleCount, entries > 0 ? 1 : 0);
        QCOMPARE(globals.CurrentListIndex, entries > 0 ? int(globals.ShuffleHistory.indexOf(true)) : 0);
    }
}

void tst_shuffle_show::theToolbarsNextShuffles()
{
    fill(pictures(8));
    viewer().mnuSlideShowShuffleOrder->trigger();
    shuffleNumbers().setSource([] { return 0.75; });
    viewer().toolbarButton(QStringLiteral("Next"))->trigger();
    QCOMPARE(current(), 6);
    viewer().mnuPictureNext->trigger();
    QVERIFY2(current() == 7, "the menu goes through the list in its order");
    viewer().toolbarButton(QStringLiteral("Previous"))->trigger();
    QCOMPARE(current(), 6);
    viewer().mnuSlideShowForwardOrder->trigger();
    viewer().toolbarButton(QStringLiteral("Next"))->trigger();
    QCOMPARE(current(), 7);
}

QTEST_MAIN(tst_shuffle_show)
#include "tst_shuffle_show.moc"
