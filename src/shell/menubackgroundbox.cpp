#include "shell/menubackgroundbox.h"

#include "app/menubackground.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "ui/menubarbackground.h"
#include "viewer/frmMainViewer.h"

#include <QGridLayout>
#include <QMenuBar>
#include <QPainter>
#include <QPointer>

namespace {

constexpr QSize previewSize(180, 54);
constexpr int largestTile = 256;

/// As the menu shows it: small pictures side by side, the middle of larger ones.
QPixmap previewOf(const QImage &picture, double ratio)
{
    QPixmap preview(previewSize * ratio);
    preview.setDevicePixelRatio(ratio);
    preview.fill(Qt::transparent);
    QPainter painter(&preview);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect room(QPoint(), previewSize);
    if (picture.width() <= largestTile && picture.height() <= largestTile) {
        painter.drawTiledPixmap(room, QPixmap::fromImage(picture));
    } else {
        QRect place(QPoint(), picture.size().scaled(previewSize, Qt::KeepAspectRatioByExpanding));
        place.moveCenter(room.center());
        painter.drawImage(place, picture);
    }
    return preview;
}

}

MenuBackgroundBox::MenuBackgroundBox(QWidget *parent)
    : QGroupBox(parent)
{
    setTitle(tr("Menu Background"));
    imgMenuBackground->setFixedSize(previewSize + QSize(2, 2));
    imgMenuBackground->setFrameShape(QFrame::StyledPanel);
    imgMenuBackground->setAlignment(Qt::AlignCenter);
    imgMenuBackground->setAccessibleName(tr("Background picture of the menu"));
    cmdMenuPicture->setText(tr("Choose &Picture..."));
    cmdMenuPicture->setToolTip(tr("Shows a picture of yours behind the menu of the main window"));
    cmdPreviousPattern->setText(tr("Pre&vious Pattern"));
    cmdNextPattern->setText(tr("Ne&xt Pattern"));
    cmdNoMenuPicture->setText(tr("&No Background"));
    auto *grid = new QGridLayout(this);
    grid->addWidget(imgMenuBackground, 0, 0, 2, 1);
    grid->addWidget(cmdMenuPicture, 0, 1);
    grid->addWidget(cmdNoMenuPicture, 0, 2);
    grid->addWidget(cmdPreviousPattern, 1, 1);
    grid->addWidget(cmdNextPattern, 1, 2);
    grid->setColumnStretch(3, 1);
    setTabOrder(cmdMenuPicture, cmdNoMenuPicture);
    setTabOrder(cmdNoMenuPicture, cmdPreviousPattern);
    setTabOrder(cmdPreviousPattern, cmdNextPattern);
    connect(cmdMenuPicture, &QPushButton::clicked, this, &MenuBackgroundBox::cmdMenuPicture_Click);
    connect(cmdPreviousPattern, &QPushButton::clicked, this, [this] { showPattern(-1); });
    connect(cmdNextPattern, &QPushButton::clicked, this, [this] { showPattern(1); });
    connect(cmdNoMenuPicture, &QPushButton::clicked, this, &MenuBackgroundBox::cmdNoMenuPicture_Click);
}

void MenuBackgroundBox::showEvent(QShowEvent *event)
{
    QGroupBox::showEvent(event);
    showChoice();
}

void MenuBackgroundBox::cmdMenuPicture_Click()
{
    const QPointer<MenuBackgroundBox> self(this);
    FileQuestion question;
    question.title = tr("Menu Background");
    question.folder = backgroundsFolder();
    question.filter = tr("All Files (*.bmp,*.rle,*.jpg,*.gif)|*.bmp;*.rle;*.jpg;*.gif|");
    const auto answer = dialogs().openFile(window(), question);
    if (!self || !answer)
        return;
    m_pattern = 0;
    takePicture(answer->path);
}

void MenuBackgroundBox::showPattern(int step)
{
    const QVector<int> numbers = patternNumbers();
    if (numbers.isEmpty())
        return;
    const qsizetype count = numbers.size();
    const qsizetype before = numbers.indexOf(m_pattern);
    const qsizetype place = before < 0 ? (step > 0 ? 0 : count - 1) : (before + step + count) % count;
    m_pattern = numbers.at(place);
    takePicture(patternFile(m_pattern));
}

void MenuBackgroundBox::cmdNoMenuPicture_Click()
{
    m_pattern = 0;
    const QPointer<MenuBackgroundBox> self(this);
    if (!removeMenuBackground()) {
        MessageBox box;
        box.title = tr("Menu Background");
        box.text = tr("The background picture of the menu could not be removed.");
        box.icon = MessageBox::Icon::Exclamation;
        dialogs().show(window(), box);
    }
    if (self)
        showChoice();
}

void MenuBackgroundBox::takePicture(const QString &path)
{
    const QPointer<MenuBackgroundBox> self(this);
    if (!setMenuBackground(path)) {
        MessageBox box;
        box.title = tr("Menu Background");
        box.text = tr("The picture %1 could not be made the background of the menu.").arg(displayPath(path));
        box.icon = MessageBox::Icon::Exclamation;
        dialogs().show(window(), box);
    }
    if (self)
        showChoice();
}

void MenuBackgroundBox::showChoice()
{
    const QImage picture = menuBackground();
    if (picture.isNull())
        imgMenuBackground->setText(tr("(none)"));
    else
        imgMenuBackground->setPixmap(previewOf(picture, devicePixelRatioF()));
    cmdNoMenuPicture->setEnabled(!picture.isNull());
    const bool patterns = !patternNumbers().isEmpty();
    cmdPreviousPattern->setEnabled(patterns);
    cmdNextPattern->setEnabled(patterns);
    if (isLoaded<frmMainViewer>())
        setMenuBarBackground(form<frmMainViewer>().menuBar(), picture);
}
