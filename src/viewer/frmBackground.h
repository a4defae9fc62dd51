#pragma once

#include "engine/loadedpicture.h"
#include "ui/form.h"

#include <QIcon>

/// The hidden support window of pictures that stand for what has none of its own.
class frmBackground : public FormWindow
{
    Q_OBJECT
public:
    explicit frmBackground(QWidget *parent = nullptr);

    /// Stands where a sound or a video plays elsewhere: 1280 by 720 pixels, opaque.
    std::shared_ptr<const LoadedPicture> Picture;
    /// They stand in a grid of thumbnails for a file that has none, and for a sound or a video.
    QIcon imgNotAvailable;
    QIcon imgMedia;
};
