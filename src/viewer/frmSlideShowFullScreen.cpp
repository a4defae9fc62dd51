#include "viewer/frmSlideShowFullScreen.h"

#include "app/globals.h"
#include "ui/background.h"
#include "viewer/fit.h"
#include "viewer/frmBackground.h"
#include "viewer/frmMainViewer.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

namespace {

constexpr int pointerStays = 2000; ///< milliseconds after the last move
constexpr int margin = 16;
constexpr int boxHeight = 25;
constexpr int upperBox = 50; ///< above the top of the picture
constexpr int lowerBox = 25;

enum KeyCode { Enter = 13, Escape = 27, Space = 32, PageUp = 33, PageDown = 34 };

int keyCodeOf(int key)
{
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return Enter;
    case Qt::Key_Escape:
        return Escape;
    case Qt::Key_Space:
        return Space;
    case Qt::Key_PageUp:
        return PageUp;
    case Qt::Key_PageDown:
        return PageDown;
    default:
        return 0;
    }
}

QString stoppedText()
{
    return frmSlideShowFullScreen::tr("Stopped");
}

}

frmSlideShowFullScreen::frmSlideShowFullScreen(QWidget *parent)
    : FormWindow(parent, Qt::Window | Qt::FramelessWindowHint)
    , imgImage(new ImagePane(picImage))
{
    setWindowTitle(tr("Tessaly Lumora - Full Screen Media Viewer"));
    imgImage->setObjectName(QStringLiteral("imgImage"));
    imgImage->setAccessibleName(tr("Current image"));
    picImage->setAccessibleName(tr("Full screen picture"));
    picImage->setFocusPolicy(Qt::StrongFocus);
    for (QLabel *box : {Text1, Text2}) {
        box->setParent(picImage);
        box->setTextFormat(Qt::PlainText);
        box->setAlignment(Qt::AlignCenter);
        box->hide();
    }
    lblFileName->setParent(picImage);
    lblFileName->setTextFormat(Qt::PlainText);
    lblFileName->setMargin(margin / 2);
    // It may stand on the picture: its own ground keeps it readable.
    lblFileName->setAutoFillBackground(true);
    lblFileName->hide();
    cmdClose->setParent(picImage);
    cmdClose->setText(tr("&Close"));
    cmdClose->setToolTip(tr("Close the full screen viewer (Esc)"));
    cmdClose->setFocusPolicy(Qt::NoFocus);
    cmdClose->hide();
    connect(cmdClose, &QPushButton::clicked, this, &frmSlideShowFullScreen::cmdClose_Click);
    setMouseTracking(true);
    for (QWidget *control : std::initializer_list<QWidget *>{picImage, imgImage, lblFileName, cmdClose, Text1, Text2}) {
        control->setMouseTracking(true);
        control->installEventFilter(this);
    }
    tmrPointer.setSingleShot(true);
    tmrPointer.setInterval(pointerStays);
    connect(&tmrPointer, &QTimer::timeout, this, &frmSlideShowFullScreen::hidePointer);
}

void frmSlideShowFullScreen::Form_Load()
{
    // Before the first paint, so that the window never comes up in other colours.
    PaintFormBackground(this, QStringLiteral("OTHER"));
}

void frmSlideShowFullScreen::Form_Activate()
{
    layOut();
    PaintFormBackground(this, QStringLiteral("OTHER"));
    picImage->setFocus();
    tmrPointer.start();
}

void frmSlideShowFullScreen::Form_Unload()
{
    // However the window goes, by its keys or by the desktop: a show that has no window any more is over.
    if (globals.ProgramExiting || !isLoaded<frmMainViewer>())
        return;
    auto &viewer = form<frmMainViewer>();
    if (viewer.mnuSlideShowFullScreen->isChecked())
        viewer.mnuSlideShowFullScreen_Click();
    if (viewer.isVisible())
        viewer.activateWindow();
}

bool frmSlideShowFullScreen::isUp()
{
    return isLoaded<frmSlideShowFullScreen>() && form<frmSlideShowFullScreen>().isVisible();
}

void frmSlideShowFullScreen::showOver(const QWidget &viewer)
{
    if (!isVisible()) {
        setScreen(viewer.screen());
        setGeometry(viewer.screen()->geometry());
        showFullScreen();
    }
    raise();
    activateWindow();
    picImage->setFocus();
}

void frmSlideShowFullScreen::showPicture(
    const std::shared_ptr<const LoadedPicture> &picture, QSize size, const QString &name)
{
    m_pictureSize = size;
    imgImage->setPicture(picture);
    for (QLabel *box : {Text1, Text2}) {
        box->setText(box->fontMetrics().elidedText(name, Qt::ElideMiddle, qMax(0, width() - 2 * margin)));
        box->setAccessibleName(name);
        box->setVisible(!name.isEmpty());
    }
    layOut();
}

