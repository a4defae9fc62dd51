#pragma once

#include <QDialog>
#include <QEvent>
#include <QMainWindow>
#include <QPointer>
#include <QWidget>

/// A window class of the program: one global instance, made at first use (see form<T>()), with the four events below.
class Form
{
public:
    virtual ~Form() = default;

    /// Runs once, after construction and after form<T>() can find the instance.
    virtual void Form_Load() { }
    /// Runs at each activation of the window, and once when it is first shown.
    virtual void Form_Activate() { }
    /// Asked before the window goes, by the user or by unload<T>(). Setting `cancel` keeps it.
    virtual void Form_QueryUnload(bool &cancel) { Q_UNUSED(cancel); }
    /// The window goes.
    virtual void Form_Unload() { }

    /// It has gone and waits only for the event loop to take it away: another instance stands for its class by then.
    bool isUnloaded() const { return m_unloaded; }

protected:
    /// Turns Qt's events into the four; called by the windows' event().
    void formEvent(QWidget *window, QEvent *event);

private:
    friend bool unloadForm(QWidget *window);
    bool m_unloaded = false;
    bool m_activatedOnce = false;
    bool m_activationQueued = false;
};

/// Form_QueryUnload, Form_Unload, hide, deleteLater. False when the window wants to stay.
bool unloadForm(QWidget *window);

template <class Base> class FormOf : public Base, public Form
{
public:
    using Base::Base;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::Close) {
            if (!unloadForm(this))
                event->ignore();
            return true;
        }
        const bool handled = Base::event(event);
        formEvent(this, event);
        return handled;
    }
};

using FormWindow = FormOf<QWidget>;
using FormMainWindow = FormOf<QMainWindow>;
using FormDialog = FormOf<QDialog>;

namespace forms {
template <class T> QPointer<T> &slot()
{
    static QPointer<T> instance;
    return instance;
}
}

/// The one instance of a window class, made and loaded at first use.
template <class T> T &form()
{
    QPointer<T> &slot = forms::slot<T>();
    if (!slot || slot->isUnloaded()) {
        slot = new T;
        slot->setObjectName(QString::fromLatin1(T::staticMetaObject.className()));
        slot->Form_Load();
    }
    return *slot;
}

template <class T> bool isLoaded()
{
    return forms::slot<T>() && !forms::slot<T>()->isUnloaded();
}

/// Unloads a window when it is there; a window that never was is not made for it. False when it wants to stay.
template <class T> bool unload()
{
    if (!isLoaded<T>())
        return true;
    T *window = forms::slot<T>();
    if (!unloadForm(window))
        return false;
    forms::slot<T>().clear();
    return true;
}
