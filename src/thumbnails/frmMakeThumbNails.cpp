#include "thumbnails/frmMakeThumbNails.h"

#include "app/globals.h"
#include "engine/ops/areaaverage.h"
#include "ui/background.h"
#include "ui/twips.h"
#include "viewer/frmMainViewer.h"

#include <QBoxLayout>
#include <QFocusEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

namespace {
constexpr int previewEdge = 92; ///< pixels
}

frmMakeThumbNails::frmMakeThumbNails(QWidget *parent)
    : FormDialog(parent)
{
    setAccessibleName(tr("Making Thumbnails"));
    lblInformation->setText(tr("&Click Window to cancel processing."));
    lblInformation->setBuddy(txtClose);
    lblMakingThumbnail->setText(tr("Making Thumbnail:"));
    lblFileName->setAccessibleDescription(lblMakingThumbnail->text());
    lblFileCount->setAccessibleDescription(tr("Files"));
    lblSpeed->setAccessibleDescription(tr("Thumbnails per minute"));
    lblThumbnailsPer->setText(tr("Thumbnails"));
    lblPerMin->setText(tr("per / min"));
    lblShowThumbnail->setText(tr("&Show Thumbnail"));
    lblShowThumbnail->setBuddy(chkShowThumbnail);
    chkShowThumbnail->setAccessibleName(tr("Show Thumbnail"));
    imgThumbnail->setAccessibleName(tr("Picture in work"));
    imgThumbnail->setAlignment(Qt::AlignCenter);
    imgThumbnail->setFixedSize(previewEdge, previewEdge);
    imgThumbnail->hide();
    pgbThumbnails->setAccessibleName(tr("Progress"));
    pgbThumbnails->setRange(0, 100);
    pgbThumbnails->setValue(0);
    pgbThumbnails->setTextVisible(false);
    txtClose->setAccessibleName(tr("Cancel"));
    txtClose->setReadOnly(true);
    txtClose->setGeometry(-20, -20, 10, 10);
    txtClose->installEventFilter(this);
    lblShowThumbnail->installEventFilter(this);
    // Only the others pass a click on to the window.
    for (QWidget *widget : std::initializer_list<QWidget *>{
             lblSpeed, lblThumbnailsPer, lblPerMin, lblTimeRemaining, lblCurrentSize, pgbThumbnails, imgThumbnail})
        widget->setAttribute(Qt::WA_NoMousePropagation);

    auto *all = new QHBoxLayout(this);
    all->setContentsMargins(16, 14, 16, 14);
    all->setSpacing(12);
    all->addLayout(makeLines(), 1);
    all->addWidget(imgThumbnail, 0, Qt::AlignVCenter);
    setTabOrder(chkShowThumbnail, txtClose);
    chkShowThumbnail->setFocus();
    connect(chkShowThumbnail, &QCheckBox::toggled, this, &frmMakeThumbNails::chkShowThumbnail_Click);
}

QLayout *frmMakeThumbNails::makeLines()
{
    const auto line = [](std::initializer_list<QWidget *> left, QWidget *right) {
        auto *layout = new QHBoxLayout;
        layout->setSpacing(6);
        for (QWidget *widget : left)
            layout->addWidget(widget);
        layout->addStretch(1);
        if (right)
            layout->addWidget(right);
        return layout;
    };
    auto *name = new QHBoxLayout;
    name->setSpacing(6);
    name->addWidget(lblMakingThumbnail);
    name->addWidget(lblFileName, 1);
    auto *lines = new QVBoxLayout;
    lines->setSpacing(8);
    lines->addLayout(line({lblInformation}, lblCurrentSize));
    lines->addLayout(name);
    lines->addLayout(line({lblFileCount}, nullptr));
    lines->addWidget(pgbThumbnails);
    lines->addLayout(line({lblSpeed, lblThumbnailsPer, lblPerMin}, lblTimeRemaining));
    lines->addLayout(line({chkShowThumbnail, lblShowThumbnail}, nullptr));
    return lines;
}

void frmMakeThumbNails::Form_Load()
{
    KeepGoing = true;
    setWidth(usualWidth);
}

void frmMakeThumbNails::Form_Activate()
{
    if (isLoaded<frmMainViewer>()) {
        const QWidget &viewer = form<frmMainViewer>();
        move(viewer.mapToGlobal(viewer.rect().center()) - rect().center());
    }
    PaintFormBackground(this, QStringLiteral("OTHER"));
}

/// Closed by the user it asks the run to stop, and goes with it.
void frmMakeThumbNails::Form_QueryUnload(bool &cancel)
{
    if (!isVisible() || globals.ProgramExiting)
        return;
    CancelRun();
    cancel = true;
}

void frmMakeThumbNails::showOver(QWidget *owner)
{
    setParent(owner, Qt::Dialog | Qt::FramelessWindowHint);
    show();
}

void frmMakeThumbNails::setWidth(int twips)
{
    layout()->activate();
    const QSize least = layout()->minimumSize();
    resize(qMax(pixelsFromTwips(twips), least.width()), least.height());
    if (const QScreen *at = screen())
        move(at->geometry().left() + (at->geometry().width() - width()) / 2, y());
}

void frmMakeThumbNails::chkShowThumbnail_Click()
{
    const bool shows = chkShowThumbnail->isChecked();
    imgThumbnail->setVisible(shows);
    if (!shows)
        imgThumbnail->clear();
    setWidth(shows ? previewWidth : usualWidth);
    if (shows)
        PaintFormBackground(this, QStringLiteral("OTHER"));
}

void frmMakeThumbNails::showPreview(const QImage &picture)
{
    const double ratio = devicePixelRatioF();
    const QSize room = imgThumbnail->size() * ratio;
    const bool fits = picture.width() <= room.width() && picture.height() <= room.height();
    QImage shown =
        fits ? picture : areaAverage(picture, picture.size().scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1}));
    shown.setDevicePixelRatio(ratio);
    imgThumbnail->setPixmap(QPixmap::fromImage(shown));
}

void frmMakeThumbNails::reject()
{
    CancelRun();
}

bool frmMakeThumbNails::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == txtClose && event->type() == QEvent::FocusIn) {
        // A window that comes back to the front gives it the focus that it had.
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            CancelRun();
    }
    if (watched == lblShowThumbnail && event->type() == QEvent::MouseButtonRelease) {
        chkShowThumbnail->toggle();
        return true;
    }
    return FormDialog::eventFilter(watched, event);
}

void frmMakeThumbNails::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        CancelRun();
}

/// The edge that a window without a caption needs.
void frmMakeThumbNails::paintEvent(QPaintEvent *event)
{
    FormDialog::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
