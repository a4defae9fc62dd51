#pragma once

#include <QIcon>
#include <QImage>
#include <QWidget>

/// A cell of the grid of thumbnails: a picture over its whole face, or a sign where there is none, with a frame while
/// it is the selected one.
class ThumbnailCell : public QWidget
{
    Q_OBJECT
public:
    explicit ThumbnailCell(QWidget *parent = nullptr);

    /// Takes the place of what was there; the picture fills the face, whatever its size is.
    void setPicture(const QImage &picture);
    QImage picture() const { return m_picture; }
    /// A sign on the palette's ground.
    void setSign(const QIcon &sign);
    QIcon sign() const { return m_sign; }
    /// 1 with a frame, 0 without.
    void setBorderStyle(int style);
    int borderStyle() const { return m_borderStyle; }

Q_SIGNALS:
    void Click();
    void DblClick();
    /// A button that was pressed here comes up.
    void MouseUp(Qt::MouseButton button, QPoint position);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void paintSign(class QPainter &painter) const;
    void paintFrame(class QPainter &painter) const;
    QImage m_picture;
    QIcon m_sign;
    int m_borderStyle = 0;
};
