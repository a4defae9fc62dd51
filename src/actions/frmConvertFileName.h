#pragma once

#include "ui/animation.h"
#include "ui/controls.h"
#include "ui/form.h"
#include "ui/pathlabel.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

/// The progress window of conversion, copy and delete. It is shown without waiting for it, and while it is on screen
/// the other windows take no input and no commands of later starts: the list stays what the run has begun with.
class frmConvertFileName : public FormDialog
{
    Q_OBJECT
public:
    explicit frmConvertFileName(QWidget *parent = nullptr);

    CONTROL(Animation1, Animation);
    CONTROL(lblFrom, QLabel);
    CONTROL(lblFileName, PathLabel); ///< source
    CONTROL(lblTo, QLabel);
    CONTROL(lblConvertFileName, PathLabel); ///< target
    CONTROL(lblPercent, QLabel);
    CONTROL(ProgressBar1, QProgressBar); ///< 0 to 100
    CONTROL(cmdCancel, QPushButton);

    static constexpr int usualHeight = 4100; ///< twips
    static constexpr int deleteHeight = 2800;

    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;

    /// Shows the window in the middle of its owner, and returns at once.
    void showOver(QWidget *owner);
    /// In twips. Below the usual height there is no room for the progress line.
    void setHeight(int twips);
    /// Raises `cancelFlag` of the globals, nothing more.
    void cmdCancel_Click();

    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void openUsualFilm();
    QWidget *m_progressLine; ///< ProgressBar1 and lblPercent
};
