#pragma once

#include "ui/controls.h"
#include "ui/form.h"
#include "ui/imagepane.h"

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

/// The current item over the whole screen, without a frame: the window of the full screen show and of the command
/// "Display In Full Screen Viewer". What it shows is put into it by frmMainViewer::ShowInFullScreen.
class frmSlideShowFullScreen : public FormWindow
{
    Q_OBJECT
public:
    explicit frmSlideShowFullScreen(QWidget *parent = nullptr);

    CONTROL(picImage, QFrame); ///< the whole screen; the others stand on it
    ImagePane *imgImage;
    CONTROL(lblFileName, QLabel); ///< "Stopped" while the show pauses, the play time of a sound or a video
    CONTROL(cmdClose, QPushButton); ///< in sight while the pointer is
    CONTROL(Text1, QLabel); ///< the name of the file, above the picture
    CONTROL(Text2, QLabel); ///< the same, directly above it

    QTimer tmrPointer; ///< runs out a moment after the pointer was moved

    /// Whether the window is there and in sight.
    static bool isUp();
    /// Comes up in front, on the screen that `viewer` is on.
    void showOver(const QWidget &viewer);
    /// Puts a picture of `size` pixels in the place of the one on show, at once and without a frame between them. An
    /// empty name leaves out the two boxes.
    void showPicture(const std::shared_ptr<const LoadedPicture> &picture, QSize size, const QString &name);
    /// The play time of what the player of the Main Viewer plays; nothing for an empty text.
    void showPlayTime(const QString &text);
    void showPaused(bool paused);
    bool isPaused() const;
    /// The pixels of the screen that a picture has here.
    QSize paneSize() const;

    void cmdClose_Click();
    /// A key by its code: 13 Enter, 27 Escape, 32 Space, 33 Page Up, 34 Page Down. False for any other.
    bool KeyDown(int keyCode);

    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void layOut();
    void placeLabel();
    void togglePause();
    void step(int direction);
    void showPointer();
    void hidePointer();
    QSize m_pictureSize;
};
