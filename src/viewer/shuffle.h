#pragma once

#include <QVector>

#include <deque>
#include <functional>

/// Random numbers from 0 to 1, taken in the order in which their source gives them. They can be looked at before they
/// are taken: so the picture that a shuffled show will bring next is known, and decoded, while the one before stands.
class RandomNumbers
{
public:
    using Source = std::function<double()>;

    explicit RandomNumbers(Source source);
    double take();
    /// What take() gives after `ahead` others.
    double peek(std::size_t ahead);
    /// Numbers of the source before that were only looked at are forgotten.
    void setSource(Source source);

private:
    Source m_source;
    std::deque<double> m_seen;
};

/// The numbers that the shuffle mode draws with; tests put a source of their own in.
RandomNumbers &shuffleNumbers();

// What the shuffle mode has shown: `globals.ShuffleHistory` holds a mark for each position from 1 to the count of the
// list, `globals.ShuffleCount` the number of marks.

/// Makes room for `count` positions, none of them marked.
void sizeShuffleHistory(int count);
/// Whether the history is one of a list of that count.
bool shuffleHistoryFits(int count);
void clearShuffleHistory();
/// Whether every position is marked.
bool isShuffleOver();
/// Draws the position to show next and marks it. 0 when every position is marked, or there is none.
int takeShufflePosition();

/// The positions that the next draws will bring in a list of `count` entries; at most `draws`, fewer at the end of a
/// history that is not begun anew (`loop`). Nothing is drawn by it.
QVector<int> shufflePositionsAhead(int count, bool loop, int draws);
