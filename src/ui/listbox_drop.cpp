#include "ui/listbox_private.h"

#include "platform/filepath.h"

#include <QDropEvent>
#include <QMimeData>

// What is dropped is acted on after the drop: the work may take long and let events in, and until the drop is answered
// the program it comes from stands still.

bool ListBox::accepts(const QDropEvent *event) const
{
    const bool own = event->mimeData()->hasFormat(QString::fromLatin1(listDragFormat));
    return own ? event->source() != this : event->mimeData()->hasUrls();
}

void ListBox::dragEnterEvent(QDragEnterEvent *event)
{
    dragMoveEvent(event);
}

void ListBox::dragMoveEvent(QDragMoveEvent *event)
{
    if (!accepts(event)) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void ListBox::dropEvent(QDropEvent *event)
{
    if (!accepts(event)) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (event->mimeData()->hasFormat(QString::fromLatin1(listDragFormat))) {
        QMetaObject::invokeMethod(this, &ListBox::DragDrop, Qt::QueuedConnection);
        return;
    }
    const QStringList paths = pathsOfUriList(event->mimeData()->data(QStringLiteral("text/uri-list")));
    if (!paths.isEmpty())
        QMetaObject::invokeMethod(
            this, [this, paths] { Q_EMIT filesDropped(paths); }, Qt::QueuedConnection);
}

QStringList pathsOfUriList(const QByteArray &uriList)
{
    QStringList paths;
    for (const QByteArray &line : uriList.split('\n')) {
        const QString uri = QString::fromLatin1(line.trimmed());
        const QString path = uri.startsWith(u'#') ? QString() : pathFromFileUri(uri);
        if (!path.isEmpty())
            paths.append(path);
    }
    return paths;
}
