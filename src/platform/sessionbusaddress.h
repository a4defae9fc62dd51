#pragma once

#include <QString>

/// Where the desktop's session bus listens. Empty when there is none: asking the bus library then would start one.
QString sessionBusAddress();
