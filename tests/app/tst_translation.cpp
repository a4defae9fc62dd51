#include "app/globals.h"
#include "app/startup.h"
#include "app/translations.h"
#include "engine/picturecache.h"
#include "platform/files.h"
#include "roads/programrun.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/frmDatabaseStats.h"
#include "thumbnails/thumbnailrun.h"
#include "viewer/frmMainViewer.h"

#include <QDirIterator>
#include <QTranslator>
#include <QtTest>

namespace {

/// The German file, which notes what the program asks it for in vain. Qt's own contexts are not the program's.
class NotingTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *disambiguation, int number) const override
    {
        const QString text = QTranslator::translate(context, source, disambiguation, number);
        static const QStringList foreign{QStringLiteral("CloseButton"), QStringLiteral("MAC_APPLICATION_MENU")};
        const QString name = QLatin1String(context);
        // The bare name of a file type, ".BMP", is the same everywhere.
        if (text.isEmpty() && *source && *source != '.' && !name.startsWith(QLatin1Char('Q'))
            && !foreign.contains(name))
            missing.append(name + QStringLiteral(": ") + QString::fromUtf8(source));
        return text;
    }
    mutable QStringList missing;
};

QChar mnemonicOf(const QString &text)
{
    const QKeySequence key = QKeySequence::mnemonic(text);
    return key.isEmpty() ? QChar() : QChar(key[0].key());
}

/// What Alt and a letter can mean in more than one way, place by place.
QStringList clashesIn(const QWidget &window)
{
    QMap<QString, QStringList> places;
    const auto note = [&](const QObject *place, const QString &text) {
        if (!mnemonicOf(text).isNull())
            places[QString::number(quintptr(place), 16) + mnemonicOf(text)].append(text);
    };
    const auto pageOf = [&](const QWidget *widget) {
        while (widget != &window && !qobject_cast<const QStackedWidget *>(widget->parentWidget()))
            widget = widget->parentWidget();
        return widget;
    };
    for (const auto *menu : window.findChildren<QMenu *>()) {
        for (const QAction *action : menu->actions()) {
            if (action->isVisible())
                note(menu, action->text());
        }
    }
    if (const auto *bar = window.findChild<QMenuBar *>()) {
        for (const QAction *menu : bar->actions())
            note(&window, menu->text());
    }
    for (const auto *button : window.findChildren<QAbstractButton *>()) {
        if (!button->isHidden())
            note(pageOf(button), button->text());
    }
    for (const auto *box : window.findChildren<QGroupBox *>())
        note(pageOf(box), box->title());
    for (const auto *label : window.findChildren<QLabel *>()) {
        if (label->buddy())
            note(pageOf(label), label->text());
    }
    QStringList clashes;
    for (const QStringList &texts : places) {
        if (texts.size() > 1)
            clashes.append(texts.join(QStringLiteral(" | ")));
    }
    return clashes;
}

/// "Strg+O: Datei öffnen" of the commands with a key, in the order of the menus.
QStringList keysIn(const QList<QAction *> &actions)
{
    QStringList rows;
    for (const QAction *action : actions) {
        QString caption = action->text().trimmed();
        QString key = action->shortcut().toString();
        if (action->menu())
            rows += keysIn(action->menu()->actions());
        else if (action->isVisible() && !key.isEmpty())
            rows += key.replace(QLatin1String("Ctrl"), QLatin1String("Strg"))
                        .replace(QLatin1String("Shift"), QLatin1String("Umschalt"))
                        .replace(QLatin1String("Del"), QLatin1String("Entf"))
                        .replace(QLatin1String("Right"), QLatin1String("Rechts"))
                        .replace(QLatin1String("Left"), QLatin1String("Links"))
                        .replace(QLatin1String("Return"), QLatin1String("Eingabe"))
                + QStringLiteral(": ") + caption.remove(QLatin1Char('&'));
    }
    return rows;
}

QStringList keysInHelp()
{
    QStringList rows;
    QFile page(inTextLanguage(QStringLiteral(":/lumora/help/index.html")));
    const QString text = page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
    static const QRegularExpression row(QStringLiteral("<kbd>([^<]*)</kbd></td><td>([^<]*)</td>"));
    for (auto match = row.globalMatch(text); match.hasNext();) {
        const auto found = match.next();
        rows += found.captured(1) + QStringLiteral(": ")
            + found.captured(2).replace(QLatin1String("&amp;"), QLatin1String("&"));
    }
    return rows;
}

