#pragma once

#include <QIcon>
#include <QString>

/// The icon of the user's theme under a freedesktop name, else the program's own drawing, else the fall-back theme;
/// never an empty icon.
QIcon themedIcon(const QString &name);

/// The clear small icon of a file type by its code ("jpg", "mp3"); null when there is none of that code.
QIcon fileTypeIcon(const QString &code);

/// Sets up the fall-back theme search. Called once, after the application object.
void installIconThemes();
