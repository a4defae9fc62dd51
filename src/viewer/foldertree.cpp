#include "viewer/foldertree.h"

#include "engine/result.h"
#include "ui/guards.h"
#include "ui/icons.h"
#include "viewer/foldermodel.h"

#include <QHeaderView>
#include <QKeyEvent>

namespace {

constexpr int settleMilliseconds = 150;

} // namespace

FolderTree::FolderTree(QWidget *parent)
    : QTreeView(parent)
    , m_folders(new FolderModel(this))
{
    m_folders->setFolderIcon(themedIcon(QStringLiteral("folder")));
    setModel(m_folders);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleMilliseconds);
    connect(&m_settle, &QTimer::timeout, this, &FolderTree::takeHighlighted);
    connect(this, &QTreeView::clicked, this, &FolderTree::takeHighlighted);
}

bool FolderTree::setPath(const QString &folder)
{
    m_settle.stop();
    QModelIndex index;
    {
        const Hourglass busy;
        const ScopedFlag moving(m_moving);
        index = m_folders->indexOf(folder);
        if (!index.isValid())
            return false;
        // Where the user pointed the view stays; a jump shows what lies around.
        const bool isJump = index != currentIndex();
        setCurrentIndex(index);
        expand(index);
        scrollTo(index, isJump ? PositionAtCenter : EnsureVisible);
    }
    const QString before = std::exchange(m_path, m_folders->path(index));
    if (before != m_path)
        Q_EMIT Change();
    return true;
}

QString FolderTree::listPath() const
{
    return currentIndex().isValid() ? m_folders->path(currentIndex()) : m_path;
}

void FolderTree::takeHighlighted()
{
    m_settle.stop();
    const QString before = m_path;
    if (listPath() == before || setPath(listPath()) || before.isEmpty())
        return;
    // A folder that cannot be entered: the highlight goes back to where the path is.
    ignore(setPath(before));
}

void FolderTree::refresh()
{
    const QModelIndex index = m_path.isEmpty() ? QModelIndex() : m_folders->indexOf(m_path);
    if (!index.isValid())
        return;
    const ScopedFlag moving(m_moving);
    const bool wasOpen = isExpanded(index);
    const QString highlighted = listPath();
    m_folders->refresh(index);
    setExpanded(index, wasOpen);
    const QModelIndex again = m_folders->indexOf(highlighted);
    setCurrentIndex(again.isValid() ? again : index);
}

void FolderTree::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        takeHighlighted();
        expand(currentIndex());
        event->accept();
        return;
    }
    QTreeView::keyPressEvent(event);
}

void FolderTree::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTreeView::currentChanged(current, previous);
    if (!m_moving && current.isValid())
        m_settle.start();
}
