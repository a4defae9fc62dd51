#pragma once

#include <QScrollArea>

/// A page that scrolls where the window is too small for it, and wants to be seen as a whole.
class PageArea : public QScrollArea
{
public:
    explicit PageArea(QWidget *page)
        : QScrollArea(page->parentWidget())
    {
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setWidget(page);
        // The ground of the tab, not one of its own.
        viewport()->setAutoFillBackground(false);
        page->setAutoFillBackground(false);
    }
    // With a little to spare: on scaled screens rounding takes a pixel here and there.
    QSize sizeHint() const override { return widget()->sizeHint() + QSize(8, 4); }
};
