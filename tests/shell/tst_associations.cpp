#include "shell/associations.h"

#include "support/support.h"

#include <QMimeDatabase>
#include <QtTest>

namespace {
using Action = AssociationWrite::Action;
using Root = RegistryStore::Root;

const QString explorerFolder = QStringLiteral(R"(Software\Microsoft\Windows\CurrentVersion\Explorer\FileExts\)");

int beeps = 0;

QString stored(const QString &key)
{
    return ReadDefault(key, QString());
}

QString progID(const char *extension)
{
    const QString key = explorerFolder + QLatin1String(extension);
    return registryStore().value(Root::CurrentUser, key, QStringLiteral("ProgID")).value_or(QStringLiteral("none"));
}

AssociationBoxes boxes(std::initializer_list<int> checked)
{
    AssociationBoxes all;
    for (const int box : checked)
        all.set(std::size_t(box));
    return all;
}

/// As the window does it, but on the disk at once.
void setAssociations(const AssociationBoxes &checked)
{
    beeps = 0;
    QVERIFY(registryStore().transaction([&] {
        const auto beep = [] { ++beeps; };
        carryOut(classWrites(QStringLiteral("/opt/lumora/"), QStringLiteral("lumora")), beep);
        carryOut(keyWrites(), beep);
        carryOut(userWrites(), beep);
        carryOut(choiceWrites(checked, stored), beep);
    }));
}

void give(const char *extension, const QString &owner)
{
    QVERIFY(CreateKey(Root::ClassesRoot, QLatin1String(extension)));
    QVERIFY(SetClassesValue(QLatin1String(extension), QString(), owner));
}
}

class tst_associations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<TemporaryHome>(); }
    void classesComeInTheOrderOfTheIcons();
    void verbsFollowTheKindOfMedia();
    void everyAppliedCodeHasAClass();
    void boxesDecideByPlace_data();
    void boxesDecideByPlace();
    void settingTwiceKeepsTheFirstOwner();
    void uncheckingWithoutAnEarlierOwnerLeavesEmptyValues();
    void aForeignTypeThatStaysUncheckedIsEmptied();
    void windowDumpsHaveNoBoxAndAreAlwaysSet();
    void theBoxesShowTheirPlaceInTheStore();
    void rubbishInEveryKeyIsOvercome();
    void aStoreThatCannotBeWrittenKeepsItsValues();
    void onlyKeysThatAreThereAreOpened();
    void theDesktopIsToldOfWholeTypes();
    void theSystemKnowsTheTypesByTheseNames();

private:
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_associations::classesComeInTheOrderOfTheIcons()
{
    const QStringList expected = QStringLiteral(
        "art asf asx avi bmp crw cur cut dcr dcx dib emf fpx gem gif lsl hrz ico iff img jp2 jpg lbm mac "
        "mbm mid mp2 mp3 mpg mrw msp nef orf pbm pcd pcx pgm pic pmp png pnm ppm psd psp raf ras rgb "
        "rle sfw tga thm tif wav wma wmf wmv wpg xbm xpm xwd jpeg mpeg tiff wbmp jpe")
                                     .split(QLatin1Char(' '));
    QStringList classes;
    QMap<QString, QString> icons;
    for (const AssociationWrite &write : classWrites(QStringLiteral("/opt/"), QStringLiteral("lumora"))) {
        const QStringList parts = write.key.split(QLatin1Char('\\'));
        if (write.action == Action::CreateClassesKey && parts.size() == 1)
            classes.append(parts[0].section(QLatin1Char('.'), 1, 1));
        if (write.action == Action::SetClassesValue && parts.value(1) == QLatin1String("DefaultIcon"))
            icons.insert(classes.last(), write.text);
    }
    QCOMPARE(classes, expected);
    for (qsizetype place = 0; place + 1 < expected.size(); ++place)
        QCOMPARE(icons[expected[place]], QStringLiteral("/opt/lumora.exe,%1").arg(place + 2));
    QCOMPARE(icons[QStringLiteral("jpe")], icons[QStringLiteral("jpg")]);
}

