#include "platform/dialogs.h"

#include "platform/filefilter.h"
#include "platform/filepath.h"
#include "platform/files.h"

#include <QColorDialog>
#include <QCoreApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>

namespace {
/// The plain pointer while a dialog is up, whatever busy work asked the question.
class PlainPointer
{
public:
    PlainPointer()
        : m_changed(QGuiApplication::overrideCursor() != nullptr)
    {
        if (m_changed)
            QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    ~PlainPointer()
    {
        if (m_changed)
            QGuiApplication::restoreOverrideCursor();
    }
    PlainPointer(const PlainPointer &) = delete;
    PlainPointer &operator=(const PlainPointer &) = delete;

private:
    bool m_changed;
};

QMessageBox::Icon iconOf(MessageBox::Icon icon)
{
    switch (icon) {
    case MessageBox::Icon::None:
        return QMessageBox::NoIcon;
    case MessageBox::Icon::Information:
        return QMessageBox::Information;
    case MessageBox::Icon::Question:
        return QMessageBox::Question;
    case MessageBox::Icon::Exclamation:
        return QMessageBox::Warning;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons buttonsOf(MessageBox::Buttons buttons)
{
    switch (buttons) {
    case MessageBox::Buttons::Ok:
        return QMessageBox::Ok;
    case MessageBox::Buttons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MessageBox::Buttons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::StandardButton buttonOf(MessageBox::Answer answer)
{
    switch (answer) {
    case MessageBox::Answer::Ok:
        return QMessageBox::Ok;
    case MessageBox::Answer::Yes:
        return QMessageBox::Yes;
    case MessageBox::Answer::No:
        return QMessageBox::No;
    case MessageBox::Answer::Cancel:
        return QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

// Closing a box is its harmless answer.
QMessageBox::StandardButton harmlessButton(MessageBox::Buttons buttons)
{
    switch (buttons) {
    case MessageBox::Buttons::Ok:
        return QMessageBox::Ok;
    case MessageBox::Buttons::YesNo:
        return QMessageBox::No;
    case MessageBox::Buttons::OkCancel:
        return QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

MessageBox::Answer answerOf(QMessageBox::StandardButton button)
{
    switch (button) {
    case QMessageBox::Yes:
        return MessageBox::Answer::Yes;
    case QMessageBox::No:
        return MessageBox::Answer::No;
    case QMessageBox::Cancel:
        return MessageBox::Answer::Cancel;
    default:
        return MessageBox::Answer::Ok;
    }
}

/// Of a file's name all but its ending, which mostly stays; else the whole text.
void selectName(const QInputDialog &dialog)
{
    auto *const field = dialog.findChild<QLineEdit *>();
    const QString text = dialog.textValue();
    const qsizetype dot = text.lastIndexOf(QLatin1Char('.'));
    if (field && dot > 0 && dot + 1 < text.size() && text[dot + 1].isLetter())
        field->setSelection(0, int(dot));
}

class DesktopDialogs : public Dialogs
{
    Q_DECLARE_TR_FUNCTIONS(DesktopDialogs)

public:
    MessageBox::Answer show(QWidget *owner, const MessageBox &box) override
    {
        const PlainPointer pointer;
        QMessageBox dialog(iconOf(box.icon), box.title, box.text, buttonsOf(box.buttons), owner);
        dialog.setTextFormat(Qt::PlainText); // a file name may look like markup
        const QMessageBox::StandardButton wanted = buttonOf(box.defaultAnswer);
        const QMessageBox::StandardButton harmless = harmlessButton(box.buttons);
        dialog.setDefaultButton(dialog.standardButtons().testFlag(wanted) ? wanted : harmless);
        dialog.setEscapeButton(harmless);
        dialog.exec();
        return answerOf(dialog.standardButton(dialog.clickedButton()));
    }

    std::optional<FileAnswer> openFile(QWidget *owner, const FileQuestion &question) override
    {
        return askForFile(owner, question, QFileDialog::AcceptOpen);
    }

    std::optional<FileAnswer> saveFile(QWidget *owner, const FileQuestion &question) override
    {
        return askForFile(owner, question, QFileDialog::AcceptSave);
    }

    std::optional<QString> chooseFolder(QWidget *owner, const QString &title, const QString &start) override
    {
        const PlainPointer pointer;
        QFileDialog dialog(owner, title, start);
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return std::nullopt;
        const QString folder = dialog.selectedFiles().constFirst();
        return folder.endsWith(u'/') ? folder : folder + u'/';
    }

    std::optional<QString> inputText(
        QWidget *owner, const QString &title, const QString &prompt, const QString &value) override
    {
        const PlainPointer pointer;
        QInputDialog dialog(owner);
        dialog.setInputMode(QInputDialog::TextInput);
        dialog.setWindowTitle(title);
        dialog.setLabelText(prompt);
        dialog.setTextValue(value);
        constexpr int usualWidth = 420; // pixels; a name of usual length is seen as a whole
        dialog.resize(usualWidth, dialog.sizeHint().height());
        QMetaObject::invokeMethod(
            &dialog, [&] { selectName(dialog); }, Qt::QueuedConnection);
        return dialog.exec() == QDialog::Accepted ? std::optional(dialog.textValue()) : std::nullopt;
    }

    std::optional<QColor> chooseColor(QWidget *owner, const QColor &start) override
    {
        const PlainPointer pointer;
        QColorDialog dialog(start, owner);
        return dialog.exec() == QDialog::Accepted ? std::optional(dialog.selectedColor()) : std::nullopt;
    }

private:
    std::optional<FileAnswer> askForFile(QWidget *owner, const FileQuestion &question, QFileDialog::AcceptMode mode);
    bool mayReplace(QWidget *owner, const FileQuestion &question, const QString &path);
};

// Qt names the chosen filter with its patterns or without them, depending on who draws the dialog. 1-based.
int chosenFilter(const QFileDialog &dialog, const QVector<FileFilter> &filters)
{
    const QString chosen = dialog.selectedNameFilter();
    const QStringList names = dialog.nameFilters();
    for (qsizetype i = 0; i < filters.size(); ++i) {
        if (names.value(i) == chosen || filters[i].text.simplified() == chosen.simplified())
            return int(i) + 1;
    }
    return 1;
}

// The question about replacing is asked here, once the extension is on: a desktop's own dialog asks about the name as
// typed.
std::optional<FileAnswer> DesktopDialogs::askForFile(
    QWidget *owner, const FileQuestion &question, QFileDialog::AcceptMode mode)
{
    const PlainPointer pointer;
    const QVector<FileFilter> filters = fileFilters(question.filter);
    QFileDialog dialog(owner, question.title, question.folder);
    dialog.setAcceptMode(mode);
    dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (!filters.isEmpty())
        dialog.setNameFilters(qtNameFilters(filters));
    if (!question.fileName.isEmpty())
        dialog.selectFile(question.fileName);
    while (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
        FileAnswer answer{dialog.selectedFiles().constFirst(), chosenFilter(dialog, filters)};
        if (mode == QFileDialog::AcceptOpen)
            return answer;
        answer.path = withDefaultExtension(answer.path, question.defaultExtension, filters, answer.filterIndex);
        if (!question.promptOverwrite || !FileExists(answer.path) || mayReplace(owner, question, answer.path))
            return answer;
    }
    return std::nullopt;
}

bool DesktopDialogs::mayReplace(QWidget *owner, const FileQuestion &question, const QString &path)
{
    MessageBox box;
    box.title = question.title;
    box.text = tr("%1 already exists.\nDo you want to replace it?").arg(displayPath(FileNameOfPath(path)));
    box.icon = MessageBox::Icon::Exclamation;
    box.buttons = MessageBox::Buttons::YesNo;
    box.defaultAnswer = MessageBox::Answer::No;
    return show(owner, box) == MessageBox::Answer::Yes;
}

std::unique_ptr<Dialogs> &current()
{
    static std::unique_ptr<Dialogs> dialogs;
    return dialogs;
}
}

Dialogs &dialogs()
{
    if (!current())
        current() = std::make_unique<DesktopDialogs>();
    return *current();
}

void setDialogs(std::unique_ptr<Dialogs> other)
{
    current() = std::move(other);
}
