#include "ui/form.h"

#include <QMetaObject>

void Form::formEvent(QWidget *window, QEvent *event)
{
    // Some window systems never tell a first activation (no window manager, focus-stealing prevention), so the first
    // show counts as one. Later activations are the window system's own.
    const bool firstShow = event->type() == QEvent::Show && !m_activatedOnce;
    const bool activation = event->type() == QEvent::WindowActivate && m_activatedOnce;
    if ((!firstShow && !activation) || m_activationQueued)
        return;
    m_activationQueued = true;
    m_activatedOnce = true;
    QPointer<QWidget> guard(window);
    QMetaObject::invokeMethod(
        window,
        [this, guard] {
            m_activationQueued = false;
            if (guard && guard->isVisible() && !m_unloaded)
                Form_Activate();
        },
        Qt::QueuedConnection);
}

bool unloadForm(QWidget *window)
{
    Form *form = dynamic_cast<Form *>(window);
    if (!form)
        return !window || window->close();
    if (form->m_unloaded)
        return true;
    bool cancel = false;
    form->Form_QueryUnload(cancel);
    if (form->m_unloaded)
        return true;
    if (cancel)
        return false;
    form->m_unloaded = true;
    form->Form_Unload();
    window->hide();
    window->deleteLater();
    return true;
}
