#pragma once

#include "engine/result.h"

#include <QString>

#include <functional>

class SqliteConnection;

/// Writes the images.mdb of a folder anew, without the room of records that are gone, and puts the new file in its
/// place as a whole. No connection of this process may be open; one of another process is a failure, because it would
/// go on with the old file. After a failure the old file is as it was. Takes as long as the disk needs: call it beside
/// the windows. `begun` is given each connection that works, whose interrupt() ends it from outside, and null when it
/// has done so.
Result<void> compactImages(const QString &folder, const std::function<void(SqliteConnection *)> &begun);
