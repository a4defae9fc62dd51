#include "actions/progressline.h"

#include <cstdio>

#include <unistd.h>

namespace {

bool isTerminal()
{
    const QByteArray terminal = qgetenv("TERM");
    return ::isatty(STDERR_FILENO) && !terminal.isEmpty() && terminal != "dumb";
}

/// Control sequences of ECMA-48 and of the VT100: to the start of the line, the rest of the line empty, and no wrapping
/// between the two last ones, so that a long name is cut and the line stays one.
constexpr char lineStart[] = "\r\033[K";
constexpr char wrappingOff[] = "\033[?7l";
constexpr char wrappingOn[] = "\033[?7h";

}

ProgressLine::ProgressLine(bool wanted)
    : m_kind(isTerminal() ? Kind::Terminal
            : wanted      ? Kind::Lines
                          : Kind::None)
{
}

void ProgressLine::show(int percent, const QString &text)
{
    if (m_kind == Kind::None || (m_kind == Kind::Lines && percent == m_percent))
        return;
    m_percent = percent;
    const QByteArray told = QStringLiteral("%1% %2").arg(percent, 3).arg(text).toLocal8Bit();
    if (m_kind == Kind::Lines)
        std::fprintf(stderr, "%s\n", told.constData());
    else
        std::fprintf(stderr, "%s%s%s%s", lineStart, wrappingOff, told.constData(), wrappingOn);
    std::fflush(stderr);
    m_shown = m_kind == Kind::Terminal;
}

void ProgressLine::clear()
{
    if (m_shown)
        std::fputs(lineStart, stderr);
    std::fflush(stderr);
    m_shown = false;
}

void ProgressLine::tell(const QString &sentence)
{
    clear();
    std::fprintf(stderr, "lumora: %s\n", sentence.toLocal8Bit().constData());
    std::fflush(stderr);
}