QMap<QString, QString> home(const TemporaryHome &folder, const QString &language)
{
    QMap<QString, QString> own;
    for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "LUMORA_APP_FOLDER"})
        own.insert(QLatin1String(variable), folder.path() + language + QLatin1Char('/') + QLatin1String(variable));
    own.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    own.insert(QStringLiteral("LANGUAGE"), language);
    return own;
}

QMap<QString, QByteArray> filesBelow(const QString &folder)
{
    QMap<QString, QByteArray> files;
    for (QDirIterator at(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); at.hasNext();) {
        const QString path = at.next();
        files.insert(path.mid(folder.size()), readFile(path, 1 << 24) ? *readFile(path, 1 << 24) : QByteArray());
    }
    return files;
}

}

/// The road of a language: chosen by the environment, whole, and with no word of it where it does not belong.
class tst_translation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void namesFollowTheLanguages_data();
    void namesFollowTheLanguages();
    void everyWindowIsGermanWithoutAClash();
    void numbersAreWrittenAsTheTextsAre();
    void theEnvironmentChoosesTheLanguage_data();
    void theEnvironmentChoosesTheLanguage();
    void whatIsStoredIsTheSameInEveryLanguage();
};

void tst_translation::namesFollowTheLanguages_data()
{
    QTest::addColumn<QString>("languages");
    QTest::addColumn<QString>("names");
    QTest::newRow("with its country") << QStringLiteral("de-AT") << QStringLiteral("lumora_de_AT lumora_de");
    QTest::newRow("with its script") << QStringLiteral("sr-Latn-RS")
                                     << QStringLiteral("lumora_sr_Latn_RS lumora_sr_Latn lumora_sr");
    QTest::newRow("in order, each once") << QStringLiteral("fr de-DE de")
                                         << QStringLiteral("lumora_fr lumora_de_DE lumora_de");
    QTest::newRow("nothing behind English") << QStringLiteral("fr en-GB de") << QStringLiteral("lumora_fr");
    QTest::newRow("C") << QStringLiteral("C de") << QStringLiteral("");
    QTest::newRow("a name that only begins so") << QStringLiteral("enm") << QStringLiteral("lumora_enm");
    QTest::newRow("none") << QStringLiteral("") << QStringLiteral("");
}

void tst_translation::namesFollowTheLanguages()
{
    QFETCH(QString, languages);
    QFETCH(QString, names);
    QCOMPARE(translationNames(languages.split(QLatin1Char(' '))).join(QLatin1Char(' ')), names);
}

void tst_translation::everyWindowIsGermanWithoutAClash()
{
    const TemporaryHome ownHome;
    useBuiltModules();
    NotingTranslator german;
    QVERIFY(german.load(QStringLiteral(LUMORA_BIN "/lumora-translations/lumora_de.qm")));
    QCoreApplication::installTranslator(&german);
    ScriptedDialogs::install();
    QVERIFY(showMainViewer());
    QStringList clashes = clashesIn(form<frmMainViewer>());
    int windows = 0;
    for (const FormRow &row : formTable()) {
        if (!row.make)
            continue;
        clashes += clashesIn(*row.make());
        ++windows;
    }
    clashes += clashesIn(form<frmDatabaseStats>());
    QVERIFY(windows > 12);
    QCOMPARE(form<frmMainViewer>().mnuFile->text(), QStringLiteral("&Datei"));
    QCOMPARE(clashes, QStringList());
    QCOMPARE(keysInHelp(), keysIn(form<frmMainViewer>().menuBar()->actions()));
    QCOMPARE(german.missing, QStringList());
    setDialogs(nullptr);
    QCoreApplication::removeTranslator(&german);
    ShutDownProgram();
}

