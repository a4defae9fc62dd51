#include "app/startup.h"

#include "app/allsettings.h"
#include "app/appdata.h"
#include "app/checkjpg.h"
#include "app/commandline.h"
#include "app/convertline.h"
#include "app/desktopservice.h"
#include "app/endsignals.h"
#include "app/frmIntroSelect.h"
#include "app/frmPreviousInstance.h"
#include "app/frmTip.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/screenshot.h"
#include "app/settings.h"
#include "app/translations.h"
#include "editor/frmZoomView.h"
#include "engine/isolation.h"
#include "engine/picturecache.h"
#include "engine/player.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/instance.h"
#include "shell/frmSystemTray.h"
#include "thumbnails/frmBrowseFolder.h"
#include "ui/icons.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QProcess>
#include <QSessionManager>
#include <QTimer>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>

namespace {
Q_LOGGING_CATEGORY(logStart, "lumora.start", QtWarningMsg)

constexpr int handOverPatience = 5000; ///< milliseconds
constexpr int handOverAttempts = 3;
constexpr QSize paneGuess(1400, 1000); ///< about what the pane will be, before there is one

class LumoraApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        // An exception drops the event that it came from, never the program.
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception &exception) {
            qCCritical(logStart, "event %d of %s: %s", int(event->type()), receiver->metaObject()->className(),
                exception.what());
        } catch (...) {
            qCCritical(
                logStart, "event %d of %s: unknown exception", int(event->type()), receiver->metaObject()->className());
        }
        return false;
    }
};

bool anyDisplay()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

void print(FILE *stream, const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
}

/// While the application object is made: a display that cannot be reached is an error of the call, no crash.
void endOnFatalMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    print(stderr, qFormatLogMessage(type, context, message) + QLatin1Char('\n'));
    if (type != QtFatalMsg)
        return;
    std::fflush(stderr);
    std::_Exit(1);
}

QString activationToken()
{
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qEnvironmentVariable("DESKTOP_STARTUP_ID") : token;
}

MessageBox missingPlayerBox()
{
    const QStringList blocks{
        QCoreApplication::translate("Main", "Lumora V3.1 requires the presence of Microsoft Windows Media Player 9."),
        QCoreApplication::translate("Main",
            "On this system its part is played by the player module of Lumora, which stands on the libraries of mpv "
            "(package libmpv2). Install them with the package manager of the system, or install Lumora again, and "
            "start "
            "it once more."),
        QCoreApplication::translate("Main",
            "Older versions of the player are no longer supported: they do not tell for every type of file how long it "
            "is "
            "and when it has ended, and the Media Show waits for that."),
    };
    MessageBox box;
    box.title = QCoreApplication::translate("Main", "Missing Windows Media Player 9 On System:");
    box.text = blocks.join(QStringLiteral("\n\n"));
    box.icon = MessageBox::Icon::Information;
    return box;
}

enum class Election { First, HandedOver, NobodyAnswers };

/// A start becomes the first instance or gives its commands to the one that runs.
Election elect(Instance &instance, const QStringList &commands)
{
    qsizetype given = 0;
    for (int attempt = 0; attempt < handOverAttempts; ++attempt) {
        if (instance.becomeFirst())
            return Election::First;
        while (given < commands.size() && instance.handOver(commands.at(given), activationToken(), handOverPatience))
            ++given;
        if (given == commands.size())
            return Election::HandedOver;
    }
    return Election::NobodyAnswers;
}

/// Decodes the picture that this start will show first while the rest of the program comes up.
void decodeFirstPicture(const QStringList &commands)
{
    for (const QString &command : commands) {
        const QStringList paths = pathsOfCommand(command);
        if (command.startsWith(QLatin1Char('"')) && !paths.isEmpty() && GetMediaKind(paths.first()) != kindMotion) {
            PictureCache::instance().startEarly(paths.first(), -1, paneGuess);
            return;
        }
    }
}

bool startedBySwitch()
{
    return globals.StartInEditor || globals.StartInFolderBrowser;
}

void showInFront(QWidget &window, QWidget &owner)
{
    window.setParent(&owner, window.windowFlags());
    window.show();
    window.raise();
    window.activateWindow();
}

/// The tip and the choice of viewers come over a Main Viewer that stands, and never wait for an answer.
void showStartWindows()
{
    if (startedBySwitch() || globals.ProgramExiting)
        return;
    auto &viewer = form<frmMainViewer>();
    if (isLoaded<frmTip>()) {
        auto &tip = form<frmTip>();
        showInFront(tip, viewer);
        // The choice of viewers takes the middle; where windows place themselves, both can be read.
        tip.move(viewer.geometry().bottomRight() - QPoint(tip.width() + 24, tip.height() + 48));
    }
    if (frmIntroSelect::isWanted())
        showInFront(form<frmIntroSelect>(), viewer);
}

