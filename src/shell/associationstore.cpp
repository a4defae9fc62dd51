#include "shell/associations.h"

#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(logAssociations, "lumora.associations", QtWarningMsg)
using Root = RegistryStore::Root;

bool done(const Result<void> &result, const QString &path)
{
    if (!result)
        qCWarning(logAssociations, "%s: %s", qPrintable(path), qPrintable(result.reason()));
    return bool(result);
}

// Only a key that is there is opened.
bool setValue(Root root, const QString &path, const QString &valueName, const QString &text)
{
    return registryStore().keyExists(root, path) && done(registryStore().setValue(root, path, valueName, text), path);
}

void carryOut(const AssociationWrite &write, const std::function<void()> &beep)
{
    switch (write.action) {
    case AssociationWrite::Action::CreateClassesKey:
        CreateKey(Root::ClassesRoot, write.key);
        break;
    case AssociationWrite::Action::CreateUserKey:
        CreateKey(Root::CurrentUser, write.key);
        break;
    case AssociationWrite::Action::SetClassesValue:
        SetClassesValue(write.key, write.name, write.text);
        break;
    case AssociationWrite::Action::SetUserValue:
        SetUserValue(write.key, write.name, write.text);
        break;
    case AssociationWrite::Action::DeleteClassesKey:
        DeleteClassesKey(write.key);
        break;
    case AssociationWrite::Action::Beep:
        beep();
        break;
    }
}
}

bool CreateKey(Root root, const QString &path)
{
    return done(registryStore().createKey(root, path), path);
}

QString ReadDefault(const QString &path, const QString &valueName)
{
    return registryStore().value(Root::ClassesRoot, path, valueName).value_or(QString());
}

bool SetClassesValue(const QString &path, const QString &valueName, const QString &text)
{
    return setValue(Root::ClassesRoot, path, valueName, text);
}

bool SetUserValue(const QString &path, const QString &valueName, const QString &text)
{
    return setValue(Root::CurrentUser, path, valueName, text);
}

bool DeleteClassesKey(const QString &path)
{
    return done(registryStore().deleteKey(Root::ClassesRoot, path), path);
}

// One replacement of each file for all of them: a disk takes a thousand single ones badly.
void carryOut(const AssociationWrites &writes, const std::function<void()> &beep)
{
    const Result<void> written = registryStore().transaction([&] {
        for (const AssociationWrite &write : writes)
            carryOut(write, beep);
    });
    if (!written)
        qCWarning(logAssociations, "the store keeps its values: %s", qPrintable(written.reason()));
}
