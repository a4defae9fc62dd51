#pragma once

#include "ui/controls.h"
#include "ui/form.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QStringList>

/// The tip of the day: one tip per line of TIPOFDAY.TXT in AppFolder, else of the tips that the program brings along.
class frmTip : public FormDialog
{
    Q_OBJECT
public:
    explicit frmTip(QWidget *parent = nullptr);

    CONTROL(picBulb, QLabel);
    CONTROL(lblHeading, QLabel);
    CONTROL(lblTipText, QLabel);
    CONTROL(chkLoadTipsAtStartup, QCheckBox);
    CONTROL(cmdNextTip, QPushButton);
    CONTROL(cmdOK, QPushButton);

    void Form_Load() override;
    void cmdNextTip_Click();
    void cmdOK_Click();
    void chkLoadTipsAtStartup_Click();
    void reject() override;

private:
    QStringList m_tips;
    qsizetype m_current = 0;
};

/// The tips of a file's bytes: UTF-8, blank lines are none, a line is cut at 500 letters.
QStringList tipsOf(const QByteArray &bytes);
