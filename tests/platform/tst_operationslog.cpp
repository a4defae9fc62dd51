#include "platform/filepath.h"
#include "platform/folders.h"
#include "platform/operationslog.h"
#include "support/contents.h"
#include "support/support.h"

#include <QtTest>

#include <cstdio>
#include <thread>

/// One log in the process: each test goes on with what the one before has left.
class tst_operationslog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { m_log = stateFolder() + QStringLiteral("operations.log"); }
    void aFileIsALineWhateverItsName();
    void atItsSizeANewLogBegins();
    void whatAnotherProcessPutAsideStaysThere();

private:
    QList<QByteArray> lines(const QString &path) const { return contents(path).split('\n'); }
    const TemporaryHome m_home;
    QString m_log;
};

void tst_operationslog::aFileIsALineWhateverItsName()
{
    const QString name = pathFromBytes("/a/b\n\xff\t\xC3\xA4.png");
    logOperation(Operation::Moved, name, QStringLiteral("/from"));
    logOperation(Operation::Deleted, QStringLiteral("/gone"));
    const QList<QByteArray> all = lines(m_log);
    QCOMPARE(all.size(), qsizetype(3));
    const QList<QByteArray> fields = all[0].split('\t');
    QVERIFY(QDateTime::fromString(QString::fromLatin1(fields[0]), Qt::ISODate).isValid());
    QCOMPARE(fields.sliced(1), QList<QByteArray>({"moved", displayPath(name).toUtf8(), "/from"}));
    QVERIFY(all[1].endsWith("\tdeleted\t/gone\t"));
    QCOMPARE(QFileInfo(m_log).permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

void tst_operationslog::atItsSizeANewLogBegins()
{
    constexpr int threads = 4;
    constexpr int each = 3000;
    const QString path = QLatin1Char('/') + QString(100, u'x');
    {
        std::vector<std::jthread> writers;
        for (int i = 0; i < threads; ++i)
            writers.emplace_back([&path] {
                for (int line = 0; line < each; ++line)
                    logOperation(Operation::Copied, path);
            });
    }
    const QString before = m_log + QStringLiteral(".1");
    const qint64 size = QFileInfo(before).size();
    QVERIFY(size >= mostLogBytes && size < mostLogBytes + 200);
    // Two lines of the test before, and what is behind the last line of each.
    const QList<QByteArray> all = lines(before) + lines(m_log);
    QCOMPARE(all.size(), qsizetype(threads * each + 2 + 2));
    QCOMPARE(all.count(QByteArray()), qsizetype(2));
    for (const QByteArray &line : all)
        QVERIFY2(line.isEmpty() || line.count('\t') == 3, line.constData());
}

void tst_operationslog::whatAnotherProcessPutAsideStaysThere()
{
    const QString before = m_log + QStringLiteral(".1");
    QCOMPARE(std::rename(qPrintable(m_log), qPrintable(before)), 0);
    QVERIFY(writeFileAtomically(m_log, "of another process\n"));
    while (QFileInfo(before).size() < mostLogBytes)
        logOperation(Operation::Failed, QString(2000, u'x'));
    logOperation(Operation::Written, QStringLiteral("/new"));
    QCOMPARE(lines(m_log).first(), QByteArray("of another process"));
    QVERIFY(lines(m_log).at(1).contains("\twritten\t/new"));
}

QTEST_GUILESS_MAIN(tst_operationslog)
#include "tst_operationslog.moc"
