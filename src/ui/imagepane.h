#pragma once

#include "engine/loadedpicture.h"

#include <QImage>
#include <QWidget>

/// `Image1`: shows one still picture stretched over its rectangle, on a checkerboard where the picture is transparent.
///
/// The pixels are scaled once per size, in device pixels, with an area-averaging filter; painting afterwards is a copy.
class ImagePane : public QWidget
{
    Q_OBJECT
public:
    explicit ImagePane(QWidget *parent = nullptr);
    ~ImagePane() override;

    /// Null empties it.
    void setPicture(std::shared_ptr<const LoadedPicture> picture);
    std::shared_ptr<const LoadedPicture> picture() const;
    bool isEmpty() const;

    /// Makes a picture ready for a pane of `size` units on a desktop scaled by `ratio`, on any thread: showing it there
    /// is a copy then.
    static void prepare(const LoadedPicture &picture, QSize size, double ratio);

Q_SIGNALS:
    void wheelTurned(int steps, QPoint position);
    void dragged(QPoint offset);
    void doubleClicked();
    /// A picture has been painted for the first time since setPicture.
    void painted();

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
