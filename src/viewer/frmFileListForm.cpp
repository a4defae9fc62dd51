#include "viewer/frmFileListForm.h"

#include "app/globals.h"
#include "ui/yield.h"
#include "viewer/foldersearch.h"
#include "viewer/frmSelectPictureDirectoryForm.h"

#include <QElapsedTimer>

namespace {

constexpr qsizetype namesBetweenYields = 100;
constexpr qint64 workBetweenYields = 15; ///< milliseconds

} // namespace

void FileListBox::setPath(const QString &folder)
{
    m_path = folder;
    clear();
    FilePatterns patterns;
    patterns.picture = m_pattern;
    addItems(collectFiles(folder, patterns));
}

frmFileListForm::frmFileListForm(QWidget *parent)
    : FormWindow(parent)
{
}

void frmFileListForm::CollectAllFiles(const QString &folder)
{
    const int ticket = ++m_ticket;
    const QPointer<frmFileListForm> self(this);
    const std::pair<FileListBox *, QString> families[] = {
        {flstGVBOX, globals.PictureFilePattern},
        {flstMediaPlayer, globals.MotionFilePattern},
        {flstPoly, globals.PolyFilePattern},
    };
    flstAll->clear();
    for (const auto &[list, pattern] : families) {
        if (pattern.isEmpty())
            continue;
        list->setPattern(pattern);
        list->setPath(folder);
        flstAll->addItems(list->items());
        Yield();
        if (!self || ticket != m_ticket)
            return;
    }
    FillSelectDirectoryFileListBox();
}

void frmFileListForm::FillSelectDirectoryFileListBox()
{
    if (flstAll->isEmpty() || !isLoaded<frmSelectPictureDirectoryForm>())
        return;
    const int ticket = m_ticket;
    const QPointer<frmFileListForm> self(this);
    const QPointer<ListBox> target(form<frmSelectPictureDirectoryForm>().File1);
    const QStringList names = flstAll->items();
    QElapsedTimer worked;
    worked.start();
    target->clear();
    for (qsizetype at = 0; at < names.size(); at += namesBetweenYields) {
        target->addItems(names.mid(at, namesBetweenYields));
        if (worked.elapsed() < workBetweenYields)
            continue;
        Yield();
        if (!self || !target || ticket != m_ticket)
            return;
        worked.restart();
    }
}
