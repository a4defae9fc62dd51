#pragma once

#include "ui/controls.h"
#include "ui/form.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>

/// A small window that says what the program is at. It never takes the focus, and work that is done at once passes
/// without a flash: until it has lasted a moment the window stays transparent where the desktop can do that.
class frmMessage : public FormWindow
{
    Q_OBJECT
public:
    explicit frmMessage(QWidget *parent = nullptr);

    CONTROL(lblMessage, QLabel);
    CONTROL(ProgressBar1, QProgressBar); ///< hidden until setProgress

    /// Shows the window over its owner, without waiting.
    void showOver(QWidget *owner, const QString &text);
    /// 0 to 100.
    void setProgress(int percent);
    /// To be called now and then by the work it reports.
    void stillWorking();

private:
    QElapsedTimer m_since;
};
