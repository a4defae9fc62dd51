#pragma once

#include <QLabel>
#include <QTimer>

/// A label for a path: one line, shortened in the middle, with the whole in its tool tip. A loop may set thousands of
/// paths a second: the screen follows as often as an eye can.
class PathLabel : public QLabel
{
    Q_OBJECT
public:
    explicit PathLabel(QWidget *parent = nullptr);

    void setText(const QString &path);
    /// The path as it was set, not as it is shown.
    QString text() const { return m_path; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showPath();
    QString m_path;
    QString m_shown; ///< the path that the screen has
    QTimer m_pause;
};
