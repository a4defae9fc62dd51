#include "viewer/shuffle.h"

#include "app/globals.h"
#include "engine/rounding.h"

#include <QRandomGenerator>

namespace {

/// A number times the count, rounded to the nearest: the last position is half as likely as the others, and position 0,
/// the other end, is drawn and thrown away. 0 when every position is marked.
int drawPosition(const QVector<bool> &history, const std::function<double()> &next)
{
    const int count = int(history.size()) - 1;
    if (history.indexOf(false, 1) < 0)
        return 0;
    // The last of many positions takes about twice the count of draws; only a broken source takes that many.
    for (qint64 draws = 0; draws < 1000 + 64LL * count; ++draws) {
        const int position = roundToInt(next() * count);
        if (position >= 1 && position <= count && !history[position])
            return position;
    }
    return int(history.indexOf(false, 1));
}

}

RandomNumbers::RandomNumbers(Source source)
    : m_source(std::move(source))
{
}

double RandomNumbers::take()
{
    if (m_seen.empty())
        return m_source();
    const double number = m_seen.front();
    m_seen.pop_front();
    return number;
}

double RandomNumbers::peek(std::size_t ahead)
{
    while (m_seen.size() <= ahead)
        m_seen.push_back(m_source());
    return m_seen[ahead];
}

void RandomNumbers::setSource(Source source)
{
    m_source = std::move(source);
    m_seen.clear();
}

RandomNumbers &shuffleNumbers()
{
    static RandomNumbers numbers([] { return QRandomGenerator::global()->generateDouble(); });
    return numbers;
}

void sizeShuffleHistory(int count)
{
    globals.ShuffleHistory.fill(false, qMax(0, count) + 1);
    globals.ShuffleCount = 0;
}

bool shuffleHistoryFits(int count)
{
    return globals.ShuffleHistory.size() == count + 1;
}

void clearShuffleHistory()
{
    globals.ShuffleHistory.fill(false);
    globals.ShuffleCount = 0;
}

bool isShuffleOver()
{
    return globals.ShuffleCount >= globals.ShuffleHistory.size() - 1;
}

int takeShufflePosition()
{
    const int position = drawPosition(globals.ShuffleHistory, [] { return shuffleNumbers().take(); });
    if (position > 0) {
        globals.ShuffleHistory[position] = true;
        ++globals.ShuffleCount;
    }
    return position;
}

QVector<int> shufflePositionsAhead(int count, bool loop, int draws)
{
    QVector<bool> history = globals.ShuffleHistory;
    if (!shuffleHistoryFits(count))
        history.fill(false, qMax(0, count) + 1);
    std::size_t looked = 0;
    const auto look = [&looked] { return shuffleNumbers().peek(looked++); };
    QVector<int> positions;
    while (count > 0 && positions.size() < draws) {
        int position = drawPosition(history, look);
        if (position == 0 && !loop)
            break;
        if (position == 0) {
            history.fill(false);
            position = drawPosition(history, look);
        }
        history[position] = true;
        positions.append(position);
    }
    return positions;
}
