#include "viewer/foldersearch.h"

#include <QCoreApplication>
#include <QLocale>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("FolderSearch", text);
}

} // namespace

MessageBox noFileTypesBox()
{
    MessageBox box;
    box.title = QStringLiteral("Lumora V3");
    box.text = translated("No file types have been selected. Please select the desired file types and try again.");
    return box;
}

MessageBox listFullBox()
{
    MessageBox box;
    box.title = QStringLiteral("Lumora V3");
    box.text = translated("You've filled the listbox. Search being abandoned...");
    return box;
}

MessageBox tooManyItemsBox()
{
    MessageBox box;
    box.title = translated("Search Returned Too Many Items....");
    box.text = translated("The file search has returned more than 32767 items.  Please narrow the search either by "
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
    return translated(" Directories Searched: %1 ---  Files Found:%2").arg(foldersSearched).arg(filesFound);
}

QString bytesText(qint64 bytes)
{
    return translated("%1 bytes").arg(QLocale(QLocale::English, QLocale::UnitedStates).toString(bytes));
}

QString colorsText(int bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 1:
        return translated("2 (1-bit)");
    case 4:
        return translated("16 (4-bit)");
    case 8:
        return translated("256 (8-bit)");
    case 16:
        return translated("65,536 (16-bit)");
    case 24:
        return translated("16.7 Million (24-bit)");
    case 32:
        return translated("4.29 Billion (32-bit)");
    default:
        return translated("Unknown");
    }
}
