#pragma once

#include "ui/controls.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

/// The group of the preferences that chooses the picture behind the Main Viewer's menu. Each choice is stored and shown
/// there at once.
class MenuBackgroundBox : public QGroupBox
{
    Q_OBJECT
public:
    explicit MenuBackgroundBox(QWidget *parent = nullptr);

    CONTROL(imgMenuBackground, QLabel); ///< what is chosen
    CONTROL(cmdMenuPicture, QPushButton);
    CONTROL(cmdPreviousPattern, QPushButton);
    CONTROL(cmdNextPattern, QPushButton);
    CONTROL(cmdNoMenuPicture, QPushButton);

    void cmdMenuPicture_Click();
    /// Takes the pattern that is `step` places further in the row of those that are there, round at its ends; the first
    /// or the last one when none was taken yet.
    void showPattern(int step);
    void cmdNoMenuPicture_Click();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void takePicture(const QString &path);
    void showChoice();

    int m_pattern = 0; ///< number of the last pattern taken; 0: none, or something else since
};
