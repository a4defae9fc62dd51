#pragma once

#include "platform/messagebox.h"

#include <QString>

#include <optional>

/// What the window of a thumbnail run tells. `index` counts from 0, `last` is the index of the last file.

/// "1,024 of 20,000"; plain numbers in the run over all sizes.
enum class CountFormat { Grouped, Plain };
QString fileCountText(int index, int last, CountFormat format);

/// 0 to 100, cut: 29 files of 100 are 28, because of how the quotient is rounded in binary.
int progressValue(int index, int last);

/// Thumbnails a minute.
class ThumbnailRate
{
public:
    /// `now` in seconds from any start.
    explicit ThumbnailRate(double now)
        : m_start(now)
    {
    }
    /// One more was made. With the first one the clock begins anew; no time, no new rate.
    void count(double now);
    float perMinute() const { return m_rate; }

private:
    int m_made = 0;
    double m_start;
    float m_rate = 0;
};

/// "1,234", empty for 0.
QString rateText(float perMinute);

/// Whether the estimate is to be told anew: when the files that remain are a multiple of those made in a second, in
/// whole numbers, and always below one a second.
bool isEstimateDue(int remaining, float perMinute);

/// "Est. Time Remaining: 00:12:34"; days are not told. None while the text of the rate holds no number.
std::optional<QString> estimateText(int remaining, const QString &rate);

QString currentSizeText(int size);

/// Asked after a click on the window of a run.
MessageBox cancelRunBox();
