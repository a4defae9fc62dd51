#include "thumbnails/thumbnailrun.h"

#include "app/translations.h"
#include "engine/rounding.h"
#include "thumbnails/cachetexts.h"

#include <QCoreApplication>
#include <QTime>

#include <cmath>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("frmMakeThumbNails", text);
}

}

QString fileCountText(int index, int last, CountFormat format)
{
    const auto number = [&](int value) {
        return format == CountFormat::Grouped ? groupedNumber(value) : QString::number(value);
    };
    return translated(QT_TRANSLATE_NOOP("frmMakeThumbNails", "%1 of %2")).arg(number(index + 1), number(last + 1));
}

int progressValue(int index, int last)
{
    return int(double(index + 1) / double(last + 1) * 100);
}

void ThumbnailRate::count(double now)
{
    if (++m_made == 1)
        m_start = now;
    if (now > m_start)
        m_rate = float(m_made / (now - m_start) * 60);
}

QString rateText(float perMinute)
{
    return groupedNumber(roundToInt(double(perMinute)));
}

bool isEstimateDue(int remaining, float perMinute)
{
    const double perSecond = std::floor(double(perMinute) / 60);
    if (perSecond <= 0)
        return true;
    return std::fmod(remaining, perSecond) == 0;
}

std::optional<QString> estimateText(int remaining, const QString &rate)
{
    bool isNumber = false;
    const double perMinute = textLocale().toDouble(rate, &isNumber);
    if (!isNumber || perMinute <= 0)
        return {};
    constexpr int minutesOfADay = 1440;
    constexpr qint64 secondsOfADay = 86400;
    const double days = remaining / perMinute / minutesOfADay;
    const auto seconds = qint64(std::nearbyint(days * secondsOfADay));
    const QTime time = QTime(0, 0).addSecs(int(seconds % secondsOfADay));
    return translated(QT_TRANSLATE_NOOP("frmMakeThumbNails", "Est. Time Remaining: %1"))
        .arg(time.toString(QStringLiteral("HH:mm:ss")));
}

QString currentSizeText(int size)
{
    return translated(QT_TRANSLATE_NOOP("frmMakeThumbNails", "Current Size: %1")).arg(size);
}

MessageBox cancelRunBox()
{
    MessageBox box;
    // The title is the one of the box that asks before the cache is emptied.
    box.title = translated(QT_TRANSLATE_NOOP("frmMakeThumbNails", "Delete Thumbnail cache:"));
    box.text = translated(
        QT_TRANSLATE_NOOP("frmMakeThumbNails", "Are you sure you want to cancel thumbnail generating all thumbnails?"));
    box.icon = MessageBox::Icon::Question;
    box.buttons = MessageBox::Buttons::YesNo;
    box.defaultAnswer = MessageBox::Answer::No;
    return box;
}
