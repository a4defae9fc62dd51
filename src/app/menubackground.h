#pragma once

#include "engine/result.h"

#include <QImage>
#include <QString>
#include <QVector>

/// The picture behind the texts of the Main Viewer's menu: "MenuVBgd.Bmp" in the program's folder; there is none while
/// that file is not there. Nothing else keeps the choice.

/// Where pictures for it are looked for first; ends in a separator.
QString backgroundsFolder();
/// Full path of a numbered pattern: "PAT0" and the number, with a 0 in front of one digit.
QString patternFile(int number);
/// Numbers of the patterns that are there, 1 to 99, rising.
QVector<int> patternNumbers();

/// The picture; null when there is none or it cannot be read.
QImage menuBackground();
/// Reads a picture of any known format and makes it the background, reduced to what a menu can show of it. When it
/// cannot be read or written the one before stays.
Result<void> setMenuBackground(const QString &path);
/// None from now on. That there was none is no failure.
Result<void> removeMenuBackground();
