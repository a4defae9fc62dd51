#pragma once

#include "engine/result.h"

#include <QString>
#include <QVariantList>

/// Calls over the session bus that wait for their answer, but not for ever.
namespace bus {

struct Object
{
    QString service;
    QString path;
    QString interface;
};

/// Whether somebody on the bus has that name now.
bool hasOwner(const QString &service);
Result<QVariantList> call(const Object &object, const QString &method, const QVariantList &arguments);

}
