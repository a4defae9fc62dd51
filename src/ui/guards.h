#pragma once

#include <QGuiApplication>
#include <QPointer>
#include <QWidget>

#include <utility>

/// Raises a flag for the length of a scope and puts back what was there.
class ScopedFlag
{
public:
    explicit ScopedFlag(bool &flag)
        : m_flag(flag)
        , m_before(std::exchange(flag, true))
    {
    }
    ~ScopedFlag() { m_flag = m_before; }
    ScopedFlag(const ScopedFlag &) = delete;
    ScopedFlag &operator=(const ScopedFlag &) = delete;

private:
    bool &m_flag;
    bool m_before;
};

/// The busy pointer for the length of a scope; the pointer that was there comes back.
class Hourglass
{
public:
    Hourglass() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Hourglass() { QGuiApplication::restoreOverrideCursor(); }
    Hourglass(const Hourglass &) = delete;
    Hourglass &operator=(const Hourglass &) = delete;
};

/// Holds a widget disabled for the length of a scope.
class DisabledWhile
{
public:
    explicit DisabledWhile(QWidget *widget)
        : m_widget(widget)
        , m_before(widget->isEnabled())
    {
        widget->setEnabled(false);
    }
    ~DisabledWhile() { m_widget->setEnabled(m_before); }
    DisabledWhile(const DisabledWhile &) = delete;
    DisabledWhile &operator=(const DisabledWhile &) = delete;

private:
    QWidget *m_widget;
    bool m_before;
};

/// The last frame stays on the screen for the length of a scope: what is taken apart and put together meanwhile is seen
/// at its end.
class FrameHeld
{
public:
    explicit FrameHeld(QWidget *widget)
        : m_widget(widget->updatesEnabled() ? widget : nullptr)
    {
        widget->setUpdatesEnabled(false);
    }
    ~FrameHeld()
    {
        if (m_widget)
            m_widget->setUpdatesEnabled(true);
    }
    FrameHeld(const FrameHeld &) = delete;
    FrameHeld &operator=(const FrameHeld &) = delete;

private:
    QPointer<QWidget> m_widget;
};
