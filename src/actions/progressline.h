#pragma once

#include <QString>

/// What a run without a window tells on standard error: one line of progress that is written over and over on a
/// terminal, and below it the lines that stay.
class ProgressLine
{
public:
    /// Without a terminal the progress is told only when `wanted`, a line for each whole percent.
    explicit ProgressLine(bool wanted);
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void show(int percent, const QString &text);
    /// Takes the progress off the terminal.
    void clear();
    /// A line that stays, behind the program's name.
    void tell(const QString &sentence);

private:
    enum class Kind { None, Terminal, Lines } m_kind;
    bool m_shown = false;
    int m_percent = -1;
};
