#pragma once

#include <QAction>
#include <QObject>
#include <QVector>

class QToolBar;

/// Keeps every command of a toolbar in sight while its captions stand at the right of the icons, where they need the
/// most room: the buttons of one group after the other show their icon alone, until the rest fits into the width of the
/// window. A button without a caption is never wider than its icon. Captions below the icons are left as they are.
class ToolbarCaptions : public QObject
{
    Q_OBJECT
public:
    /// `leftOutFirst`: the buttons whose icons say enough, the clearest first. Goes with the bar.
    ToolbarCaptions(QToolBar *bar, QVector<QVector<QAction *>> leftOutFirst);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fit();
    void setStyle(QAction *action, Qt::ToolButtonStyle style) const;

    QToolBar *m_bar;
    QVector<QVector<QAction *>> m_leftOutFirst;
    bool m_fitting = false;
};
