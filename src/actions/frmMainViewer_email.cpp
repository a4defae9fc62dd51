#include "viewer/frmMainViewer.h"

#include "actions/email.h"
#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/mail.h"

void frmMainViewer::mnuFileSendToEmailAttachment_Click()
{
    // Without any selected entry there is no text, whatever the mark stands on.
    const QString selected = lstDisplay->selectedIndices().isEmpty() ? QString() : lstDisplay->text();
    const bool exists = FileExists(selected);
    if (!exists)
        dialogs().show(this, missingAttachmentBox());
    if (!globals.ProgramExiting)
        openMailWindow(this, pictureMail(exists ? selected : QString()));
}
