#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/command.h"
#include "platform/linux/wallpaper/copies.h"

#include <QRegularExpression>

#include <array>
#include <csignal>
#include <filesystem>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

// Compositors of the wlroots family leave the wallpaper to a program of its own, mostly swaybg, which shows what its
// arguments say for as long as it runs. Sway starts and ends it itself and is told by swaymsg; elsewhere the one that
// runs is replaced by another one.

namespace {

constexpr QLatin1String swaybg("swaybg");

struct Process
{
    pid_t number = 0;
    QStringList arguments; ///< the program's name first
};

QByteArray readProcessFile(const std::string &path)
{
    const Result<QByteArray> bytes = readFile(pathFromBytes(QByteArray::fromStdString(path)), 1 << 20);
    return bytes ? *bytes : QByteArray();
}

bool isOnThisDisplay(const std::string &folder)
{
    const QByteArray display = "WAYLAND_DISPLAY=" + qgetenv("WAYLAND_DISPLAY");
    return readProcessFile(folder + "/environ").split('\0').contains(display);
}

/// The user's processes of that name on this display.
QVector<Process> runningOnes(const QString &name)
{
    QVector<Process> found;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string folder = entry.path().native();
        const pid_t number = QByteArray::fromStdString(entry.path().filename().native()).toInt();
        struct stat state = {};
        if (number <= 0 || ::stat(folder.c_str(), &state) != 0 || state.st_uid != ::geteuid())
            continue;
        Process process{number, {}};
        const QByteArrayList arguments = readProcessFile(folder + "/cmdline").split('\0');
        for (const QByteArray &argument : arguments)
            process.arguments.append(pathFromBytes(argument));
        // What ends with a separator has an empty part behind it.
        process.arguments.removeLast();
        if (!process.arguments.isEmpty() && FileNameOfPath(process.arguments.first()) == name
            && isOnThisDisplay(folder))
            found.append(process);
    }
    return found;
}

/// What the arguments of a swaybg say, by output: "*" or its name, with picture, mode and color.
void addTold(const QStringList &arguments, QJsonObject &told)
{
    static const QHash<QString, QString> meanings{{QStringLiteral("-o"), QStringLiteral("output")},
        {QStringLiteral("-i"), QStringLiteral("picture")}, {QStringLiteral("-m"), QStringLiteral("mode")},
        {QStringLiteral("-c"), QStringLiteral("color")}, {QStringLiteral("--output"), QStringLiteral("output")},
        {QStringLiteral("--image"), QStringLiteral("picture")}, {QStringLiteral("--mode"), QStringLiteral("mode")},
        {QStringLiteral("--color"), QStringLiteral("color")}};
    QString output = QStringLiteral("*");
    for (qsizetype at = 1; at < arguments.size(); ++at) {
        QString option = arguments.at(at);
        QString value;
        if (option.startsWith(QLatin1String("--")) && option.contains(QLatin1Char('='))) {
            value = option.section(QLatin1Char('='), 1);
            option = option.section(QLatin1Char('='), 0, 0);
        } else if (!option.startsWith(QLatin1String("--")) && option.size() > 2) {
            value = option.mid(2);
            option.truncate(2);
        } else {
            value = arguments.value(++at);
        }
        const QString meaning = meanings.value(option);
        if (meaning == QLatin1String("output")) {
            output = value;
        } else if (!meaning.isEmpty()) {
            QJsonObject values = told.value(output).toObject();
            values.insert(meaning, value);
            told.insert(output, values);
        }
    }
}

QString modeText(WallpaperPlacement placement)
{
    switch (placement) {
    case WallpaperPlacement::Centered:
        return QStringLiteral("center");
    case WallpaperPlacement::Tiled:
        return QStringLiteral("tile");
    case WallpaperPlacement::Stretched:
        break;
    }
    return QStringLiteral("stretch");
}

/// The colour behind the pictures: the one that was asked for last, else black.
QString colorOf(const QJsonObject &told)
{
    QString color = QStringLiteral("#000000");
    for (const QJsonValue output : told) {
        const QString own = output.toObject().value(QLatin1String("color")).toString();
        if (!own.isEmpty())
            color = own.startsWith(QLatin1Char('#')) ? own : QLatin1Char('#') + own;
    }
    return color;
}

/// One output and what it is to show.
QJsonObject forAllOutputs(const QString &picture, const QString &mode, const QString &color)
{
    QJsonObject values{{QStringLiteral("mode"), mode}, {QStringLiteral("color"), color}};
    if (!picture.isEmpty())
        values.insert(QStringLiteral("picture"), picture);
    return {{QStringLiteral("*"), values}};
}

class SwaybgBackend : public WallpaperBackend
{
public:
    /// Not beside another program of the kind: the two would lie on each other.
    bool isThere() override
    {
        if (!runningOnes(swaybg).isEmpty())
            return true;
        static constexpr std::array others = {"hyprpaper", "swww-daemon", "awww-daemon", "wpaperd", "mpvpaper", "wbg"};
        return command::isInstalled(swaybg) && std::all_of(others.begin(), others.end(), [](const char *other) {
            return runningOnes(QLatin1String(other)).isEmpty();
        });
    }

