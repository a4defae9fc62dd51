#pragma once

#include "platform/messagebox.h"

#include <QString>

/// A number as the program writes it everywhere: groups of three, and nothing at all for 0.
QString groupedNumber(qint64 number);

/// What is asked before the cache is emptied, and what is told when it is and when it could not be.
MessageBox clearCacheQuestion();
MessageBox cacheClearedBox();
MessageBox clearingFailedBox();

/// What the wait window says during a compaction; the Thumbnail Viewer and the statistics expect it to take differently
/// long.
enum class CompactionTakes { Seconds, Minutes };
QString compactionText(CompactionTakes takes);
