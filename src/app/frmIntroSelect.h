#pragma once

#include "ui/controls.h"
#include "ui/form.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

/// The choice at start: five ways into the program, each a command of the Main Viewer.
class frmIntroSelect : public FormDialog
{
    Q_OBJECT
public:
    explicit frmIntroSelect(QWidget *parent = nullptr);

    CONTROL(imgLogo, QLabel);
    CONTROL(Image1, QLabel);
    CONTROL(lblHeading, QLabel);
    CONTROL_ARRAY(optSelect, QRadioButton, 0, 4);
    CONTROL_ARRAY(lblSelect, QLabel, 0, 4);
    CONTROL(chkShowAtStartUp, QCheckBox);
    CONTROL(lblShowAtStartUp, QLabel);
    CONTROL(cmdOK, QPushButton);
    CONTROL(cmdCancel, QPushButton);

    /// Whether "Show Intro Select at Startup" is on. Without it a loaded window unloads itself at once.
    static bool isWanted();

    void Form_Load() override;
    void cmdOK_Click();
    void cmdCancel_Click();
    void chkShowAtStartUp_Click();
    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeChoices();
    void layOut();
    bool clickedLabel(const QObject *label);
    bool m_running = false; ///< the chosen command is under way
};
