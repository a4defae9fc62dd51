#pragma once

#include <QString>

/// A new mail as the user gets to see it: the mail program shows it, and it is sent there or not at all.
struct MailMessage
{
    QString subject;
    QString note; ///< the text; lines end in CR LF
    QString attachmentPath; ///< empty for none
    QString attachmentName; ///< as the receiver is to see it
    int attachmentPosition = 0; ///< where in the note it stands, for mail systems that place attachments in the text

    bool operator==(const MailMessage &) const = default;
};
