#include "ui/animation.h"

#include "platform/files.h"
#include "ui/avifile.h"

#include <QPainter>

namespace {
constexpr QSize usualSize(272, 60);
}

Animation::Animation(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMinimumSize(1, usualSize.height());
    connect(&m_next, &QTimer::timeout, this, &Animation::showNextFrame);
}

Animation::~Animation() = default;

QSize Animation::sizeHint() const
{
    return usualSize;
}

void Animation::Open(const QString &file)
{
    m_next.stop();
    m_film.reset();
    m_picture = QImage();
    m_index = 0;
    m_file = file;
    update();
    const auto bytes = file.isEmpty() ? Result<QByteArray>(Failure{}) : readFile(file, AviFile::largestFile);
    auto film = bytes ? AviFile::open(*bytes) : Result<AviFile>(bytes.failure());
    if (!film)
        return;
    m_film = std::make_unique<AviFile>(*std::move(film));
    m_film->drawFrame(0, m_picture);
    if (isVisible())
        m_next.start(m_film->frameTime());
}

void Animation::showNextFrame()
{
    m_index = (m_index + 1) % m_film->frameCount();
    m_film->drawFrame(m_index, m_picture);
    update();
}

void Animation::paintEvent(QPaintEvent *)
{
    if (m_picture.isNull())
        return;
    // The program's own films have two pixels for one of a plain screen.
    const QSize size = m_picture.size().scaled(this->size(), Qt::KeepAspectRatio);
    QRect place(QPoint(), size);
    place.moveCenter(rect().center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, m_picture);
}

void Animation::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_film)
        m_next.start(m_film->frameTime());
}

void Animation::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_next.stop();
}
