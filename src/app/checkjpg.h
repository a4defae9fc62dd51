#pragma once

#include "engine/imagemaskcontrol.h"
#include "engine/polyimage.h"
#include "platform/folders.h"
#include "ui/form.h"
#include "ui/icons.h"

/// The hidden support window: owns the picture engine for all work outside the editor. The display keeps `polImageBox1`
/// loaded with the current picture, which saving and printing then use.
class checkjpg : public FormWindow
{
    Q_OBJECT
public:
    explicit checkjpg(QWidget *parent = nullptr)
        : FormWindow(parent)
    {
    }

    PolyImage polImageBox1;
    Gvbox Gvbox2;
    Gvbox Picture1;
    ImageMaskControl ImageMaskControl1;
    std::shared_ptr<const LoadedPicture> picBackupImage;
    WindowsSystemFolders WindowsSystemFolders1;
    QIcon imgEmpty = themedIcon(QStringLiteral("lumora-thumbnail-empty")); ///< stands where a thumbnail is to come
};