void tst_translation::numbersAreWrittenAsTheTextsAre()
{
    QTranslator german;
    QVERIFY(german.load(QStringLiteral(LUMORA_BIN "/lumora-translations/lumora_de.qm")));
    QCOMPARE(groupedNumber(1234567), QStringLiteral("1,234,567"));
    QCoreApplication::installTranslator(&german);
    QCOMPARE(groupedNumber(1234567), QStringLiteral("1.234.567"));
    // The estimate reads the rate that is shown.
    QCOMPARE(*estimateText(2400, groupedNumber(1200)), QStringLiteral("Verbleibende Zeit etwa: 00:02:00"));
    QVERIFY(inTextLanguage(QStringLiteral(":/lumora/TIPOFDAY.TXT")).endsWith(QLatin1String("TIPOFDAY_de.TXT")));
    QCOMPARE(inTextLanguage(QStringLiteral(":/none.txt")), QStringLiteral(":/none.txt"));
    QCoreApplication::removeTranslator(&german);
}

void tst_translation::theEnvironmentChoosesTheLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("language");
    QTest::addColumn<bool>("german");
    QTest::newRow("the list of languages") << "C.UTF-8"
                                           << "de" << true;
    QTest::newRow("the locale, which need not be there") << "de_AT.UTF-8"
                                                         << "" << true;
    QTest::newRow("the first language there is a file for") << "en_US.UTF-8"
                                                            << "fr:de" << true;
    QTest::newRow("English before it") << "de_DE.UTF-8"
                                       << "en:de" << false;
    QTest::newRow("the plain locale, as for all programs") << "C"
                                                           << "de" << false;
    QTest::newRow("no language") << "C.UTF-8"
                                 << "" << false;
}

void tst_translation::theEnvironmentChoosesTheLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QString, language);
    QFETCH(bool, german);
    const TemporaryHome ownHome;
    const QMap<QString, QString> environment{
        {QStringLiteral("LC_ALL"), locale}, {QStringLiteral("LANGUAGE"), language}};
    Run help({QStringLiteral("--help")}, environment);
    QCOMPARE(help.status(), 0);
    QVERIFY(help.output().startsWith(QLatin1String(german ? "Aufruf: lumora" : "Usage: lumora")));
    Run wrong({QStringLiteral("--none")}, environment);
    QCOMPARE(wrong.status(), 2);
    QVERIFY2(wrong.log().contains(QString::fromUtf8(german ? "unbekannte Option „--none“" : "unknown option '--none'")),
        qPrintable(wrong.log()));
    Run controls({QStringLiteral("controls"), QStringLiteral("frmMainViewer")}, environment,
        QStringLiteral(LUMORA_BIN "/lumora-dev"));
    QCOMPARE(controls.status(), 0);
    const QString rows = controls.output();
    QVERIFY(rows.contains(QLatin1String(german ? "mnuFile\tQAction\t&Datei\t" : "mnuFile\tQAction\t&File\t")));
    QVERIFY(rows.contains(QString::fromUtf8(german ? "\tA&lle hinzufügen\t" : "\t&Add All\t")));
}

void tst_translation::whatIsStoredIsTheSameInEveryLanguage()
{
    const TemporaryHome folder;
    const QString picture = folder.writePicture(QStringLiteral("a.png"), {30, 20});
    const QString list = folder.write(QStringLiteral("a.Lsl"),
        "[File List]\r\nNo. Of Pictures=1\r\nCurrent Index=0\r\n\"0 =| " + picture.toUtf8()
            + "\"\r\n*** End of List ***\r\n");
    QMap<QString, QByteArray> stored;
    for (const QString &language : {QStringLiteral("en"), QStringLiteral("de")}) {
        QDir().mkpath(folder.path() + language + QStringLiteral("/LUMORA_APP_FOLDER"));
        Run run({list}, home(folder, language));
        QVERIFY2(run.stands(), qPrintable(run.log()));
        QCOMPARE(run.endedBy(SIGTERM), 0);
        const QMap<QString, QByteArray> files = filesBelow(folder.path() + language);
        QVERIFY(files.keys().join(QLatin1Char(' ')).contains(QLatin1String("user.registry")));
        if (language == QLatin1String("en"))
            stored = files;
        QCOMPARE(files.keys(), stored.keys());
        for (auto file = files.begin(); file != files.end(); ++file) {
            const QString own = folder.path() + language;
            const QByteArray bytes = QByteArray(file.value()).replace(own.toUtf8(), folder.path().toUtf8() + "en");
            QVERIFY2(bytes == stored.value(file.key()), qPrintable(file.key()));
        }
    }
}

QTEST_MAIN(tst_translation)
#include "tst_translation.moc"
