#include "engine/codec.h"
#include "engine/damage.h"
#include "engine/enginefiles.h"
#include "support/support.h"

#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QTest>

/// Damaged files: every decoder answers, says why when it has no picture, and never shows what memory held.
class tst_Hostile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void everyCutIsAnswered_data();
    void everyCutIsAnswered();
    void everyChangedByteIsAnswered_data() { everyCutIsAnswered_data(); }
    void everyChangedByteIsAnswered();
    void damagedSamplesAreAnswered_data();
    void damagedSamplesAreAnswered();
    void whatOnceBrokeSomethingIsAnswered_data();
    void whatOnceBrokeSomethingIsAnswered();
};

void tst_Hostile::initTestCase()
{
    useBuiltModules();
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));
    ignore(fullCodecTable());
    QVERIFY2(codecModuleFailure().isEmpty(), qPrintable(codecModuleFailure()));
}

void tst_Hostile::everyCutIsAnswered_data()
{
    QTest::addColumn<EncodedFile>("file");
    for (const SmallFile &small : smallFiles())
        QTest::newRow(small.name) << small.encoded();
}

void tst_Hostile::everyCutIsAnswered()
{
    QFETCH(EncodedFile, file);
    for (qsizetype length = 0; length < file.bytes.size(); ++length) {
        const EncodedFile cut{file.bytes.left(length), file.extension};
        QVERIFY2(damage::isAnswered(cut), qPrintable(QStringLiteral("cut to %1 bytes").arg(length)));
    }
}

void tst_Hostile::everyChangedByteIsAnswered()
{
    QFETCH(EncodedFile, file);
    for (qsizetype at = 0; at < file.bytes.size(); ++at) {
        for (const int change : {0x01, 0x80, 0xff}) {
            EncodedFile changed = file;
            changed.bytes[at] = char(changed.bytes.at(at) ^ change);
            QVERIFY2(
                damage::isAnswered(changed), qPrintable(QStringLiteral("byte %1 changed by %2").arg(at).arg(change)));
        }
    }
}

void tst_Hostile::damagedSamplesAreAnswered_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<QString>("name");
    for (const char *name : {"crw/g2.crw", "nef/synthetic.nef", "orf/synthetic.orf", "raf/synthetic.raf",
             "mrw/synthetic.mrw", "dcr/synthetic.dcr", "jp2/palette.jp2", "jp2/gray.jp2", "tif/ojpeg.tif",
             "tif/1bit-g4.tif", "tif/tiled.tif", "pcd/photo-portrait.pcd", "wpg/v1-4bit.wpg", "wpg/v2-8bit.wpg",
             "sfw/a.sfw", "rle/utah-gray.rle", "mac/a.mac", "dcx/small.dcx", "gif/interlace.gif", "jpg/progressive.jpg",
             "jpg/ycck.jpg", "png/rgba8-interlaced.png", "cur/sample.cur", "pic/quickdraw-a.pic", "pic/softimage-a.pic",
             "iff/ham6.iff", "iff/vdat-compression2.iff", "iff/mask-plane.iff", "lbm/pbm-chunky.lbm", "img/16bit.img",
             "img/256.img", "msp/v2-c.msp", "cut/photo.cut", "pmp/a.pmp", "psp/v12-logo.psp", "psp/v4-4bit-rle.psp",
             "psp/v7-logo.psp", "fpx/jpeg-tiles.fpx", "fpx/mono.fpx"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_Hostile::damagedSamplesAreAnswered()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, name);
    const Result<EncodedFile> file = readEncodedFile(samplesFolder() + name);
    QVERIFY2(file, qPrintable(file.reason()));
    // The files are large and some decoders slow: damage in the header, where the claims are, and a few cuts.
    constexpr int changes = 12;
    quint32 place = 1;
    for (int i = 0; i < changes; ++i) {
        EncodedFile changed = *file;
        place = place * 1664525 + 1013904223;
        const qsizetype reach = i % 3 == 2 ? changed.bytes.size() : qMin<qsizetype>(changed.bytes.size(), 600);
        changed.bytes[place % reach] = char(place >> 16);
        QVERIFY2(damage::answer(changed) != 0, qPrintable(QStringLiteral("change %1").arg(i)));
    }
    for (const int percent : {1, 50, 98}) {
        const EncodedFile cut{file->bytes.left(file->bytes.size() * percent / 100), file->extension};
        QVERIFY2(damage::answer(cut) != 0, qPrintable(QStringLiteral("cut to %1 %").arg(percent)));
    }
}

void tst_Hostile::whatOnceBrokeSomethingIsAnswered_data()
{
    QTest::addColumn<QString>("path");
    QDirIterator files(QStringLiteral(LUMORA_FOUND), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        QTest::newRow(qPrintable(path.section(QLatin1Char('/'), -2))) << path;
    }
}

void tst_Hostile::whatOnceBrokeSomethingIsAnswered()
{
    if (QDir(QStringLiteral(LUMORA_FOUND)).isEmpty())
        QSKIP("nothing was found yet");
    QFETCH(QString, path);
    const Result<EncodedFile> found = readEncodedFile(path);
    QVERIFY2(found, qPrintable(found.reason()));
    // Under every name that it could have had: the codec that it was made for is among them.
    for (const Codec *codec : fullCodecTable()) {
        const QString extension = QString::fromLatin1(codec->extensions).section(QLatin1Char(' '), 0, 0);
        QVERIFY2(damage::answer({found->bytes, extension}) != 0, codec->name);
    }
}

QTEST_MAIN(tst_Hostile)
#include "tst_hostile.moc"
