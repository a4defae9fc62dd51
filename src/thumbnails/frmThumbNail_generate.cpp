#include "thumbnails/frmThumbNail.h"

void frmThumbNail::MakeOrLoadThumbnail(const QString &, const QString &)
{
    setTemplatePicture({});
}

void frmThumbNail::mnuThumbnailsGenerateAll_Click()
{
}

void frmThumbNail::mnuThumbnailsGenerateAllSizes_Click()
{
}

void frmThumbNail::prepareThumbnails(const QStringList &)
{
}