void tst_associations::verbsFollowTheKindOfMedia()
{
    carryOut(classWrites(QStringLiteral("/opt/my %2 programs/"), QStringLiteral("lumora")), [] {});
    const QString command = QStringLiteral("\"/opt/my %2 programs/lumora.exe\" \"%1\"");
    QCOMPARE(stored(QStringLiteral("Lumora.jpg.3")), QStringLiteral("Lumora JPG File"));
    QCOMPARE(stored(QStringLiteral("Lumora.art.3\\DefaultIcon")), QStringLiteral("/opt/my %2 programs/lumora.exe,2"));
    for (const char *code : {"art", "tiff", "lsl"}) {
        const QString shell = QStringLiteral("Lumora.%1.3\\Shell\\").arg(QLatin1String(code));
        for (const char *verb : {"Open", "Preview", "Edit"}) {
            QCOMPARE(stored(shell + QLatin1String(verb)), QLatin1String(verb) + QStringLiteral(" with &Lumora V3"));
            QCOMPARE(stored(shell + QLatin1String(verb) + QStringLiteral("\\Command")), command);
        }
    }
    for (const char *code : {"mid", "mpeg"}) {
        const QString name = QStringLiteral("Lumora.%1.3").arg(QLatin1String(code));
        QCOMPARE(stored(name + QStringLiteral("\\Shell\\Open")), QStringLiteral("Play with &Lumora V3"));
        QCOMPARE(stored(name + QStringLiteral("\\Shell\\Open\\Command")), command);
        QVERIFY(registryStore().keyExists(Root::ClassesRoot, name + QStringLiteral("\\Shell\\Edit\\Command")));
        QVERIFY(registryStore().values(Root::ClassesRoot, name + QStringLiteral("\\Shell\\Edit\\Command")).isEmpty());
        QVERIFY(registryStore().values(Root::ClassesRoot, name + QStringLiteral("\\Shell\\Preview")).isEmpty());
        QVERIFY(registryStore().keyExists(Root::ClassesRoot, name + QStringLiteral("\\PreviousAssociation")));
    }
}

void tst_associations::everyAppliedCodeHasAClass()
{
    carryOut(classWrites(QStringLiteral("/opt/"), QStringLiteral("lumora")), [] {});
    int codes = 0;
    for (const AssociationWrite &write : userWrites()) {
        if (write.action != Action::SetUserValue)
            continue;
        QVERIFY2(!stored(write.text).isEmpty(), qPrintable(write.text));
        QCOMPARE(QLatin1Char('.') + write.text.section(QLatin1Char('.'), 1, 1), write.key.mid(explorerFolder.size()));
        ++codes;
    }
    QCOMPARE(codes, 65);
}

void tst_associations::boxesDecideByPlace_data()
{
    QTest::addColumn<int>("box");
    QTest::addColumn<QString>("codes");
    const auto row = [](const char *caption, int box, const char *codes) {
        QTest::newRow(caption) << box << QString::fromLatin1(codes);
    };
    row(".ART", 1, "ART");
    row(".JPG", 13, "JPG");
    row(".LBM", 14, "JPE");
    row(".MAC", 15, "LBM");
    row("(.ASF) - Active Streaming Format", 30, "WPG");
    row("(.MID) - MIDI Music Format", 39, "MP3");
    row(".XWD", 40, "MID");
    row(".DCX", 41, "DCX");
    row(".XPM", 49, "XPM");
    row("", 50, "");
    row(".WBMP", 51, "LSL WBMP");
    row(".CRW", 52, "CRW TIFF");
    row(".DCR", 53, "DCR JPEG");
    row(".FPX", 54, "FPX MPEG");
    row(".THM", 61, "THM");
}

void tst_associations::boxesDecideByPlace()
{
    QFETCH(int, box);
    QFETCH(QString, codes);
    QCOMPARE(associationCaption(box), QString::fromLatin1(QTest::currentDataTag()));
    setAssociations(boxes({box}));
    QStringList associated;
    for (const AssociationWrite &write : userWrites()) {
        const QString extension = write.key.mid(explorerFolder.size());
        if (write.action == Action::SetUserValue && stored(extension) == write.text
            && extension != QLatin1String(".xwd"))
            associated.append(extension.mid(1).toUpper());
    }
    QCOMPARE(associated.join(QLatin1Char(' ')), codes);
}

