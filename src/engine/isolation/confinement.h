#pragma once

#include <QtGlobal>

#include <vector>

#include <linux/filter.h>

namespace isolation {

/// What a decoder process puts around itself before it sees a file. Made once, while the zygote may still open files.
struct Confinement
{
    std::vector<sock_filter> filter; ///< of calls to the system; empty: this system has none
    int fileRules = 0; ///< version of the kernel's file rules (Landlock); 0: has none
    quint64 addressSpace = 0; ///< bytes mapped now, with all libraries
    bool mayTalk = false; ///< standard error is somebody's
};

enum class Unknown { Refused, Ends };
/// `unknown`: what a call to the system comes to that the filter does not know.
Confinement prepareConfinement(Unknown unknown, bool mayTalk);

/// Locks this process in, for good. Gives the layers that are in force (see Layer).
quint32 confine(Confinement &confinement);

/// Raises the bound of this process's memory by what the program has given it, or lowers it again.
void allowMemory(qint64 more);

}
