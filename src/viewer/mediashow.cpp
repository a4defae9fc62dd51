#include "viewer/mediashow.h"

#include "viewer/shuffle.h"

#include <QCoreApplication>

std::optional<int> slideIntervalFromText(const QString &text)
{
    bool isNumber = false;
    const int seconds = text.trimmed().toInt(&isNumber);
    if (!isNumber || seconds < shortestSlideInterval || seconds > longestSlideInterval)
        return std::nullopt;
    return seconds;
}

QVector<int> positionsAhead(const ShowOrder &order, int current, int count, int steps)
{
    if (order.shuffle)
        return shufflePositionsAhead(count, order.loop, steps);
    const int direction = int(order.forward) - int(order.reverse);
    QVector<int> positions;
    while (direction != 0 && count > 0 && positions.size() < steps) {
        current += direction;
        if (current > count || current < 1) {
            if (!order.loop)
                break;
            current = direction > 0 ? 1 : count;
        }
        positions.append(current);
    }
    return positions;
}

MessageBox shuffleOverBox()
{
    MessageBox box;
    box.title = QCoreApplication::translate("MediaShow", "Rest Shuffle History");
    box.text = QCoreApplication::translate("MediaShow",
        "You have 'Shuffle Mode' enabled under the 'Media Show' menu and have not enabled 'Loop Around Mode' under the "
        "'Media Show menu.  Do you want to 'Reset the Shuffle History Media List'?  This will allow you to continue to "
        "shuffle thru the media list.  If you don't choose to reset the History List at this time you will not be able "
        "to continue to shuffle through the images.  However you may choose to 'Reset the Shuffle History Media List' "
        "under the 'Media Show' menu at a later time.");
    box.icon = MessageBox::Icon::Question;
    box.buttons = MessageBox::Buttons::YesNo;
    box.defaultAnswer = MessageBox::Answer::No;
    return box;
}

MessageBox shuffleHistoryResetBox()
{
    MessageBox box;
    box.title = QCoreApplication::translate("MediaShow", "Reset Shuffle History");
    box.text = QCoreApplication::translate("MediaShow", "Shuffle Media History List Reset");
    box.icon = MessageBox::Icon::Information;
    return box;
}
