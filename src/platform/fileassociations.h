#pragma once

#include "engine/result.h"
#include "platform/desktoptools.h"

#include <QByteArray>
#include <QVector>

/// A MIME type and whether this program is wanted as its default.
struct DesktopType
{
    QByteArray name;
    bool wanted = false;
    bool operator==(const DesktopType &) const = default;
};

/// What a desktop needs to know of the program: the desktop entry, the package of its own MIME types and its icon
/// (SVG), as they are installed. `program` is the path of the program file, which the entry's commands are made to
/// name.
struct DesktopFiles
{
    QByteArray entry;
    QByteArray mimePackage;
    QByteArray icon;
    QString program;
};

/// The desktop entry by which desktops know the program.
inline constexpr char desktopEntryName[] = "org.lumora.Lumora.desktop";

/// Makes the program the user's default of exactly the wanted types in $XDG_CONFIG_HOME/mimeapps.list: others that it
/// once made its own go back to who had them before, also when nobody had. It names
/// itself in front of the earlier default, which so takes over where the program is gone. Nothing else of the file
/// changes, byte for byte; types that meanwhile went to another program, or that the user gave to this one by other
/// means, stay as they are.
///
/// Before the first type a copy of the file goes to "mimeapps.list.before" in configFolder(); what has to be given back
/// stands in "associations.json" beside it. Where no package has installed the program, entry, types and icon go below
/// $XDG_DATA_HOME for as long as a type is wanted; somebody else's files of these names are left alone.
///
/// Gives the commands that tell the desktop about those files. On failure mimeapps.list is as it was.
Result<QList<ToolCommand>> setDesktopTypes(const QVector<DesktopType> &types, const DesktopFiles &files);

/// Those of the types that open with this program now, as far as the user's list says so.
QVector<QByteArray> ownDesktopTypes(const QVector<QByteArray> &types);

/// Starts the commands on their own. Tools that are not installed are left out.
void startTools(const QList<ToolCommand> &commands);

/// The path of the running program's file; empty when the system does not tell it.
QString programFile();