void tst_associations::settingTwiceKeepsTheFirstOwner()
{
    give(".jpg", QStringLiteral("gimp.jpg"));
    setAssociations(boxes({13}));
    setAssociations(boxes({13}));
    QCOMPARE(stored(QStringLiteral(".jpg")), QStringLiteral("Lumora.jpg.3"));
    QCOMPARE(stored(QStringLiteral(".jpg\\Lumora.Restore")), QStringLiteral("gimp.jpg"));
    QCOMPARE(progID(".jpg"), QStringLiteral("Lumora.jpg.3"));

    setAssociations({});
    QCOMPARE(stored(QStringLiteral(".jpg")), QStringLiteral("gimp.jpg"));
    QCOMPARE(stored(QStringLiteral(".jpg\\Lumora.Restore")), QString());
    QCOMPARE(progID(".jpg"), QStringLiteral("gimp.jpg"));
    QVERIFY2(registryStore().keyExists(Root::ClassesRoot, QStringLiteral("Lumora.jpg.3")), "it has an owner again");
}

void tst_associations::uncheckingWithoutAnEarlierOwnerLeavesEmptyValues()
{
    setAssociations(boxes({13}));
    setAssociations({});
    QCOMPARE(stored(QStringLiteral(".jpg")), QString());
    QCOMPARE(progID(".jpg"), QString());
    QVERIFY(!registryStore().keyExists(Root::ClassesRoot, QStringLiteral("Lumora.jpg.3")));
    QCOMPARE(beeps, 64); // all but the one without a box
}

// The store is this program's own record: what it does not own has no owner there.
void tst_associations::aForeignTypeThatStaysUncheckedIsEmptied()
{
    give(".png", QStringLiteral("gimp.png"));
    setAssociations({});
    QCOMPARE(stored(QStringLiteral(".png")), QString());
    QCOMPARE(progID(".png"), QString());
}

void tst_associations::windowDumpsHaveNoBoxAndAreAlwaysSet()
{
    setAssociations({});
    QCOMPARE(stored(QStringLiteral(".xwd")), QStringLiteral("Lumora.xwd.3"));
    QCOMPARE(progID(".xwd"), QStringLiteral("Lumora.xwd.3"));
    QCOMPARE(associatedBoxes(stored), boxes({49}));
}

void tst_associations::theBoxesShowTheirPlaceInTheStore()
{
    AssociationBoxes all;
    all.set();
    setAssociations(all);
    QCOMPARE(beeps, 0);
    all.reset(0).reset(missingAssociationBox);
    QCOMPARE(associatedBoxes(stored), all);

    const std::pair<const char *, int> places[] = {{"art", 1}, {"jpg", 13}, {"lbm", 14}, {"wpg", 29}, {"asf", 30},
        {"mid", 39}, {"dcx", 40}, {"wbmp", 51}, {"crw", 52}, {"thm", 61}};
    for (const auto &[code, box] : places) {
        const QString extension = QStringLiteral(".") + QLatin1String(code);
        const QString owner = QStringLiteral("Lumora.%1.3").arg(QLatin1String(code));
        const auto only = [&](const QString &key) { return key == extension ? owner : QString(); };
        QCOMPARE(associatedBoxes(only), boxes({box}));
    }
    // JPE and list files have no box, and no owner's name is taken for another's.
    const auto hidden = [](const QString &key) {
        return key == QLatin1String(".jpe") ? QStringLiteral("Lumora.jpe.3")
            : key == QLatin1String(".lsl")  ? QStringLiteral("Lumora.lsl.3")
                                            : QStringLiteral("Lumora.jpg.3x");
    };
    QVERIFY(associatedBoxes(hidden).none());
}

