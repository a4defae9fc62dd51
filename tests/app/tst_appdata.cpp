#include "app/appdata.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "support/support.h"

#include <QtTest>

/// What the program was installed with reaches the folder that the user may write into.
class tst_appdata : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatIsMissingIsBroughtAndWhatIsThereStays();
};

void tst_appdata::whatIsMissingIsBroughtAndWhatIsThereStays()
{
    const TemporaryHome home;
    const auto contents = [](const QString &name) {
        const auto bytes = readFile(AppFolder() + name, 1000);
        return bytes ? *bytes : QByteArray("missing");
    };
    qputenv("LUMORA_DATA", (home.path() + QStringLiteral("none/")).toUtf8());
    seedAppFolder();
    home.write(QStringLiteral("installed/film.avi"), "new film");
    home.write(QStringLiteral("installed/images.dat"), "template");
    home.write(QStringLiteral("installed/Masks/round.bmp"), "round");
    home.write(QStringLiteral("installed/Masks/deep/star.bmp"), "star");
    home.write(QStringLiteral("installed/translations/lumora_de.qm"), "German");
    qputenv("LUMORA_DATA", (home.path() + QStringLiteral("installed/")).toUtf8());
    QVERIFY(writeFileAtomically(AppFolder() + QStringLiteral("film.avi"), "the user's own"));
    for (int start = 0; start < 2; ++start) {
        seedAppFolder();
        QCOMPARE(contents(QStringLiteral("film.avi")), QByteArray("the user's own"));
        QCOMPARE(contents(QStringLiteral("images.dat")), QByteArray("template"));
        QCOMPARE(contents(QStringLiteral("Masks/round.bmp")), QByteArray("round"));
        QCOMPARE(contents(QStringLiteral("Masks/deep/star.bmp")), QByteArray("star"));
    }
    // Other languages are read where they were installed.
    QVERIFY(!folderExists(AppFolder() + QStringLiteral("translations")));
    qunsetenv("LUMORA_DATA");
}

QTEST_GUILESS_MAIN(tst_appdata)
#include "tst_appdata.moc"
