#pragma once

#include <QString>
#include <QWidget>

#include <array>
#include <cstddef>

/// Declares a control of a window: member, control and objectName from one word. `CONTROL(cmdUp, QPushButton)` in the
/// class makes `QPushButton *cmdUp` with the objectName "cmdUp", child of the window until a layout moves it.
#define CONTROL(name, Type) Type *name = ::makeControl<Type>(this, #name)

template <class T> T *makeControl(QWidget *owner, const char *name)
{
    T *control = new T(owner);
    control->setObjectName(QString::fromLatin1(name));
    return control;
}

/// A control array: indices First to Last, objectName "chkFileType(13)".
template <class T, int First, int Last> class ControlArray
{
public:
    static constexpr int first = First;
    static constexpr int last = Last;

    ControlArray(QWidget *owner, const char *name)
    {
        for (int i = First; i <= Last; ++i) {
            T *control = new T(owner);
            control->setObjectName(QStringLiteral("%1(%2)").arg(QString::fromLatin1(name)).arg(i));
            (*this)[i] = control;
        }
    }
    T *&operator[](int index) { return m_controls[static_cast<std::size_t>(index - First)]; }
    T *operator[](int index) const { return m_controls[static_cast<std::size_t>(index - First)]; }
    auto begin() const { return m_controls.begin(); }
    auto end() const { return m_controls.end(); }

private:
    std::array<T *, static_cast<std::size_t>(Last - First + 1)> m_controls{};
};

#define CONTROL_ARRAY(name, Type, First, Last)                                                                         \
    ControlArray<Type, First, Last> name                                                                               \
    {                                                                                                                  \
        this, #name                                                                                                    \
    }
