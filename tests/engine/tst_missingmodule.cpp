#include "engine/codec.h"
#include "engine/enginefiles.h"
#include "support/support.h"

#include <QTest>

/// A program without its module of decoders shows what it can and says what is missing.
class tst_MissingModule : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void onlyTheModulesFormatsFailAndSayWhy();

private:
    TemporaryHome m_home;
};

void tst_MissingModule::onlyTheModulesFormatsFailAndSayWhy()
{
    qputenv("LUMORA_MODULES", m_home.path().toUtf8());
    // A file of that name that is no module is no better than none.
    m_home.write(QStringLiteral("lumora-codecs.so"), "not a library");
    const QByteArrayList own{"JPEG", "PNG", "BMP", "DIB", "GIF", "ICO", "XBM", "XPM", "CompuServe RLE"};
    QVERIFY(codecModuleFailure().isEmpty());
    for (const SmallFile &small : smallFiles()) {
        const Result<Picture> picture = decode(small.encoded());
        const bool isOwn = std::any_of(
            own.begin(), own.end(), [&](const QByteArray &name) { return QByteArray(small.name).startsWith(name); });
        QVERIFY2(bool(picture) == isOwn, small.name);
        QVERIFY2(isOwn || picture.reason().contains(QStringLiteral("lumora-codecs")), qPrintable(picture.reason()));
    }
}

QTEST_GUILESS_MAIN(tst_MissingModule)
#include "tst_missingmodule.moc"
