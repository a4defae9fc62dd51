#pragma once

#include <QString>
#include <QStringList>

/// The user's and the program's folders. Every one ends in a separator.

/// `WindowsSystemFolders1` of the support window: what the jump buttons lead to.
struct WindowsSystemFolders
{
    QString desktop() const;
    QString documents() const;
    /// The first existing bookmark of the desktop's file dialogs, else the home folder.
    QString favorites() const;
    QString pictures() const;
};

/// The current folder of the process.
QString workingFolder();
/// Mounted volumes a person would browse, the root first.
QStringList mountedVolumes();
/// The bookmarks of the desktop's file dialogs that exist.
QStringList bookmarks();

/// The program file's folder while the user may write there, else $XDG_DATA_HOME/lumora/. Tests set LUMORA_APP_FOLDER.
QString AppFolder();
/// What the program was installed with, or built with, and AppFolder is given; empty when it is not there. Tests set
/// LUMORA_DATA.
QString dataFolder();
/// Where the files of other languages are, of a build or installed; empty when it is not there.
QString translationsFolder();
/// The user's data folder of all programs, $XDG_DATA_HOME, made at first use with mode 0700.
QString dataHomeFolder();
/// XDG folders of the program, made at first use with mode 0700: config, cache, state, runtime.
QString configFolder();
QString cacheFolder();
QString stateFolder();
QString runtimeFolder();
