#include "platform/linux/defaulthandler.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <QStandardPaths>

namespace {

constexpr qint64 largestFile = 4 * 1024 * 1024; ///< a list of applications; the caches of real systems hold 200 KiB

/// The values of one key in one group of a desktop-style file; `separator` parts lists. The last line of a key counts.
QString valueIn(const QString &file, const QString &group, const QString &key)
{
    const Result<QByteArray> bytes = readFile(file, largestFile);
    if (!bytes)
        return {};
    QString value;
    bool inGroup = false;
    const QByteArray start = key.toUtf8() + '=';
    const QList<QByteArray> lines = bytes->split('\n');
    for (const QByteArray &line : lines) {
        const QByteArray text = line.trimmed();
        if (text.startsWith('['))
            inGroup = text == '[' + group.toUtf8() + ']';
        else if (inGroup && text.startsWith(start))
            value = QString::fromUtf8(text.mid(start.size())).trimmed();
    }
    return value;
}

/// The two kinds of escapes of desktop files: those of every string value, here.
QString unescaped(const QString &value)
{
    QString text;
    for (qsizetype at = 0; at < value.size(); ++at) {
        if (value[at] != u'\\' || at + 1 == value.size()) {
            text += value[at];
            continue;
        }
        switch (value[++at].unicode()) {
        case u's':
            text += u' ';
            break;
        case u'n':
            text += u'\n';
            break;
        case u't':
            text += u'\t';
            break;
        case u'r':
            text += u'\r';
            break;
        case u'\\':
            text += u'\\';
            break;
        default:
            text += u'\\';
            text += value[at];
        }
    }
    return text;
}

/// The desktop file of an id, the user's before the system's. A dash in an id may stand for a folder.
QString desktopFile(const QString &id)
{
    if (id.isEmpty() || id.contains(QLatin1Char('/')))
        return {};
    const QStringList folders = QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    for (const QString &folder : folders) {
        QString name = id;
        while (true) {
            const QString file = folder + QLatin1Char('/') + name;
            if (FileExists(file))
                return file;
            const qsizetype dash = name.indexOf(QLatin1Char('-'));
            if (dash < 0)
                break;
            name[dash] = QLatin1Char('/');
        }
    }
    return {};
}

/// The command of the first id that can be run and has a window of its own.
QStringList commandOf(const QString &ids)
{
    const QString group = QStringLiteral("Desktop Entry");
    for (const QString &id : ids.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString file = desktopFile(id.trimmed());
        if (file.isEmpty() || valueIn(file, group, QStringLiteral("Hidden")) == u"true"
            || valueIn(file, group, QStringLiteral("Terminal")) == u"true")
            continue;
        const QStringList words = programWords(execWords(unescaped(valueIn(file, group, QStringLiteral("Exec")))));
        if (!words.isEmpty() && !QStandardPaths::findExecutable(words.last()).isEmpty())
            return words;
    }
    return {};
}

/// The lists of choices, the user's and the desktop's own first.
QStringList choiceFiles()
{
    QStringList names;
    const QString desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toLower();
    for (const QString &desktop : desktops.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        if (!desktop.contains(QLatin1Char('/')))
            names.append(desktop + QStringLiteral("-mimeapps.list"));
    }
    names.append(QStringLiteral("mimeapps.list"));
    QStringList files;
    for (const auto location : {QStandardPaths::GenericConfigLocation, QStandardPaths::ApplicationsLocation}) {
        for (const QString &folder : QStandardPaths::standardLocations(location)) {
            for (const QString &name : names)
                files.append(folder + QLatin1Char('/') + name);
        }
    }
    return files;
}

} // namespace

QStringList execWords(const QString &exec)
{
    QStringList words;
    QString word;
    bool inQuotes = false;
    bool begun = false;
    const auto end = [&] {
        if (begun)
            words.append(word);
        word.clear();
        begun = false;
    };
    for (qsizetype at = 0; at < exec.size(); ++at) {
        const QChar character = exec[at];
        if (character == u'"') {
            inQuotes = !inQuotes;
            begun = true;
        } else if (inQuotes && character == u'\\' && at + 1 < exec.size()) {
            word += exec[++at];
        } else if (!inQuotes && character.isSpace()) {
            end();
        } else if (!inQuotes && character == u'%' && at + 1 < exec.size()) {
            if (exec[++at] == u'%') {
                word += u'%';
                begun = true;
            }
        } else {
            word += character;
            begun = true;
        }
    }
    end();
    return words;
}

QStringList programWords(const QStringList &words)
{
    qsizetype program = 0;
    if (FileNameOfPath(words.value(0)) == u"env") {
        ++program;
        while (program < words.size() && words[program].contains(QLatin1Char('=')))
            ++program;
    }
    return words.first(qMin(program + 1, words.size()));
}

QStringList defaultHandlerCommand(const QString &type)
{
    const QStringList files = choiceFiles();
    for (const char *group : {"Default Applications", "Added Associations"}) {
        for (const QString &file : files) {
            const QStringList command = commandOf(valueIn(file, QLatin1String(group), type));
            if (!command.isEmpty())
                return command;
        }
    }
    // Nobody was chosen: who says that it can.
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
        const QStringList command =
            commandOf(valueIn(folder + QStringLiteral("/mimeinfo.cache"), QStringLiteral("MIME Cache"), type));
        if (!command.isEmpty())
            return command;
    }
    return {};
}
