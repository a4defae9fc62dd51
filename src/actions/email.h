#pragma once

#include "platform/mailmessage.h"
#include "platform/messagebox.h"

/// The mail that sends a picture. `path` is empty when there is no file to attach.
MailMessage pictureMail(const QString &path);

/// What is told when the file to attach is not there; the mail window comes up all the same.
MessageBox missingAttachmentBox();
