#pragma once

#include "builtpaths.h"
#include "engine/player.h"
#include "platform/filepath.h"
#include "support/support.h"

#include <QSignalSpy>
#include <QtTest>

/// Real files through the real module, ten times as fast and without a sound device.
class PlayerTest : public QObject
{
protected:
    using States = QList<int>;

    QString media(const QString &name) const { return samplesFolder() + QStringLiteral("media/") + name; }
    void fresh()
    {
        m_spy.reset();
        m_player.reset();
    }
    void make(const QMap<QString, QString> &more = {})
    {
        QMap<QString, QString> options{
            {QStringLiteral("ao"), QStringLiteral("null")}, {QStringLiteral("speed"), QStringLiteral("10")}};
        options.insert(more);
        m_player = createPlayer(options);
        QVERIFY(m_player);
        m_spy = std::make_unique<QSignalSpy>(m_player.get(), &Player::playStateChanged);
    }
    States states() const
    {
        States result;
        for (const QList<QVariant> &call : *m_spy)
            result.append(call.first().toInt());
        return result;
    }
    /// Plays `path` until it is stopped again.
    bool playToEnd(const QString &path, int milliseconds = 15000)
    {
        m_player->setUrl(path);
        m_spy->clear();
        m_player->play();
        return QTest::qWaitFor([&] { return m_player->playState() == Player::Stopped; }, milliseconds);
    }

    TemporaryHome m_home;
    std::unique_ptr<Player> m_player;
    std::unique_ptr<QSignalSpy> m_spy;
};
