#pragma once

#include "platform/fileassociations.h"
#include "platform/messagebox.h"
#include "platform/registrystore.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <bitset>
#include <functional>

/// File associations as the program keeps them in the store (platform/registrystore.h): a class for each type with
/// its icon and commands, the extension key that points to the class, beside it the owner of before, and the user's
/// own choice below the Explorer's key. What is to be written is a value here; carryOut() writes it.

inline constexpr int associationBoxCount = 61; ///< chkAssocFileType(1..61)
inline constexpr int missingAssociationBox = 50;
inline constexpr int listFileBox = 51; ///< ".WBMP" decides list files too
/// The state of the boxes, by their index; 0 and the missing one stay off.
using AssociationBoxes = std::bitset<associationBoxCount + 1>;

/// Caption of a box; empty for the missing one.
QString associationCaption(int box);
/// The MIME type of a box's caption; empty for an extension that belongs to another type on this system.
QByteArray desktopTypeOfBox(int box);

struct AssociationWrite
{
    enum class Action { CreateClassesKey, CreateUserKey, SetClassesValue, SetUserValue, DeleteClassesKey, Beep };
    Action action;
    QString key;
    QString name = {};
    QString text = {};
    bool operator==(const AssociationWrite &) const = default;
};
using AssociationWrites = QVector<AssociationWrite>;

/// Reads a value below the classes' root; empty when it is missing.
using DefaultReader = std::function<QString(const QString &key)>;

/// The classes with icons and verbs, for a program in `programFolder` (with its separator) of the name `programName`.
AssociationWrites classWrites(const QString &programFolder, const QString &programName);
/// The keys that the next two need.
AssociationWrites keyWrites();
/// Names this program as the user's choice of every type, whatever its box says; choiceWrites() puts it right.
AssociationWrites userWrites();
/// Gives each type to this program or back to its earlier owner.
AssociationWrites choiceWrites(const AssociationBoxes &boxes, const DefaultReader &readDefault);

/// Which boxes show as checked.
AssociationBoxes associatedBoxes(const DefaultReader &readDefault);

/// What the desktop is told of a choice: each MIME type once, wanted when the box of one of its extensions is checked.
/// Here a box stands for the type of its caption, without the places of the store, as nobody would know what opens his
/// files otherwise. Left out are extensions that belong to other types on this system.
QVector<DesktopType> desktopTypes(const AssociationBoxes &boxes);

/// Writes in order; nothing is checked, as a key that cannot be opened keeps its value. `beep` sounds for each Beep.
void carryOut(const AssociationWrites &writes, const std::function<void()> &beep);

/// The five ways to the store.
bool CreateKey(RegistryStore::Root root, const QString &path);
QString ReadDefault(const QString &path, const QString &valueName);
bool SetClassesValue(const QString &path, const QString &valueName, const QString &text);
bool SetUserValue(const QString &path, const QString &valueName, const QString &text);
bool DeleteClassesKey(const QString &path);

MessageBox applyAssociationsBox();
MessageBox associationsMadeBox();
