#pragma once

/// Keeps the desktop from blanking and locking the screen while somebody watches without touching anything: a show
/// runs, a video plays. Each who wants that has an object; the desktop is asked once, by whoever comes first, and told
/// by the last one that it is over.
///
/// Asked are org.freedesktop.ScreenSaver, the session manager of GNOME and its relatives, and the Inhibit portal, in
/// this order; the first that answers counts. No call waits for any of them, and where there is none, or no session
/// bus, the desktop does what it always does. https://specifications.freedesktop.org/idle-inhibit-spec/latest/
class ScreenAwake
{
public:
    ScreenAwake() = default;
    /// Releases.
    ~ScreenAwake();
    ScreenAwake(const ScreenAwake &) = delete;
    ScreenAwake &operator=(const ScreenAwake &) = delete;

    void hold();
    void release();
    void setHeld(bool held) { held ? hold() : release(); }
    bool isHeld() const { return m_held; }

private:
    bool m_held = false;
};
