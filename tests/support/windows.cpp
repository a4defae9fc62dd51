#include "support/windows.h"

#include "app/globals.h"
#include "app/settings.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

ScriptedDialogs::~ScriptedDialogs()
{
    if (!m_answers.isEmpty() || !m_files.isEmpty() || !m_texts.isEmpty() || !m_colors.isEmpty())
        QTest::qFail("a scripted answer was never asked for", __FILE__, __LINE__);
}

ScriptedDialogs &ScriptedDialogs::install()
{
    auto dialogs = std::make_unique<ScriptedDialogs>();
    ScriptedDialogs &reference = *dialogs;
    setDialogs(std::move(dialogs));
    return reference;
}

namespace {
template <class T> T take(QQueue<T> &queue, const QString &what, T fallback)
{
    if (queue.isEmpty()) {
        QTest::qFail(qPrintable(QStringLiteral("nobody expected: ") + what), __FILE__, __LINE__);
        return fallback;
    }
    return queue.dequeue();
}
}

MessageBox::Answer ScriptedDialogs::show(QWidget *, const MessageBox &box)
{
    boxes.append(box);
    return take(m_answers, box.title + QStringLiteral(": ") + box.text, box.defaultAnswer);
}

std::optional<FileAnswer> ScriptedDialogs::openFile(QWidget *, const FileQuestion &question)
{
    fileQuestions.append(question);
    return take(m_files, question.title, std::optional<FileAnswer>());
}

std::optional<FileAnswer> ScriptedDialogs::saveFile(QWidget *, const FileQuestion &question)
{
    fileQuestions.append(question);
    return take(m_files, question.title, std::optional<FileAnswer>());
}

std::optional<QString> ScriptedDialogs::chooseFolder(QWidget *, const QString &title, const QString &)
{
    return take(m_texts, title, std::optional<QString>());
}

std::optional<QString> ScriptedDialogs::inputText(
    QWidget *, const QString &title, const QString &prompt, const QString &value)
{
    textPrompts.append(prompt);
    textTitles.append(title);
    textValues.append(value);
    return take(m_texts, title, std::optional<QString>());
}

std::optional<QColor> ScriptedDialogs::chooseColor(QWidget *, const QColor &)
{
    return take(m_colors, QStringLiteral("a colour"), std::optional<QColor>());
}

void forEachYield(const std::function<void()> &prepare, const std::function<void()> &work,
    const std::function<void()> &disturb, const std::function<void(int)> &check)
{
    int yields = 0;
    prepare();
    setYieldHook([&](int number) { yields = number; });
    work();
    setYieldHook({});
    check(0);
    for (int at = 1; at <= yields; ++at) {
        prepare();
        setYieldHook([&](int number) {
            if (number == at)
                disturb();
        });
        work();
        setYieldHook({});
        check(at);
        if (QTest::currentTestFailed())
            return;
    }
}

bool showMainViewer()
{
    saveOption("Show Intro Select at Startup", QStringLiteral("0"));
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    globals.MediaPlayerVersion = 0;
    auto &viewer = form<frmMainViewer>();
    viewer.resize(1000, 700);
    viewer.show();
    return QTest::qWaitForWindowExposed(&viewer) && QTest::qWaitFor([] { return globals.MainViewerActivated; });
}
