#include "app/screenshot.h"

#include "app/frmPreviousInstance.h"
#include "app/globals.h"
#include "app/startup.h"
#include "platform/files.h"
#include "viewer/frmMainViewer.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPixmap>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int lookInterval = 20; ///< milliseconds
constexpr int patience = 10'000; ///< milliseconds

bool commandsAreTaken(const frmMainViewer &viewer)
{
    const QStringList waiting = form<frmPreviousInstance>().List1->items();
    return !viewer.TakingCommands && waiting.join(QString()).isEmpty();
}

bool stands(const frmMainViewer &viewer)
{
    if (globals.StartInEditor || globals.StartInFolderBrowser)
        return !viewer.TakingCommands;
    const bool playerStands = !viewer.wmp9->isVisible() || viewer.wmp9->isReady();
    return globals.MainViewerActivated && commandsAreTaken(viewer) && playerStands;
}

bool write(QWidget *window, const QString &path)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!window->grab().toImage().save(&buffer, "PNG"))
        return false;
    const Result<void> written = writeFileAtomically(path, bytes);
    if (!written)
        std::fprintf(stderr, "lumora: %s\n", qPrintable(written.reason()));
    return bool(written);
}

}

void takeScreenshotWhenReady(const QString &path, std::function<void(bool)> done)
{
    auto *look = new QTimer(QCoreApplication::instance());
    QElapsedTimer waited;
    waited.start();
    QObject::connect(look, &QTimer::timeout, look, [=, done = std::move(done)] {
        if (globals.ProgramExiting) {
            look->deleteLater();
            return;
        }
        auto &viewer = form<frmMainViewer>();
        if (!stands(viewer) && waited.elapsed() < patience)
            return;
        look->stop();
        look->deleteLater();
        // Grabbing paints the window anew, so that a picture that is there is on it.
        done(write(frontWindow(), path));
    });
    look->start(lookInterval);
}