/// A start by a switch has no icon; it comes with the Main Viewer.
void installTrayIcon()
{
    if (!startedBySwitch() && !globals.ProgramExiting)
        form<frmSystemTray>().Form_Activate();
}

void whenMainViewerStands(const std::function<void()> &act)
{
    auto &viewer = form<frmMainViewer>();
    if (viewer.Timer1.isActive())
        QMetaObject::invokeMethod(&viewer, act, Qt::QueuedConnection);
    else
        QObject::connect(&viewer, &frmMainViewer::activated, &viewer, act, Qt::QueuedConnection);
}

void setUpApplication(QApplication &application)
{
    QApplication::setApplicationName(QStringLiteral("lumora"));
    QApplication::setApplicationVersion(QStringLiteral(LUMORA_VERSION));
    QApplication::setOrganizationName(QStringLiteral("Tessaly"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.lumora.Lumora"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    installTranslations();
    installIconThemes();
    // QApplication takes the user's locale; the player reads and writes numbers with a dot.
    std::setlocale(LC_NUMERIC, "C");
    // The end of a session: the settings are on disk before the desktop is told that it may go on.
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &application, [](QSessionManager &) {
        if (!globals.ProgramExiting && isLoaded<frmMainViewer>())
            SaveAllSettings();
    });
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &application, [] { ShutDownProgram(); });
}

/// From the support window to the windows that the start asked for.
void bringUpWindows(const CommandLine &line)
{
    globals.MediaPlayerVersion = 9.0f;
    regSettings().setCompany(QString());
    writeFirstStartKeys();
    seedAppFolder();
    frmPreviousInstance::StartCommands = line.commands;
    form<frmPreviousInstance>();
    auto &viewer = form<frmMainViewer>();
    Yield();
    if (!globals.ProgramExiting && !startedBySwitch())
        viewer.show();
}

/// Commands of later starts that the end of the program came before. To their senders they are taken.
QStringList commandsLeftOver(const Instance &instance)
{
    QStringList commands;
    // What the queue holds before the first activation came with this start, which the user has ended himself.
    if (globals.MainViewerActivated && !form<frmMainViewer>().TakingCommands)
        commands = form<frmPreviousInstance>().List1->items();
    commands.removeAll(QString());
    return commands + instance.untaken();
}

/// A fresh start carries the last of them out; it waits for the end of this one.
void startAgainFor(const QStringList &commands)
{
    if (commands.isEmpty())
        return;
    if (!QProcess::startDetached(QCoreApplication::applicationFilePath(), argumentsOfCommand(commands.last())))
        qCWarning(logStart, "a command came too late: %s", qPrintable(displayPath(commands.last())));
}

int run(const CommandLine &line, Instance &instance, EndSignals &signals, bool playerPresent)
{
    char name[] = "lumora";
    char *arguments[] = {name, nullptr};
    int count = 1;
    const QtMessageHandler usual = qInstallMessageHandler(&endOnFatalMessage);
    LumoraApplication application(count, arguments);
    qInstallMessageHandler(usual);
    setUpApplication(application);
    signals.watch();
    form<checkjpg>();
    if (!playerPresent) {
        qCWarning(logStart, "the player is missing");
        dialogs().show(nullptr, missingPlayerBox());
        unload<checkjpg>();
        return 1;
    }
    int status = 0;
    DesktopService desktop;
    QStringList leftOver;
    atShutDown([&] {
        instance.retire();
        desktop.leaveBus();
        leftOver = commandsLeftOver(instance);
    });
    bringUpWindows(line);
    if (!line.screenshot.isEmpty()) {
        takeScreenshotWhenReady(line.screenshot, [&status](bool written) {
            status = written ? 0 : 1;
            ShutDownProgram();
        });
    } else if (!globals.ProgramExiting) {
        whenMainViewerStands(&showStartWindows);
        whenMainViewerStands(&installTrayIcon);
        // What a power cut left of a replaced file is taken away when nobody waits for anything.
        QTimer::singleShot(5000, &application, [] {
            for (const QString &folder : {configFolder(), AppFolder()})
                removeOldTemporaries(folder);
        });
        instance.listen(&commandArrived);
        desktop.registerOnBus();
    }
    if (!globals.ProgramExiting)
        ignore(QApplication::exec());
    ShutDownProgram();
    finishShutDown();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // A signal ends the session or the program for good: nothing may come after it.
    if (!signals.haveArrived())
        startAgainFor(leftOver);
    else if (!leftOver.isEmpty())
        qCWarning(logStart, "ended before a command: %s", qPrintable(displayPath(leftOver.last())));
    return status;
}