    QJsonObject current() override
    {
        QJsonObject told;
        const auto processes = runningOnes(swaybg);
        for (const Process &process : processes)
            addTold(process.arguments, told);
        // None at all is something to bring back too.
        if (told.isEmpty())
            told.insert(QStringLiteral("*"), QJsonObject());
        return told;
    }

    Result<QJsonObject> set(const QString &picture, WallpaperPlacement placement) override
    {
        return show(forAllOutputs(picture, modeText(placement), colorOf(current())));
    }

    Result<QJsonObject> clear() override
    {
        return show(forAllOutputs(QString(), QStringLiteral("solid_color"), colorOf(current())));
    }

    Result<void> restore(const QJsonObject &before) override
    {
        const auto shown = show(before);
        if (!shown)
            return shown.failure();
        return {};
    }

protected:
    /// The new one is up before the old ones end, so that nothing flickers.
    virtual Result<QJsonObject> show(const QJsonObject &wanted)
    {
        const auto old = runningOnes(swaybg);
        QStringList arguments;
        for (auto output = wanted.begin(); output != wanted.end(); ++output) {
            const QJsonObject values = output.value().toObject();
            const auto add = [&](const char *option, QLatin1String name) {
                if (values.contains(name))
                    arguments << QString::fromLatin1(option) << values.value(name).toString();
            };
            if (values.isEmpty())
                continue;
            arguments << QStringLiteral("-o") << output.key();
            add("-i", QLatin1String("picture"));
            add("-m", QLatin1String("mode"));
            add("-c", QLatin1String("color"));
        }
        if (!arguments.isEmpty()) {
            if (const Result<void> started = command::start(swaybg, arguments); !started)
                return started.failure();
        }
        for (const Process &process : old)
            ::kill(process.number, SIGTERM);
        return wanted;
    }
};

class SwayBackend final : public SwaybgBackend
{
public:
    bool isThere() override { return command::isInstalled(QStringLiteral("swaymsg")); }

    QJsonObject current() override
    {
        QJsonObject told = SwaybgBackend::current();
        for (auto output = told.begin(); output != told.end(); ++output) {
            QJsonObject values = output.value().toObject();
            const QString picture = values.value(QLatin1String("picture")).toString();
            std::error_code error;
            if (picture.startsWith(runtimeFolder())) {
                const auto target = std::filesystem::read_symlink(pathToBytes(picture).toStdString(), error);
                values.insert(QStringLiteral("picture"), pathFromBytes(QByteArray::fromStdString(target.native())));
                output.value() = values;
            }
        }
        return told;
    }

protected:
    Result<QJsonObject> show(const QJsonObject &wanted) override
    {
        const auto old = numbers();
        for (auto output = wanted.begin(); output != wanted.end(); ++output) {
            const QJsonObject values = output.value().toObject();
            const QString color = values.value(QLatin1String("color")).toString(QStringLiteral("#000000"));
            const QString picture = values.value(QLatin1String("picture")).toString();
            QStringList arguments{QStringLiteral("output"), output.key(), QStringLiteral("bg")};
            if (picture.isEmpty())
                arguments << color << QStringLiteral("solid_color");
            else
                arguments << plainName(picture) << values.value(QLatin1String("mode")).toString() << color;
            if (const Result<void> told = command::run(QStringLiteral("swaymsg"), arguments); !told)
                return told.failure();
        }
        // Sway has answered before its background program is up, whose arguments tell what is shown.
        for (int turn = 0; turn < 20 && numbers() == old; ++turn)
            ::poll(nullptr, 0, 50);
        return current();
    }

private:
    static QVector<pid_t> numbers()
    {
        QVector<pid_t> all;
        const auto processes = runningOnes(swaybg);
        for (const Process &process : processes)
            all.append(process.number);
        return all;
    }

    /// Sway expands a path as a shell would: one with anything special in it goes by way of a link.
    static QString plainName(const QString &picture)
    {
        static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9/._+@%=-]+$"));
        if (plain.match(picture).hasMatch())
            return picture;
        const QString file = FileNameOfPath(picture);
        const bool copy = file.startsWith(QLatin1String("sway-")) && plain.match(file).hasMatch();
        const QString link = runtimeFolder() + (copy ? file : QStringLiteral("sway-1.picture"));
        removeWallpaperCopies(runtimeFolder(), QStringLiteral("sway"));
        if (::symlink(pathToBytes(picture).constData(), pathToBytes(link).constData()) != 0)
            return picture;
        return link;
    }
};

}

std::unique_ptr<WallpaperBackend> makeSwayBackend(WallpaperWay way)
{
    if (way == WallpaperWay::Sway)
        return std::make_unique<SwayBackend>();
    return std::make_unique<SwaybgBackend>();
}
