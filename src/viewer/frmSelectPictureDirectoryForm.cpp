#include "viewer/frmSelectPictureDirectoryForm.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "shell/frmPreferences.h"
#include "ui/background.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/foldersearch.h"
#include "viewer/frmMainViewer.h"

#include <QCoreApplication>

namespace {

int chosenPhotoCDSize()
{
    const auto &sizes = form<frmPreferences>().optPhotoCDSize;
    for (int index = sizes.first; index <= sizes.last; ++index) {
        if (sizes[index]->isChecked())
            return index;
    }
    return 0;
}

/// What stands in the place of a picture for a file that is played.
QString motionTypeText(const QString &name)
{
    const QString extension = name.mid(name.lastIndexOf(QLatin1Char('.'))).toUpper();
    for (const char *caption : avFileTypeCaptions) {
        if (QLatin1String(caption).mid(1, 4) == extension)
            return QCoreApplication::translate("MediaTypes", caption);
    }
    return QCoreApplication::translate("MediaTypes", "Motion");
}

} // namespace

void frmSelectPictureDirectoryForm::Form_Load()
{
    Drive1->fill();
    clearPreview();
}

void frmSelectPictureDirectoryForm::Form_Activate()
{
    const QPointer<frmSelectPictureDirectoryForm> self(this);
    PaintFormBackground(this, QStringLiteral("OTHER"));
    Yield();
    if (!self)
        return;
    if (!m_started) {
        m_started = true;
        openStartFolder();
        if (!self)
            return;
    }
    Dir1->refresh();
    BuildFilePatterns();
    Yield();
}

void frmSelectPictureDirectoryForm::Form_QueryUnload(bool &cancel)
{
    // Closed while it waits for an answer it answers like Cancel; whoever asked releases it.
    if (!isVisible())
        return;
    cmdCancel_Click();
    cancel = !globals.ProgramExiting;
}

void frmSelectPictureDirectoryForm::openStartFolder()
{
    QString start;
    switch (number(option("DefaultOpenFolder", "1")).value_or(0)) {
    case 1:
        start = option("LastVisitedFolder", "");
        break;
    case 2:
        start = option("UserChoiceOpenFolder", "");
        break;
    default:
        start = jumpFolder(3);
    }
    const WindowsSystemFolders folders;
    for (const QString &folder : {start, folders.desktop(), QStringLiteral("/")}) {
        if (!folder.isEmpty() && openFolder(folder))
            return;
    }
}

/// A change of the folder lets events in, and with them the end of the program: the window may be gone behind it.
bool frmSelectPictureDirectoryForm::openFolder(const QString &folder)
{
    const QPointer<frmSelectPictureDirectoryForm> self(this);
    if (!Dir1->setPath(folder))
        return false;
    if (self)
        Drive1->showDriveOf(folder);
    return true;
}

QString frmSelectPictureDirectoryForm::jumpFolder(int index)
{
    const WindowsSystemFolders folders;
    switch (index) {
    case 0:
        return folders.desktop();
    case 1:
        return folders.documents();
    case 2:
        return folders.favorites();
    default:
        return folders.pictures();
    }
}

void frmSelectPictureDirectoryForm::Drive1_Change()
{
    const QPointer<frmSelectPictureDirectoryForm> self(this);
    const bool entered = !Drive1->folder().isEmpty() && Dir1->setPath(Drive1->folder());
    // Not ready: the drive before stays.
    if (self)
        Drive1->settle(entered);
}

void frmSelectPictureDirectoryForm::Dir1_Change()
{
    const Hourglass busy;
    clearPreview();
    BuildFilePatterns();
}

void frmSelectPictureDirectoryForm::cmdFolder_Click(int index)
{
    ignore(openFolder(jumpFolder(index)));
}

void frmSelectPictureDirectoryForm::lblSearchSubFolders_Click()
{
    chkSearchSubs->toggle();
}

void frmSelectPictureDirectoryForm::cmdSelectFileTypes_Click()
{
    const QPointer<frmSelectPictureDirectoryForm> self(this);
    frmPreferences &preferences = form<frmPreferences>();
    preferences.SSTab1->setCurrentIndex(frmPreferences::FileTypes);
    if (!preferences.isVisible())
        preferences.exec();
    if (!self)
        return;
    clearPreview();
    BuildFilePatterns();
}

void frmSelectPictureDirectoryForm::cmdOK_Click()
{
    const QPointer<frmSelectPictureDirectoryForm> self(this);
    Dir1->takeHighlighted();
    if (!self)
        return;
    globals.ChosenFolder = folderWithSeparator(Dir1->path());
    saveOption("LastVisitedFolder", globals.ChosenFolder);
    hide();
}

void frmSelectPictureDirectoryForm::cmdCancel_Click()
{
    globals.ChosenFolder.clear();
    hide();
}

void frmSelectPictureDirectoryForm::reject()
{
    cmdCancel_Click();
}

void frmSelectPictureDirectoryForm::clearPreview()
{
    lblFileName->clear();
    imgThumbnail->clear();
    for (QLabel *value : {lblColors, lblWidth, lblFileSize, lblHeight})
        value->clear();
}

void frmSelectPictureDirectoryForm::File1_Click()
{
    const QString name = File1->text();
    clearPreview();
    if (name.isEmpty())
        return;
    lblFileName->setText(displayPath(name));
    PreviewQuestion question;
    question.path = folderWithSeparator(Dir1->path()) + name;
    question.target = imgThumbnail->contentsRect().size() * devicePixelRatioF();
    question.photoCDSize = chosenPhotoCDSize();
    requestPreview(question, this, [this](const FilePreview &preview) { showPreview(preview); });
}

void frmSelectPictureDirectoryForm::showPreview(const FilePreview &preview)
{
    // The folder may have changed while the file was read.
    if (preview.path != folderWithSeparator(Dir1->path()) + File1->text() || lblFileName->text().isEmpty())
        return;
    if (preview.bytes < 0)
        return;
    lblFileSize->setText(bytesText(preview.bytes));
    if (GetMediaKind(preview.path) == kindMotion) {
        imgThumbnail->setText(motionTypeText(preview.path));
        return;
    }
    lblColors->setText(colorsText(preview.bitsPerPixel));
    if (preview.size.isEmpty())
        return;
    lblWidth->setText(tr("%1 Pixels").arg(preview.size.width()));
    lblHeight->setText(tr("%1 Pixels").arg(preview.size.height()));
    QPixmap picture = QPixmap::fromImage(preview.image);
    picture.setDevicePixelRatio(devicePixelRatioF());
    imgThumbnail->setPixmap(picture);
}
