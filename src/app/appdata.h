#pragma once

/// Gives AppFolder what the program was installed with and it does not have yet, folder by folder. What is there stays
/// as it is: the user may have changed it. Nothing to do for most starts, and quick then.
void seedAppFolder();
