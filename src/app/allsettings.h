#pragma once

/// Moves the whole set of settings from the store into the live controls of frmPreferences and the menus of
/// frmMainViewer. Runs once, from Form_Load of the Main Viewer. A key that cannot be read as what it should be leaves
/// its control as it was.
void LoadAllSettings();

/// The other way, and writes the standard list unless it is locked or the DisplayList is empty. One transaction.
void SaveAllSettings();

/// Writes the six first-start keys when the store has none of them.
void writeFirstStartKeys();
