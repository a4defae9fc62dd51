#pragma once

#include <QString>

/// A message box as a value: built in a rule file, shown by platform/dialogs.h, compared word for word in tests.
struct MessageBox
{
    enum class Icon { None, Information, Question, Exclamation };
    enum class Buttons { Ok, YesNo, OkCancel };
    enum class Answer { Ok, Yes, No, Cancel };

    QString title;
    QString text;
    Icon icon = Icon::None;
    Buttons buttons = Buttons::Ok;
    Answer defaultAnswer = Answer::Ok;

    bool operator==(const MessageBox &) const = default;
};
