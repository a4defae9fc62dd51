#include "actions/email.h"

#include "platform/filepath.h"

#include <QCoreApplication>

MailMessage pictureMail(const QString &path)
{
    MailMessage message;
    message.subject = QCoreApplication::translate("Email", "See attached pictures");
    message.note = QCoreApplication::translate("Email", "There is a graphic file attached. ") + QStringLiteral("\r\n ");
    if (path.isEmpty())
        return message;
    message.attachmentPath = path;
    message.attachmentName = FileNameOfPath(path);
    // At the blank behind the line end.
    message.attachmentPosition = int(message.note.size()) - 1;
    return message;
}

MessageBox missingAttachmentBox()
{
    MessageBox box;
    box.title = QCoreApplication::translate("Email", "Attachment file not found.");
    box.text = QCoreApplication::translate("Email",
        "The attachment for this email is not a valid file. The email message windows will still be displayed.  You "
        "may attach the item from within the email window.");
    box.icon = MessageBox::Icon::Exclamation;
    return box;
}
