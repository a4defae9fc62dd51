#include "app/translations.h"

#include "platform/folders.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QLibraryInfo>
#include <QTranslator>

#include <memory>

namespace {

bool isPlainLocale()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QByteArray value = qgetenv(variable);
        if (!value.isEmpty())
            return value == "C" || value == "POSIX";
    }
    return true;
}

bool install(const QString &name, const QString &folder)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(name, folder, QString()) || !QCoreApplication::installTranslator(translator.get()))
        return false;
    translator.release()->setParent(QCoreApplication::instance());
    return true;
}

}

QStringList translationNames(const QStringList &languages)
{
    QStringList names;
    for (QString language : languages) {
        language.replace(QLatin1Char('-'), QLatin1Char('_'));
        if (language == QLatin1String("C") || language.section(QLatin1Char('_'), 0, 0) == QLatin1String("en"))
            break;
        for (qsizetype end = language.size(); end > 0; end = language.lastIndexOf(QLatin1Char('_'))) {
            language.truncate(end);
            if (const QString name = QStringLiteral("lumora_") + language; !names.contains(name))
                names.append(name);
        }
    }
    return names;
}

void installTranslations()
{
    if (isPlainLocale())
        return;
    const QStringList names = translationNames(QLocale::system().uiLanguages());
    const QString folder = names.isEmpty() ? QString() : translationsFolder();
    if (folder.isEmpty())
        return;
    for (const QString &name : names) {
        if (!install(name, folder))
            continue;
        // Qt's words for Yes, No and the file dialog: of the same language, or none at all.
        install(QStringLiteral("qtbase_") + name.section(QLatin1Char('_'), 1),
            QLibraryInfo::path(QLibraryInfo::TranslationsPath));
        break;
    }
    // There is no window that would have to change its texts.
    QCoreApplication::removePostedEvents(QCoreApplication::instance(), QEvent::LanguageChange);
}

QLocale textLocale()
{
    return QLocale(
        QCoreApplication::translate("Language", "en_US", "Language and country of this translation, as de_DE"));
}

QString inTextLanguage(const QString &resource)
{
    QString own = resource;
    own.insert(
        resource.lastIndexOf(QLatin1Char('.')), QLatin1Char('_') + textLocale().name().section(QLatin1Char('_'), 0, 0));
    return QFile::exists(own) ? own : resource;
}
