#pragma once

#include "platform/dialogs.h"

#include <QQueue>
#include <QVector>

#include <functional>
#include <optional>
#include <variant>

/// A double of the dialogs: answers in the order they were scripted, keeps what was asked, and makes the test fail for
/// a box nobody expected and, at its end, for an answer nobody asked for.
class ScriptedDialogs : public Dialogs
{
public:
    ~ScriptedDialogs() override;

    /// Puts a fresh double in and gives it.
    static ScriptedDialogs &install();

    void answer(MessageBox::Answer answer) { m_answers.enqueue(answer); }
    void answerFile(std::optional<FileAnswer> answer) { m_files.enqueue(std::move(answer)); }
    void answerText(std::optional<QString> answer) { m_texts.enqueue(std::move(answer)); }
    void answerColor(std::optional<QColor> answer) { m_colors.enqueue(std::move(answer)); }

    /// For a routine that was made to end before it asked.
    void forgetAnswers() { m_answers.clear(); }

    QVector<MessageBox> boxes;
    QVector<FileQuestion> fileQuestions;
    QVector<QString> textPrompts;
    QVector<QString> textTitles;
    QVector<QString> textValues; ///< what stood in the field at first

    MessageBox::Answer show(QWidget *owner, const MessageBox &box) override;
    std::optional<FileAnswer> openFile(QWidget *owner, const FileQuestion &question) override;
    std::optional<FileAnswer> saveFile(QWidget *owner, const FileQuestion &question) override;
    std::optional<QString> chooseFolder(QWidget *owner, const QString &title, const QString &start) override;
    std::optional<QString> inputText(
        QWidget *owner, const QString &title, const QString &prompt, const QString &value) override;
    std::optional<QColor> chooseColor(QWidget *owner, const QColor &start) override;

private:
    QQueue<MessageBox::Answer> m_answers;
    QQueue<std::optional<FileAnswer>> m_files;
    QQueue<std::optional<QString>> m_texts;
    QQueue<std::optional<QColor>> m_colors;
};

/// Runs `work` undisturbed once to count its yields, then once for each yield with `disturb` called at exactly that
/// yield; `prepare` runs before and `check` after each run.
void forEachYield(const std::function<void()> &prepare, const std::function<void()> &work,
    const std::function<void()> &disturb, const std::function<void(int yield)> &check);

/// Shows the Main Viewer, without the start windows and without a player, and waits for its first activation.
bool showMainViewer();
