#pragma once

#include "actions/saveformats.h"

/// What the controls of frmPreferences say right now; chkDiffuseTwoColor is not among them.
SaveOptions saveOptionsOfPreferences();
