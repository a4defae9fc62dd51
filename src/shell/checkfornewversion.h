#pragma once

#include "shell/versioncheck.h"

class QWidget;

/// "Check for New Version" of every window's Help menu: asks the update server for the published version, and tells
/// how the running one compares. The program goes on meanwhile; a call while a transfer is under way does nothing.
/// The end of the program ends the wait. `window` is the owner of the boxes.
void CheckForNewVersion(QWidget *window, const UpdateServer &server = builtInUpdateServer());
