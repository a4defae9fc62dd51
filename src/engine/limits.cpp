#include "engine/limits.h"

#include <QFile>

#include <atomic>

namespace limits {

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

std::atomic<qint64> chosenBudget = 0;

// One line of /proc/meminfo ("MemAvailable:   123456 kB") in bytes; 0 when it cannot be read.
qint64 memoryLine(const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name))
            return line.mid(name.size()).simplified().split(' ').constFirst().toLongLong() * 1024;
    }
    return 0;
}

}

qint64 decodeBudget()
{
    if (const qint64 chosen = chosenBudget.load(std::memory_order_relaxed); chosen > 0)
        return chosen;
    static const qint64 budget = qBound(512 * mebibyte, memoryLine("MemAvailable:") * 2 / 5, 8192 * mebibyte);
    return budget;
}

void setDecodeBudget(qint64 bytes)
{
    chosenBudget.store(bytes, std::memory_order_relaxed);
}

bool allows(QSize size, int bytesPerPixel)
{
    if (size.width() < 1 || size.height() < 1 || size.width() > maximumSide || size.height() > maximumSide)
        return false;
    const qint64 pixels = qint64(size.width()) * size.height();
    return pixels <= maximumPixels && pixels <= decodeBudget() / qMax(1, bytesPerPixel);
}

int decodeSeconds(qint64 fileBytes)
{
    return int(qBound(qint64(10), 5 + fileBytes / 1'000'000, qint64(120)));
}

qint64 cacheBudget()
{
    static const qint64 budget = qBound(64 * mebibyte, memoryLine("MemTotal:") / 16, 256 * mebibyte);
    return budget;
}

}
