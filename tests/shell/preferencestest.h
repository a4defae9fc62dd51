#pragma once

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/settings.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>
#include <QtWidgets>

template <class T> T *control(const char *name)
{
    T *found = form<frmPreferences>().findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no control %s", name);
    return found;
}

inline QString stored(const char *key)
{
    return option(key, "none");
}

inline void click(const char *name)
{
    control<QAbstractButton>(name)->click();
}

/// Each test has a home of its own and a window of options that was just loaded.
class PreferencesTest : public QObject
{
protected:
    void start()
    {
        m_home = std::make_unique<TemporaryHome>();
        useBuiltModules();
        globals = {};
        m_dialogs = &ScriptedDialogs::install();
        form<frmPreferences>();
    }

    void end()
    {
        setDialogs(nullptr);
        closeWindows();
        QApplication::setPalette(QPalette());
    }

    /// As the end of the program does; a next start may follow.
    void closeWindows()
    {
        globals.ProgramExiting = true;
        unload<frmPreferences>();
        unload<frmMainViewer>();
        unload<checkjpg>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        globals = {};
    }

    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
};
