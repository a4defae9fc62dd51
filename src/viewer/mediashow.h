#pragma once

#include "platform/messagebox.h"

#include <QVector>

#include <optional>

// Rules of the Media Show.

inline constexpr int shortestSlideInterval = 1; ///< seconds
inline constexpr int longestSlideInterval = 30;
inline constexpr int usualSlideInterval = 5; ///< where none is set

/// The interval that a text of the input box means; none when the question has to be asked again.
std::optional<int> slideIntervalFromText(const QString &text);

/// The check marks that say where a show goes. The store may hold any set of them.
struct ShowOrder
{
    bool shuffle = false;
    bool forward = false;
    bool reverse = false;
    bool loop = false;
};

/// The 1-based positions that the next steps will bring from `current`, at most `steps`; fewer before the end of a list
/// that is not gone round again.
QVector<int> positionsAhead(const ShowOrder &order, int current, int count, int steps);

/// Asked when every position has been shown and the user goes on by hand.
MessageBox shuffleOverBox();
MessageBox shuffleHistoryResetBox();
