#include "thumbnails/cachetexts.h"

#include "app/translations.h"

#include <QCoreApplication>

namespace {
/// Where users of the program write to.
constexpr char supportAddress[] = "support@tessaly.example";
}

QString groupedNumber(qint64 number)
{
    return number == 0 ? QString() : textLocale().toString(number);
}

MessageBox clearCacheQuestion()
{
    MessageBox box;
    box.title = QCoreApplication::translate("ThumbnailCache", "Delete Thumbnail cache:");
    box.text = QCoreApplication::translate("ThumbnailCache", "Are you sure you want to delete the thumbnail cache?");
    box.icon = MessageBox::Icon::Question;
    box.buttons = MessageBox::Buttons::YesNo;
    box.defaultAnswer = MessageBox::Answer::No;
    return box;
}

MessageBox cacheClearedBox()
{
    MessageBox box;
    box.title = QCoreApplication::translate("ThumbnailCache", "Thumbnail Cache:");
    box.text = QCoreApplication::translate("ThumbnailCache", "Thumbnail Cache Cleared.");
    box.icon = MessageBox::Icon::Information;
    return box;
}

MessageBox clearingFailedBox()
{
    MessageBox box;
    box.title = QCoreApplication::translate("ThumbnailCache", "Error Clearing ThumbnailCache:");
    box.text = QCoreApplication::translate("ThumbnailCache",
                   "Tessaly was unable to clear the thumbnail cache.  This may be caused by an inability to have "
                   "exclusive access to the cache Database.  Please close any session of Microsoft Access that may be "
                   "currently open and viewing the cache database.  Then try and clear the thumbnail cache again.  If "
                   "this does not correct the problem please contact Tessaly Support at: ")
        + QLatin1String(supportAddress);
    box.icon = MessageBox::Icon::Exclamation;
    return box;
}

QString compactionText(CompactionTakes takes)
{
    const QString first = QCoreApplication::translate("ThumbnailCache", "Compacting Thumbnail Database");
    const QString second = takes == CompactionTakes::Seconds
        ? QCoreApplication::translate("ThumbnailCache", "this may take several seconds.")
        : QCoreApplication::translate("ThumbnailCache", "this may take several minutes.");
    return QStringLiteral("\n%1\n%2").arg(first, second);
}