void tst_associations::rubbishInEveryKeyIsOvercome()
{
    const QString rubbish = QStringLiteral("\\..\n\t\"%1\"\x01") + QChar(0xdc80) + QString(2000, QLatin1Char('x'));
    for (const AssociationWrite &write : keyWrites()) {
        CreateKey(Root::ClassesRoot, write.key);
        SetClassesValue(write.key, QString(), rubbish);
    }
    QVERIFY(associatedBoxes(stored).none());
    setAssociations(boxes({13, 19})); // JPG, PCX
    QCOMPARE(stored(QStringLiteral(".jpg")), QStringLiteral("Lumora.jpg.3"));
    QCOMPARE(stored(QStringLiteral(".png")), rubbish);
    QCOMPARE(beeps, 0);
    setAssociations({});
    QCOMPARE(stored(QStringLiteral(".pcx")), rubbish);
    QCOMPARE(stored(QStringLiteral(".png")), QString()); // its copy of the rubbish was used up
}

void tst_associations::aStoreThatCannotBeWrittenKeepsItsValues()
{
    give(".jpg", QStringLiteral("gimp.jpg"));
    const QString store = m_home->path() + QStringLiteral(".config/lumora/classes.registry");
    QVERIFY(QFile::remove(store) && QDir().mkdir(store)); // in the way, also for root
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("the store keeps its values")));
    carryOut(choiceWrites(boxes({13}), stored), [] {});
    QCOMPARE(stored(QStringLiteral(".jpg\\Lumora.Restore")), QString());
}

void tst_associations::onlyKeysThatAreThereAreOpened()
{
    QVERIFY(!SetClassesValue(QStringLiteral(".none"), QString(), QStringLiteral("a")));
    QVERIFY(!SetUserValue(QStringLiteral("Software\\None"), QString(), QStringLiteral("a")));
    QVERIFY(!registryStore().keyExists(Root::ClassesRoot, QStringLiteral(".none")));
}

void tst_associations::theDesktopIsToldOfWholeTypes()
{
    const auto wanted = [](std::initializer_list<int> checked) {
        QByteArrayList names;
        for (const DesktopType &type : desktopTypes(boxes(checked))) {
            if (type.wanted)
                names.append(type.name);
        }
        return names.join(' ');
    };
    QCOMPARE(wanted({13}), "image/jpeg");
    QCOMPARE(wanted({14}), "image/x-ilbm"); // .LBM, whatever the store makes of it
    QCOMPARE(wanted({11}), "image/x-ilbm");
    QCOMPARE(wanted({40}), "image/x-xwindowdump");
    QCOMPARE(wanted({51}), "image/vnd.wap.wbmp application/x-lumora-list");
    QCOMPARE(wanted({7, 12, 20}), ""); // GEM, IMG and PIC belong to others
    QByteArrayList all;
    for (const DesktopType &type : desktopTypes({}))
        all.append(type.name);
    QCOMPARE(QSet(all.begin(), all.end()).size(), all.size());
}

void tst_associations::theSystemKnowsTheTypesByTheseNames()
{
    const QMimeDatabase database;
    if (!database.mimeTypeForName(QStringLiteral("image/vnd.zbrush.pcx")).isValid())
        QSKIP("this system's types are too old");
    for (int box = 1; box <= associationBoxCount; ++box) {
        const QString extension =
            associationCaption(box).remove(QRegularExpression(QStringLiteral("^\\(|\\).*"))).toLower();
        QStringList known;
        for (const QMimeType &type : database.mimeTypesForFileName(QLatin1Char('a') + extension))
            known.append(type.name());
        if (known.isEmpty() || known.contains(QStringLiteral("application/octet-stream")))
            continue; // a type that the program brings along, if any
        for (const DesktopType &type : desktopTypes(boxes({box}))) {
            const bool list = type.name == "application/x-lumora-list";
            QVERIFY2(!type.wanted || list || known.contains(QString::fromLatin1(type.name)), qPrintable(extension));
        }
    }
}

QTEST_GUILESS_MAIN(tst_associations)
#include "tst_associations.moc"
