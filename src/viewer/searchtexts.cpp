#include "viewer/foldersearch.h"

#include "app/translations.h"

#include <QCoreApplication>

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(FolderSearch)
};

} // namespace

MessageBox noFileTypesBox()
{
    MessageBox box;
    box.title = Texts::tr("Lumora V3");
    box.text = Texts::tr("No file types have been selected. Please select the desired file types and try again.");
    return box;
}

MessageBox listFullBox()
{
    MessageBox box;
    box.title = Texts::tr("Lumora V3");
    box.text = Texts::tr("You've filled the listbox. Search being abandoned...");
    return box;
}

MessageBox tooManyItemsBox()
{
    MessageBox box;
    box.title = Texts::tr("Search Returned Too Many Items....");
    box.text = Texts::tr("The file search has returned more than 32767 items.  Please narrow the search either by "
                         "selecting a lower level Folder or changing the file types to include in the search");
    return box;
}

bool isTooManyItems(qint16 count)
{
    constexpr int limit = 32768;
    const int items = count;
    return items > limit;
}

QString searchProgressText(int foldersSearched, int filesFound)
{
    return Texts::tr(" Directories Searched: %1 ---  Files Found:%2").arg(foldersSearched).arg(filesFound);
}

QString bytesText(qint64 bytes)
{
    return Texts::tr("%1 bytes").arg(textLocale().toString(bytes));
}

QString colorsText(int bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 1:
        return Texts::tr("2 (1-bit)");
    case 4:
        return Texts::tr("16 (4-bit)");
    case 8:
        return Texts::tr("256 (8-bit)");
    case 16:
        return Texts::tr("65,536 (16-bit)");
    case 24:
        return Texts::tr("16.7 Million (24-bit)");
    case 32:
        return Texts::tr("4.29 Billion (32-bit)");
    default:
        return Texts::tr("Unknown");
    }
}
