#pragma once

#include <QString>

/// The flat search: the files of the folder that the dialog's Dir1 stands at go into lstSelect.
void SearchFolderOnly();
/// The tree search from the folder of Dir1; says so when no file types are selected.
void SearchFolderTree();

/// Fills lstSelect as the dialog's OK would, without the dialog: for a folder of the command line or one dropped in.
void searchFolderInto(const QString &folder, bool tree);
