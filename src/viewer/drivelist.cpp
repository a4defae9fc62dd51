#include "viewer/drivelist.h"

#include "platform/filepath.h"
#include "platform/folders.h"
#include "ui/icons.h"
#include "viewer/foldersearch.h"

DriveList::DriveList(QWidget *parent)
    : QComboBox(parent)
{
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
}

void DriveList::fill()
{
    const QSignalBlocker quiet(this);
    clear();
    const QStringList volumes = mountedVolumes();
    for (const QString &volume : volumes)
        addItem(themedIcon(QStringLiteral("drive-harddisk")), displayPath(volume), volume);
    const QStringList folders = bookmarks();
    if (!folders.isEmpty())
        insertSeparator(count());
    for (const QString &folder : folders)
        addItem(themedIcon(QStringLiteral("user-bookmarks")), displayPath(folder), folder);
}

/// The volume with the longest name in front of the folder's.
void DriveList::showDriveOf(const QString &folder)
{
    const QString whole = folderWithSeparator(folder);
    int best = 0;
    for (int index = 0; index < count(); ++index) {
        const QString volume = itemData(index).toString();
        if (volume.isEmpty())
            break; // the bookmarks follow
        if (whole.startsWith(volume) && volume.size() >= itemData(best).toString().size())
            best = index;
    }
    choose(best);
}

void DriveList::settle(bool entered)
{
    choose(entered ? currentIndex() : m_entered);
}

void DriveList::choose(int index)
{
    const QSignalBlocker quiet(this);
    setCurrentIndex(index);
    m_entered = index;
}
