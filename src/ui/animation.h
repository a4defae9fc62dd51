#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

#include <memory>

class AviFile;

/// `Animation1`: plays a short silent film (see AviFile) round and round while it can be seen. Nothing open, or a file
/// that is missing or damaged, shows nothing.
class Animation : public QWidget
{
    Q_OBJECT
public:
    explicit Animation(QWidget *parent = nullptr);
    ~Animation() override;

    /// Opens a file and plays it by itself; the empty name closes what is open. The file may be replaced afterwards.
    void Open(const QString &file);
    /// What Open was asked for last, playable or not.
    QString fileName() const { return m_file; }
    bool isPlaying() const { return m_next.isActive(); }
    /// The frame on show, in the film's own pixels; null when there is none.
    QImage frame() const { return m_picture; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void showNextFrame();

    QString m_file;
    std::unique_ptr<AviFile> m_film;
    int m_index = 0;
    QImage m_picture;
    QTimer m_next;
};
