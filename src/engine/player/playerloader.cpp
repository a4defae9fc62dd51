#include "engine/player.h"
#include "engine/player/playerbackend.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"

#include <QLoggingCategory>

#include <dlfcn.h>

#include <filesystem>

Q_LOGGING_CATEGORY(playerLog, "lumora.player", QtWarningMsg)

namespace {

/// Gives the backend of the module the signals of the program's own class.
class ModulePlayer final : public Player
{
public:
    bool start(PlayerFactory factory, const QMap<QString, QString> &options)
    {
        PlayerBackend::Events events;
        events.playStateChanged = [this](int state) { Q_EMIT playStateChanged(state); };
        events.frameReady = [this] { Q_EMIT frameReady(); };
        events.durationChanged = [this] { Q_EMIT durationChanged(); };
        m_backend.reset(factory(options, events));
        return bool(m_backend);
    }

    void setUrl(const QString &path) override { m_backend->setUrl(path); }
    QString url() const override { return m_backend->url(); }
    void play() override { m_backend->play(); }
    void pause() override { m_backend->pause(); }
    void stop() override { m_backend->stop(); }
    PlayState playState() const override { return static_cast<PlayState>(m_backend->playState()); }
    Content content() const override { return static_cast<Content>(m_backend->content()); }
    int volume() const override { return m_backend->volume(); }
    void setVolume(int volume) override { m_backend->setVolume(volume); }
    bool isMuted() const override { return m_backend->isMuted(); }
    void setMuted(bool muted) override { m_backend->setMuted(muted); }
    double duration() const override { return m_backend->duration(); }
    double currentPosition() const override { return m_backend->currentPosition(); }
    void setCurrentPosition(double seconds) override { m_backend->setCurrentPosition(seconds); }
    QImage frame(QSize size) override { return m_backend->frame(size); }
    void setVisible(bool visible) override { m_backend->setVisible(visible); }

private:
    std::unique_ptr<PlayerBackend> m_backend;
};

/// Where a build tree, a portable copy and an installed program have it. A set LUMORA_MODULES is the only place looked
/// at.
QString modulePath()
{
    const QString name = QStringLiteral("lumora-player.so");
    const QByteArray chosen = qgetenv("LUMORA_MODULES");
    if (!chosen.isEmpty()) {
        const QString path = pathFromBytes(chosen) + QLatin1Char('/') + name;
        return FileExists(path) ? path : QString();
    }
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const QString folder = SplitFilePath(pathFromBytes(QByteArray::fromStdString(program.native()))).folder;
    for (const QString &place : {QStringLiteral("lumora-modules/"), QStringLiteral("../lib/lumora/")}) {
        if (!error && FileExists(folder + place + name))
            return folder + place + name;
    }
    return QString();
}

/// Never unloaded: the libraries behind it keep threads and thread-local data.
void *loadModule(const QString &path)
{
    if (path.isEmpty()) {
        qCWarning(playerLog, "the player module is not there");
        return nullptr;
    }
    void *module = dlopen(pathToBytes(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!module)
        qCWarning(playerLog, "the player module cannot be loaded: %s", dlerror());
    return module;
}

std::unique_ptr<Player> playerOf(void *module, const QMap<QString, QString> &options)
{
    const auto factory = module ? reinterpret_cast<PlayerFactory>(dlsym(module, LUMORA_PLAYER_FACTORY_NAME)) : nullptr;
    auto player = std::make_unique<ModulePlayer>();
    if (factory && player->start(factory, options))
        return player;
    if (module)
        qCWarning(playerLog, "the player library does not start");
    return nullptr;
}

QString libraryPath(void *module)
{
    Dl_info info{};
    void *symbol = dlsym(module, "mpv_create");
    return symbol && dladdr(symbol, &info) != 0 ? pathFromBytes(info.dli_fname) : QString();
}

/// One line per file: path and state. Empty when the file is not there.
QByteArray fileLine(const QString &path)
{
    const std::optional<FileStamp> stamp = fileStamp(path);
    if (!stamp)
        return QByteArray();
    QByteArray line = pathToBytes(path).toPercentEncoding("/");
    for (const quint64 number : {stamp->device, stamp->inode, quint64(stamp->size), quint64(stamp->changed)})
        line += ' ' + QByteArray::number(number);
    return line + '\n';
}

QString memoryPath()
{
    return cacheFolder() + QStringLiteral("player-present");
}

/// The memory holds the lines of the module and of the library it loaded; both must still be the same files.
bool isRemembered(const QString &module)
{
    const Result<QByteArray> memory = readFile(memoryPath(), 1 << 16);
    const QByteArray moduleLine = fileLine(module);
    if (!memory || moduleLine.isEmpty() || !memory->startsWith(moduleLine))
        return false;
    const QByteArray libraryLine = memory->mid(moduleLine.size());
    const QByteArray library = libraryLine.left(libraryLine.indexOf(' '));
    return !library.isEmpty() && fileLine(pathFromBytes(QByteArray::fromPercentEncoding(library))) == libraryLine;
}

}

bool playerIsPresent()
{
    const QString path = modulePath();
    if (isRemembered(path))
        return true;
    void *module = loadModule(path);
    if (!playerOf(module, {{QStringLiteral("ao"), QStringLiteral("null")}}))
        return false;
    const QByteArray libraryLine = fileLine(libraryPath(module));
    if (!libraryLine.isEmpty())
        ignore(writeFileAtomically(memoryPath(), fileLine(path) + libraryLine));
    return true;
}

std::unique_ptr<Player> createPlayer(const QMap<QString, QString> &options)
{
    return playerOf(loadModule(modulePath()), options);
}
