// Times the Main Viewer from the inside: the next picture with and without its neighbour decoded ahead, and a full
// list with what the list management does to it.
//
//     viewer_bench FOLDER      a folder of large JPEGs, see bench/README.md
//
// Prints one line per figure: name, median, worst, unit.

#include "actions/frmListManagement.h"
#include "app/globals.h"
#include "app/settings.h"
#include "engine/decode.h"
#include "engine/picturecache.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "ui/icons.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/listfile.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

void report(const char *name, QVector<double> values, const char *unit = "ms")
{
    std::sort(values.begin(), values.end());
    std::printf("%-46s median %8.2f  worst %8.2f %s\n", name, values[values.size() / 2], values.last(), unit);
    std::fflush(stdout);
}

void waitFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// From the key to the painted picture.
double timeStep(frmMainViewer &window, void (frmMainViewer::*step)())
{
    QElapsedTimer timer;
    QEventLoop loop;
    double painted = 0;
    const auto connection = QObject::connect(&window, &frmMainViewer::itemPainted, &loop, [&] {
        painted = double(timer.nsecsElapsed()) / 1e6;
        loop.quit();
    });
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    timer.start();
    (window.*step)();
    if (painted == 0)
        loop.exec();
    QObject::disconnect(connection);
    return painted;
}

void timeSteps(frmMainViewer &window, const QStringList &pictures)
{
    window.lstDisplay->addItems(pictures);
    window.lblCount->setText(QString::number(pictures.size()));
    window.tabFileList->setCurrentIndex(1);
    window.lstDisplay->selectOnly(0);
    waitFor(1500);
    const int steps = std::min(20, int(pictures.size()) - 1);
    QVector<double> ahead;
    for (int i = 0; i < steps; ++i) {
        ahead.append(timeStep(window, &frmMainViewer::NextListItem));
        waitFor(900);
    }
    report("next picture, decoded ahead", ahead);

    QVector<double> cold;
    QVector<double> bare;
    QVector<double> ratio;
    const QSize target = window.Picture1->size();
    for (int i = 0; i < steps; ++i) {
        PictureCache::instance().shutDown();
        cold.append(timeStep(window, &frmMainViewer::PreviousListItem));
        PictureCache::instance().shutDown();
        waitFor(300);
        QElapsedTimer timer;
        timer.start();
        ignore(decodeFile(window.lstDisplay->text(), DecodeHint{target, -1, 0}));
        bare.append(double(timer.nsecsElapsed()) / 1e6);
        ratio.append(cold.last() / bare.last());
    }
    report("next picture, not decoded ahead", cold);
    report("bare decode for the same pane", bare);
    report("ratio", ratio, "");
}

void timeList(frmMainViewer &window, const QString &folder)
{
    QStringList paths;
    for (int i = 0; i < ListBox::maximumCount; ++i)
        paths.append(
            QStringLiteral("/srv/somebody/Pictures/Journey %1/picture with a usual name %2.jpg").arg(i / 300).arg(i));
    const QString file = folder + QStringLiteral("/full.Lsl");
    ignore(writeFileAtomically(file, writeListFile(paths, QStringLiteral("1"))));
    QVector<double> load;
    QVector<double> scroll;
    QVector<double> all;
    for (int round = 0; round < 7; ++round) {
        QElapsedTimer timer;
        timer.start();
        window.LoadUserList(file);
        window.lstDisplay->repaint();
        load.append(double(timer.nsecsElapsed()) / 1e6);
        for (int at = 0; at < 32000; at += 1600) {
            timer.start();
            window.lstDisplay->scrollTo(window.lstDisplay->model()->index(at, 0));
            window.lstDisplay->repaint();
            scroll.append(double(timer.nsecsElapsed()) / 1e6);
        }
        timer.start();
        window.lstDisplay->selectAll();
        window.lstDisplay->repaint();
        all.append(double(timer.nsecsElapsed()) / 1e6);
    }
    report("list file of 32,767 entries into lstDisplay", load);
    report("scroll the full list to another place", scroll);
    report("select all of the full list", all);
    window.ClearDisplayList();
}

/// Every other entry is of another type: the selection is in as many pieces as it can be.
void timeListManagement(frmMainViewer &viewer)
{
    static constexpr const char *types[] = {"jpg", "png", "gif", "tif"};
    QStringList paths;
    for (int i = 0; i < ListBox::maximumCount; ++i)
        paths.append(QStringLiteral("/srv/somebody/Pictures/Journey %1/picture with a usual name %2.%3")
                         .arg(i / 300)
                         .arg(i)
                         .arg(QLatin1String(types[i % 4])));
    auto &management = form<frmListManagement>();
    management.chkFileType.setAll(true);
    const auto box = [&](const QString &caption) {
        for (const TypeBox &row : typeBoxes()) {
            if (caption == QLatin1String(row.caption))
                management.chkFileType[row.index]->setChecked(true);
        }
    };
    const std::pair<const char *, int> actions[] = {{"find a text in the full list", -1},
        {"select all types in the full list", 0}, {"clear all types in the full list", 1},
        {"reverse two of four types", 2}, {"remove every other entry", 3}};
    QVector<double> times[5];
    management.txtFindWhat->setText(QStringLiteral("NAME 1"));
    for (int round = 0; round < 7; ++round) {
        viewer.ClearDisplayList();
        viewer.lstDisplay->addItems(paths);
        viewer.lblCount->setText(QString::number(paths.size()));
        viewer.tabFileList->setCurrentIndex(1);
        viewer.lstDisplay->setListIndex(0);
        management.optChangesApplyTo[1]->setChecked(true);
        management.chkFileType.setAll(true);
        viewer.lstDisplay->repaint();
        for (int action = 0; action < 5; ++action) {
            if (action == 3) {
                management.chkFileType.setAll(false);
                box(QStringLiteral("(.JPG)"));
                box(QStringLiteral("(.GIF)"));
            }
            QElapsedTimer timer;
            timer.start();
            if (actions[action].second < 0)
                management.cmdFind_Click();
            else
                management.cmdAction_Click(actions[action].second);
            viewer.lstDisplay->repaint();
            times[action].append(double(timer.nsecsElapsed()) / 1e6);
        }
    }
    for (int action = 0; action < 5; ++action)
        report(actions[action].first, times[action]);
    unload<frmListManagement>();
    viewer.ClearDisplayList();
}

}

int main(int argc, char **argv)
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    qputenv("XDG_STATE_HOME", home.path().toUtf8());
    qputenv("LUMORA_APP_FOLDER", home.path().toUtf8());
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    installIconThemes();
    frmMainViewer &window = form<frmMainViewer>();
    window.resize(1180, 780);
    window.show();
    waitFor(500);
    timeList(window, home.path());
    timeListManagement(window);
    if (argc > 1) {
        const QString folder = QString::fromLocal8Bit(argv[1]);
        QStringList pictures;
        if (const auto listing = listFolder(folder)) {
            for (const QString &name : listing->files)
                pictures.append(folder + QLatin1Char('/') + name);
        }
        if (pictures.size() > 2)
            timeSteps(window, pictures);
    }
    std::fflush(stdout);
    std::_Exit(0);
}
