#pragma once

#include <QImage>
#include <QObject>
#include <QString>

#include <functional>

/// What the folder dialog tells of a file.
struct FilePreview
{
    QString path;
    qint64 bytes = -1; ///< -1 when the file is not there
    QSize size; ///< pixels of the file; empty when it cannot be read as a picture
    int bitsPerPixel = 0;
    QImage image; ///< fitted into the asked size
};

struct PreviewQuestion
{
    QString path;
    QSize target; ///< device pixels
    int photoCDSize = 0; ///< index of the size that Photo CD files are read in
};

/// Reads the preview on a worker thread and gives it on the caller's thread while `context` lives. Only the latest
/// question counts: an earlier one that has not begun is dropped, one that has begun gives no answer.
void requestPreview(
    const PreviewQuestion &question, QObject *context, const std::function<void(const FilePreview &)> &answer);

/// The work itself.
FilePreview readPreview(const PreviewQuestion &question);