/// Speaks to the terminal in the user's language while there is no application yet.
template <class Say> auto onTerminal(Say say)
{
    char name[] = "lumora";
    char *arguments[] = {name, nullptr};
    int count = 1;
    const QCoreApplication application(count, arguments);
    installTranslations();
    return say();
}

void complain(QString (*text)())
{
    onTerminal([text] { print(stderr, text() + QLatin1Char('\n')); });
}

/// --help, --version and a wrong command line: the exit status; else none.
std::optional<int> answered(const auto &read)
{
    if (const auto line = read(); !line.help && !line.version && line.error.isEmpty())
        return std::nullopt;
    return onTerminal([&read] {
        const auto line = read();
        if (line.help || line.version)
            print(stdout, line.help ? helpText() : versionText());
        else
            print(stderr, line.error + QLatin1Char('\n'));
        return line.help || line.version ? 0 : 2;
    });
}

/// A conversion needs neither a display nor the running program.
int convert(const QStringList &words)
{
    const auto read = [&words] { return parseConvertLine(words, workingFolder()); };
    if (const auto status = answered(read))
        return *status;
    const ConvertLine line = read();
    char name[] = "lumora";
    char *arguments[] = {name, nullptr};
    int count = 1;
    // Only drawings that are decoded in this very process need more, for their texts; a display they never need.
    const bool draws = !decoderProcessesRun();
    if (draws)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::unique_ptr<QCoreApplication> application(
        draws ? new QGuiApplication(count, arguments) : new QCoreApplication(count, arguments));
    installTranslations();
    std::setlocale(LC_NUMERIC, "C");
    return runConvertCommand(line.command);
}

}

int Main(const QStringList &arguments)
{
    if (asksForConversion(arguments))
        return convert(arguments);
    const auto read = [&arguments] { return parseCommandLine(arguments, workingFolder()); };
    if (const auto status = answered(read))
        return *status;
    const CommandLine line = read();
    // Without this the platform layer would abort the process.
    if (!anyDisplay()) {
        complain([] { return QCoreApplication::translate("Main", "lumora: there is no display to show windows on"); });
        return 1;
    }
    const bool playerPresent = playerIsPresent();
    Instance instance;
    if (playerPresent && line.screenshot.isEmpty()) {
        const Election election = elect(instance, line.commands);
        if (election == Election::NobodyAnswers)
            complain([] { return QCoreApplication::translate("Main", "lumora: the running program does not answer"); });
        if (election != Election::First)
            return election == Election::HandedOver ? 0 : 1;
    }
    EndSignals signals([](int signal) {
        qCInfo(logStart, "ended by signal %d", signal);
        ShutDownProgram();
    });
    if (playerPresent)
        decodeFirstPicture(line.commands);
    return run(line, instance, signals, playerPresent);
}

QWidget *frontWindow()
{
    auto &viewer = form<frmMainViewer>();
    if (viewer.isVisible())
        return &viewer;
    if (isLoaded<frmZoomView>() && form<frmZoomView>().isVisible())
        return &form<frmZoomView>();
    if (isLoaded<frmBrowseFolder>() && form<frmBrowseFolder>().isVisible())
        return &form<frmBrowseFolder>();
    return &viewer;
}

void commandArrived(const QString &command, const QString &activationToken)
{
    if (globals.ProgramExiting)
        return;
    form<frmPreviousInstance>().takeIn(command);
    showMainViewerForCommands();
    if (isLoaded<frmSystemTray>())
        form<frmSystemTray>().returnMainViewer();
    if (globals.ProgramExiting)
        return;
    // A modal window keeps the keyboard: the one behind it could do nothing with it.
    QWidget *modal = QApplication::activeModalWidget();
    BringToFront(frontWindow(), modal ? QString() : activationToken);
    if (modal)
        BringToFront(modal, activationToken);
}

void showMainViewerForCommands()
{
    auto &viewer = form<frmMainViewer>();
    if (!startedBySwitch() || viewer.TakingCommands || globals.ProgramExiting)
        return;
    bool files = false;
    bool switches = false;
    const QStringList waiting = form<frmPreviousInstance>().List1->items();
    for (const QString &command : waiting) {
        const bool isSwitch = command == QLatin1String("/editor") || command == QLatin1String("/folder");
        switches = switches || isSwitch;
        files = files || (!isSwitch && !command.isEmpty());
    }
    if (files) {
        globals.StartInEditor = false;
        globals.StartInFolderBrowser = false;
        viewer.show();
    }
    // Timer1 is off since the switch. Before the first activation that one will start it.
    if (files && globals.MainViewerActivated)
        viewer.Timer1.start();
    else if (switches)
        viewer.ProcessIfFromCommandLine(QString());
}
