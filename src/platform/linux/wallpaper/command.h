#pragma once

#include "engine/result.h"

#include <QString>
#include <QStringList>

/// Other programs by their names in PATH, always with a list of arguments.
namespace command {

bool isInstalled(const QString &program);
/// Runs a program to its end, which it has to find within some seconds.
Result<void> run(const QString &program, const QStringList &arguments);
/// Starts one that stays when this program has ended.
Result<void> start(const QString &program, const QStringList &arguments);

}