QSize frmSlideShowFullScreen::paneSize() const
{
    return (QSizeF(picImage->size()) * devicePixelRatioF()).toSize();
}

void frmSlideShowFullScreen::layOut()
{
    picImage->setGeometry(rect());
    const QSize pane = paneSize();
    const QRect place = placeInPane(fitIntoPane(m_pictureSize, 1, pane), pane, false);
    imgImage->setGeometry(onDesktop(place, devicePixelRatioF()));
    Text1->setGeometry(0, imgImage->y() - upperBox, width(), boxHeight);
    Text2->setGeometry(0, imgImage->y() - lowerBox, width(), boxHeight);
    cmdClose->adjustSize();
    cmdClose->move(width() - cmdClose->width() - margin, margin);
    placeLabel();
}

/// Beside cmdClose, whose place stays free while it is out of sight.
void frmSlideShowFullScreen::placeLabel()
{
    lblFileName->adjustSize();
    const int middle = cmdClose->y() + cmdClose->height() / 2;
    lblFileName->move(cmdClose->x() - margin / 2 - lblFileName->width(), middle - lblFileName->height() / 2);
}

// --- the label: pause and play time

bool frmSlideShowFullScreen::isPaused() const
{
    return lblFileName->text() == stoppedText();
}

void frmSlideShowFullScreen::showPaused(bool paused)
{
    if (paused == isPaused())
        return;
    lblFileName->setText(paused ? stoppedText() : QString());
    lblFileName->setVisible(paused);
    placeLabel();
}

void frmSlideShowFullScreen::showPlayTime(const QString &text)
{
    // The pause is told until it ends.
    if (isPaused())
        return;
    lblFileName->setText(text);
    lblFileName->setVisible(!text.isEmpty());
    placeLabel();
}

// --- keys

void frmSlideShowFullScreen::keyPressEvent(QKeyEvent *event)
{
    const int keyCode = keyCodeOf(event->key());
    // Held keys turn pages; everything else they would do over and over.
    const bool repeats = event->isAutoRepeat() && keyCode != PageUp && keyCode != PageDown;
    if (keyCode == 0 || (!repeats && !KeyDown(keyCode)))
        FormWindow::keyPressEvent(event);
}

bool frmSlideShowFullScreen::KeyDown(int keyCode)
{
    switch (keyCode) {
    case Enter:
        togglePause();
        return true;
    case Escape:
        cmdClose_Click();
        return true;
    case Space:
        if (globals.AutoPlayMotion)
            form<frmMainViewer>().ChangeSlides();
        else
            unload<frmSlideShowFullScreen>();
        return true;
    case PageUp:
        step(-1);
        return true;
    case PageDown:
        step(+1);
        return true;
    default:
        return false;
    }
}

void frmSlideShowFullScreen::togglePause()
{
    auto &viewer = form<frmMainViewer>();
    if (!isPaused()) {
        viewer.tmrSlideShow.stop();
        showPaused(true);
        return;
    }
    // Without a show there is nothing to go on with.
    if (viewer.isShowRunning())
        viewer.startShowTimer();
    showPaused(false);
}

void frmSlideShowFullScreen::step(int direction)
{
    auto &viewer = form<frmMainViewer>();
    if (direction > 0)
        viewer.NextListItem();
    else
        viewer.PreviousListItem();
    // The step lets events in: the window may be gone.
    if (isLoaded<frmSlideShowFullScreen>() && !globals.ProgramExiting)
        viewer.ShowInFullScreen();
}

void frmSlideShowFullScreen::cmdClose_Click()
{
    globals.ShowStopRequested = false;
    auto &viewer = form<frmMainViewer>();
    // A show in the Main Viewer goes on behind this window and is not its to stop.
    if (globals.AutoPlayMotion && viewer.mnuSlideShowFullScreen->isChecked())
        viewer.mnuSlideShowFullScreen_Click();
    unload<frmSlideShowFullScreen>();
}

// --- pointer

void frmSlideShowFullScreen::resizeEvent(QResizeEvent *event)
{
    FormWindow::resizeEvent(event);
    layOut();
}

bool frmSlideShowFullScreen::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        showPointer();
        return watched != cmdClose;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
        if (watched == cmdClose)
            return false;
        picImage->setFocus();
        showPointer();
        return true;
    case QEvent::MouseButtonDblClick:
        if (watched == cmdClose)
            return false;
        cmdClose_Click();
        return true;
    default:
        return false;
    }
}

void frmSlideShowFullScreen::showPointer()
{
    unsetCursor();
    cmdClose->show();
    tmrPointer.start();
}

void frmSlideShowFullScreen::hidePointer()
{
    if (cmdClose->underMouse()) {
        tmrPointer.start();
        return;
    }
    cmdClose->hide();
    setCursor(Qt::BlankCursor);
}
