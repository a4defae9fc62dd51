#include "shell/frmGradient.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QPainter>

#include <array>

namespace {
constexpr SchemeColors usualColors{247, 251, 254, 134, 200, 253};

struct ChannelRow
{
    QScrollBar *bar;
    QString name;
    int value;
};

QPixmap swatch(const QColor &color)
{
    QPixmap pixmap(64, 64);
    pixmap.fill(color);
    return pixmap;
}
}

frmGradient::frmGradient(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Gradient"));
    auto *columns = new QGridLayout(this);
    const auto group = [&](const QString &title, QLabel *picture, const std::array<ChannelRow, 3> &rows, int column) {
        auto *box = new QGroupBox(title, this);
        auto *grid = new QGridLayout(box);
        picture->setFrameShape(QFrame::StyledPanel);
        picture->setScaledContents(true);
        picture->setAccessibleName(title);
        grid->addWidget(picture, 0, 0, 1, 3);
        for (int row = 1; row <= 3; ++row) {
            const ChannelRow &channel = rows[std::size_t(row - 1)];
            auto *value = new QLabel(box);
            value->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000")));
            channel.bar->setOrientation(Qt::Horizontal);
            channel.bar->setRange(0, 255);
            channel.bar->setPageStep(16);
            channel.bar->setFocusPolicy(Qt::StrongFocus);
            channel.bar->setAccessibleName(title + QLatin1Char(' ') + channel.name);
            connect(channel.bar, &QScrollBar::valueChanged, value, qOverload<int>(&QLabel::setNum));
            channel.bar->setValue(channel.value);
            grid->addWidget(new QLabel(channel.name, box), row, 0);
            grid->addWidget(channel.bar, row, 1);
            grid->addWidget(value, row, 2);
        }
        grid->setColumnStretch(1, 1);
        columns->addWidget(box, 0, column);
    };
    group(tr("Start color"), Picture1,
        {{{sldRed1, tr("Red"), usualColors.startRed}, {sldGreen1, tr("Green"), usualColors.startGreen},
            {sldBlue1, tr("Blue"), usualColors.startBlue}}},
        0);
    group(tr("End color"), Picture2,
        {{{sldRed2, tr("Red"), usualColors.endRed}, {sldGreen2, tr("Green"), usualColors.endGreen},
            {sldBlue2, tr("Blue"), usualColors.endBlue}}},
        1);

    const auto showColors = [this] {
        const SchemeColors now = colors();
        Picture1->setPixmap(swatch(QColor(now.startRed, now.startGreen, now.startBlue)));
        Picture2->setPixmap(swatch(QColor(now.endRed, now.endGreen, now.endBlue)));
    };
    for (QScrollBar *bar : {sldRed1, sldGreen1, sldBlue1, sldRed2, sldGreen2, sldBlue2})
        connect(bar, &QScrollBar::valueChanged, this, showColors);
    showColors();
    resize(560, 240);
}

SchemeColors frmGradient::colors() const
{
    return {sldRed1->value(), sldGreen1->value(), sldBlue1->value(), sldRed2->value(), sldGreen2->value(),
        sldBlue2->value()};
}
