#pragma once

#include "platform/messagebox.h"

#include <QColor>
#include <QFont>
#include <QStringList>

#include <memory>
#include <optional>

class QWidget;

/// What the common file dialog is asked: the fields of `CMDialog1`.
struct FileQuestion
{
    QString title;
    QString folder; ///< start folder
    QString fileName;
    /// "Visible text (*.Ext)|*.Ext|Next (*.A;*.B)|*.A;*.B|"
    QString filter;
    QString defaultExtension; ///< without its dot; added to a name that has none
    bool promptOverwrite = false;
};
struct FileAnswer
{
    QString path;
    int filterIndex = 1; ///< 1-based
};

/// Every box, file, colour and font dialog and input box of the program goes through here. Tests put a double in that
/// scripts the answers and fails on a box nobody expected.
class Dialogs
{
public:
    virtual ~Dialogs() = default;
    virtual MessageBox::Answer show(QWidget *owner, const MessageBox &box) = 0;
    virtual std::optional<FileAnswer> openFile(QWidget *owner, const FileQuestion &question) = 0;
    virtual std::optional<FileAnswer> saveFile(QWidget *owner, const FileQuestion &question) = 0;
    /// The folder with a separator at its end.
    virtual std::optional<QString> chooseFolder(QWidget *owner, const QString &title, const QString &start) = 0;
    /// None on Cancel.
    virtual std::optional<QString> inputText(
        QWidget *owner, const QString &title, const QString &prompt, const QString &value) = 0;
    virtual std::optional<QColor> chooseColor(QWidget *owner, const QColor &start) = 0;
};

/// The dialogs in use; the real ones unless a test has set others. `setDialogs(nullptr)` brings the real ones back.
Dialogs &dialogs();
void setDialogs(std::unique_ptr<Dialogs> other);
