#include "viewer/frmMainViewer.h"

#include "actions/savenames.h"
#include "actions/saveoptions.h"
#include "app/checkjpg.h"
#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "shell/frmPreferences.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <QLoggingCategory>

#include <exception>

// Both commands write the picture that is shown. A file that is there is replaced as a whole or stays; the shown file
// itself may be replaced too: it is read afresh afterwards.

namespace {

Q_LOGGING_CATEGORY(saving, "lumora.saving", QtWarningMsg)

FileQuestion saveQuestion(const PathParts &current, const QString &title)
{
    FileQuestion question;
    question.title = title;
    question.folder = current.drive + current.folder;
    question.defaultExtension = QStringLiteral("BMP");
    question.promptOverwrite = true;
    return question;
}

/// Everything after the answer, under the busy pointer. What the control reports is told and is no failure of this.
void savePicture(frmMainViewer &viewer, const FileAnswer &answer)
{
    const Hourglass hourglass;
    auto &image = form<checkjpg>().polImageBox1;
    if (const auto plan = mainViewerSavePlan(answer.filterIndex, saveOptionsOfPreferences()))
        saveByPlan(*plan, image, answer.path);
    if (!image.PolyLastError().isEmpty()) {
        MessageBox box;
        box.title = viewer.windowTitle();
        box.text = image.PolyLastError();
        dialogs().show(&viewer, box);
    }
    // The preparation changed the picture that is held.
    viewer.ShowSelectedDisplayItem();
}

}

void frmMainViewer::mnuFileSaveImageAs_Click()
{
    const PathParts current = SplitFilePath(globals.CurrentMediaFile);
    FileQuestion question = saveQuestion(current, tr("Save Image As"));
    const auto failed = [this] {
        MessageBox box;
        box.title = tr("Image Save As Error");
        box.text = tr("There was an error while saving the image!!");
        box.icon = MessageBox::Icon::Exclamation;
        dialogs().show(this, box);
    };
    const std::optional<QString> name = nameBeforeFirstDot(current.file);
    if (!name) {
        failed();
        return;
    }
    question.fileName = *name;
    question.filter = saveDialogFilter();
    const auto answer = dialogs().saveFile(this, question);
    if (!answer || globals.ProgramExiting)
        return;
    try {
        savePicture(*this, *answer);
    } catch (const std::exception &problem) {
        qCWarning(saving, "image not saved: %s", problem.what());
        failed();
        return;
    }
    StatusBar1->repaint();
}

void frmMainViewer::mnuFileSaveThumbnail_Click()
{
    const PathParts current = SplitFilePath(globals.CurrentMediaFile);
    FileQuestion question = saveQuestion(current, tr("Save Thumbnail Of Current Image"));
    question.fileName = thumbnailName(current.file);
    question.filter = tr("Bitmap Files (*.BMP)|*.BMP");
    const auto answer = dialogs().saveFile(this, question);
    // Nothing on the pane is nothing to write.
    if (!answer || globals.ProgramExiting || Image1->isEmpty())
        return;
    const auto &preferences = form<frmPreferences>();
    auto &mask = form<checkjpg>().ImageMaskControl1;
    mask.setMaskThumbnailStyle(preferences.chkThumbNailStyle->isChecked());
    mask.setMaskThumbnailBackColor(preferences.thumbnailBackColor());
    mask.setMaskPicture(Image1->picture());
    const int size = preferences.sldThumbNailSize->value();
    mask.MaskMakeThumbnail(size, size);
    // Taken before events come in: they may make another thumbnail, or end the program.
    const Picture thumbnail = mask.MaskThumbnailPicture();
    mask.setMaskPicture(nullptr);
    Yield();
    if (const auto saved = encodeFile(thumbnail, answer->path, TypeCode::Bmp); !saved)
        qCWarning(saving, "thumbnail \"%s\" not written: %s", qPrintable(displayPath(answer->path)),
            qPrintable(saved.reason()));
    if (!globals.ProgramExiting)
        ShowSelectedDisplayItem();
}
