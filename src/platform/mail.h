#pragma once

#include "platform/mailmessage.h"

class QWidget;

/// Opens a new mail in the user's mail program. Returns at once; whatever takes time happens beside the windows.
///
/// The roads, in this order, the next one when one fails: the Email portal of the desktop, the command line of a mail
/// program that is known to this program, xdg-email. When all fail the log category "lumora.mail" says so, and nothing
/// else happens. `owner` is the window that the desktop's own dialogs stand over.
void openMailWindow(QWidget *owner, const MailMessage &message);
