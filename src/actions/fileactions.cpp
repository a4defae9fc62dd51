#include "actions/fileactions.h"

#include "platform/filepath.h"

#include <QCoreApplication>
#include <QLocale>

#include <cerrno>
#include <climits>

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(FileActions)
};

MessageBox yesNo(const QString &title, const QString &text, MessageBox::Icon icon)
{
    MessageBox box;
    box.title = title;
    box.text = text;
    box.icon = icon;
    box.buttons = MessageBox::Buttons::YesNo;
    box.defaultAnswer = MessageBox::Answer::No;
    return box;
}

QString dateText(const QDateTime &time)
{
    return QLocale().toString(time, QLocale::ShortFormat);
}

} // namespace

QString fileActionCasing(const QString &path)
{
    QString text = path.toLower();
    bool startsWord = true;
    for (QChar &c : text) {
        if (startsWord)
            c = c.toUpper();
        startsWord = c == QLatin1Char(' ') || c == QLatin1Char('.');
    }
    return text;
}

std::optional<int> copyPercent(int index, int entries)
{
    if (entries <= 1)
        return std::nullopt;
    return static_cast<int>(static_cast<double>(index) / (entries - 1) * 100);
}

MessageBox copyQuestion(const QString &folder)
{
    return yesNo(Texts::tr("Copy files?"),
        Texts::tr("Are you sure you want to copy the select file(s) in the display list to: '%1'?")
            .arg(displayPath(folder)),
        MessageBox::Icon::Question);
}

MessageBox deleteQuestion()
{
    return yesNo(Texts::tr("Delete files?"),
        Texts::tr("Are you sure you want to delete the selected file(s) in the display list from your computer?"),
        MessageBox::Icon::Question);
}

MessageBox overwriteQuestion(const QString &fileName, const QDateTime &inTarget, const QDateTime &inSource)
{
    const QString name = displayPath(fileName) + QStringLiteral(" : ");
    return yesNo(Texts::tr("Overwrite file?"),
        Texts::tr("File ") + QStringLiteral("\n\n") + name + dateText(inTarget) + QStringLiteral("\n")
            + Texts::tr("already exists in the destination folder. ") + QStringLiteral("\n\n")
            + Texts::tr("Do you want to overwrite the current file ") + QStringLiteral("\n\n") + name
            + dateText(inSource) + QStringLiteral("\n\n") + Texts::tr("with this one?"),
        MessageBox::Icon::Question);
}

MessageBox readOnlyQuestion(FileAction action, const QString &path)
{
    const QString titles[] = {Texts::tr("Copy files?"), Texts::tr("Move files?"), Texts::tr("Delete files?")};
    return yesNo(titles[int(action)],
        Texts::tr("File %1 is read-only!  Do you want to continue with the rest of the files?").arg(displayPath(path)),
        MessageBox::Icon::Exclamation);
}

MessageBox fileActionReport(FileAction action, int count)
{
    const std::pair<QString, QString> reports[] = {
        {Texts::tr("Files Copied"), Texts::tr(" Files have been successfully copied on your system!")},
        {Texts::tr("Files Moved"), Texts::tr(" Files have been successfully moved on your system!")},
        {Texts::tr("Files Deleted"), Texts::tr(" Files have been successfully deleted from your system!")},
    };
    const auto &[title, words] = reports[int(action)];
    MessageBox box;
    box.title = title;
    box.text = QString::number(count) + words;
    box.icon = MessageBox::Icon::Information;
    return box;
}

std::optional<QString> objectionToName(const QString &name)
{
    if (name.trimmed().isEmpty())
        return Texts::tr("A file needs a name.");
    if (name.contains(QLatin1Char('/')) || name.contains(QChar(0)))
        return Texts::tr("The name may not hold the sign \"/\": it stands between folders.");
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return Texts::tr("This name belongs to a folder.");
    const auto bytes = pathToBytes(name).size();
    if (bytes > NAME_MAX)
        return Texts::tr("The name is too long: %1 bytes, where %2 are the most.").arg(bytes).arg(NAME_MAX);
    return std::nullopt;
}

QString renameProblem(int error, const QString &name)
{
    switch (error) {
    case EEXIST:
        return Texts::tr("There is a file \"%1\" already. Nothing was renamed.").arg(displayPath(name));
    case EACCES:
    case EPERM:
    case EROFS:
        return Texts::tr("You may not rename files in this folder.");
    case ENOENT:
        return Texts::tr("The file is not there any more.");
    default:
        return Texts::tr("The file was not renamed.") + QLatin1Char(' ') + qt_error_string(error);
    }
}
