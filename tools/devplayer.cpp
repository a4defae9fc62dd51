#include "devcommands.h"

#include "engine/player.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

constexpr int patience = 20000; // milliseconds for a file to stand ready, and for its end once it is due

struct Playing
{
    QStringList states;
    double length = 0;
    double took = 0; ///< seconds from playing to stopped
};

/// Returns when `done` says so, asked at each event of the player, or after so many milliseconds.
bool waitFor(const Player &player, int milliseconds, const std::function<bool()> &done)
{
    QEventLoop loop;
    QTimer end;
    end.setSingleShot(true);
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    const auto look = [&] {
        if (done())
            loop.quit();
    };
    QObject::connect(&player, &Player::playStateChanged, &loop, look);
    QObject::connect(&player, &Player::frameReady, &loop, look);
    QObject::connect(&player, &Player::durationChanged, &loop, look);
    end.start(milliseconds);
    if (!done())
        loop.exec();
    return done();
}

Playing play(Player &player, const QString &path)
{
    Playing playing;
    QElapsedTimer clock;
    const QMetaObject::Connection noting =
        QObject::connect(&player, &Player::playStateChanged, &player, [&](int state) {
            playing.states.append(QString::number(state));
            if (state == Player::Playing && !clock.isValid())
                clock.start();
            else if (state == Player::Stopped && clock.isValid())
                playing.took = double(clock.elapsed()) / 1000;
        });
    player.setUrl(path);
    waitFor(player, patience, [&] {
        const Player::Content content = player.content();
        return content == Player::None || (content != Player::Unknown && player.duration() > 0);
    });
    playing.states.clear();
    player.play();
    const int due = int(std::min(player.duration(), 3600.0) * 1000) + patience;
    waitFor(player, due, [&] { return player.playState() == Player::Stopped; });
    playing.length = player.duration();
    QObject::disconnect(noting);
    return playing;
}

}

int dev::playFiles(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption silent(QStringLiteral("silent"));
    parser.addOption(silent);
    if (!parse(parser, arguments, 1, -1))
        return 2;
    QMap<QString, QString> options;
    if (parser.isSet(silent))
        options.insert(QStringLiteral("ao"), QStringLiteral("null"));
    const std::unique_ptr<Player> player = createPlayer(options);
    if (!player)
        return fail(QStringLiteral("there is no player"));
    int status = 0;
    for (const QString &path : parser.positionalArguments()) {
        const Playing playing = play(*player, path);
        static const char *const contents[] = {"none", "unknown", "sound", "video"};
        printRow({QString::fromLatin1(contents[player->content()]), QString::number(playing.length, 'f', 2),
            QString::number(playing.took, 'f', 2), playing.states.join(QLatin1Char(' ')), path});
        if (playing.took == 0 || player->playState() != Player::Stopped)
            status = 1;
    }
    return status;
}
