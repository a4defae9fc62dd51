#pragma once

#include <QStringList>

/// The flat search: the files of the folder that the dialog's Dir1 stands at go into lstSelect.
void SearchFolderOnly();
/// The tree search from the folder of Dir1; says so when no file types are selected.
void SearchFolderTree();

/// Fills lstSelect as the dialog's OK would, without the dialog, from one folder after the other. Does nothing while
/// another search is under way.
void searchFoldersInto(const QStringList &folders, bool tree);
/// From the opening of the dialog, or the start of a search without it, to the display of the first file found.
bool isFolderSearchUnderWay();
