#pragma once

#include "ui/controls.h"
#include "ui/form.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>

/// A magnifier that goes over a row of sheets for as long as it is seen.
class SearchAnimation : public QWidget
{
    Q_OBJECT
public:
    explicit SearchAnimation(QWidget *parent = nullptr);
    QSize sizeHint() const override { return {280, 72}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QTimer m_step;
    int m_phase = 0;
};

/// Shown while a folder search runs; it does not block. Cancel, Escape and closing it clear `SearchActive`.
class frmlocatefiles : public FormDialog
{
    Q_OBJECT
public:
    explicit frmlocatefiles(QWidget *parent = nullptr);

    CONTROL(lblInfo, QLabel);
    CONTROL(Animation1, SearchAnimation);
    CONTROL(cmdCancel, QPushButton);
    QTimer Timer1; ///< keeps the window at the front

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;
    void cmdCancel_Click();
    void Timer1_Timer();
    void reject() override;
};
