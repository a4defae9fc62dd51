#pragma once

#include "ui/controls.h"
#include "ui/form.h"
#include "ui/listbox.h"

#include <QLineEdit>
#include <QPushButton>

/// The hidden mailbox: commands of this and of later starts come through its button and wait in its queue.
class frmPreviousInstance : public FormWindow
{
    Q_OBJECT
public:
    explicit frmPreviousInstance(QWidget *parent = nullptr);

    CONTROL(List1, ListBox); ///< the queue, oldest first
    CONTROL(Text1, QLineEdit);
    CONTROL(cmdDummy, QPushButton); ///< "Ready for command" while the mailbox is free

    /// What this start was asked. Form_Load takes it in as the first entries of the queue.
    static inline QStringList StartCommands;

    void Form_Load() override;
    void cmdDummy_Click();
    void QueueCommand(const QString &text);
    /// Puts a command into the mailbox and clicks it, as a later start does.
    void takeIn(const QString &command);
};

/// Restores a minimised window and brings it to the front; the token is that of the start that asked for it.
void BringToFront(QWidget *window, const QString &activationToken = {});
