#pragma once

#include <QString>

#include <functional>

/// --screenshot: once the window that the start asked for stands, its commands are taken and its picture or the first
/// frame of its video is painted, writes it as a PNG file and calls `done`. Waits at most ten seconds for that and then
/// takes the window as it is.
void takeScreenshotWhenReady(const QString &path, std::function<void(bool written)> done);
