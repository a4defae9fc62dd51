// Times a full list of 32,767 entries: filling, selecting, scrolling, removing, each until it is painted, beside the
// toolkit's own list widget; and the two lists of the Main Viewer moving all of it.
//
//     bench_fulllist [ROUNDS]
//
// Prints one line per figure: name, medians, ratio.

#include "app/globals.h"
#include "ui/guards.h"
#include "ui/icons.h"
#include "ui/listbox.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QScrollBar>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace {

QStringList paths()
{
    QStringList result;
    for (int i = 0; i < ListBox::maximumCount; ++i)
        result.append(QStringLiteral("/srv/someone/Pictures/holiday %1/IMG_%2.jpg").arg(i % 97).arg(i));
    return result;
}

QList<int> everySecond(qsizetype count)
{
    QList<int> result;
    for (int i = 1; i < count; i += 2)
        result.append(i);
    return result;
}

/// Milliseconds until the work is done and `view` has painted what came of it.
double timed(QWidget &view, const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    view.repaint();
    QCoreApplication::processEvents();
    return double(timer.nsecsElapsed()) / 1e6;
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

using Steps = QVector<std::pair<const char *, std::function<void()>>>;

void scrollThrough(QAbstractItemView &view)
{
    for (int value = 0; value <= view.verticalScrollBar()->maximum(); value += 1000) {
        view.verticalScrollBar()->setValue(value);
        view.viewport()->repaint();
    }
}

Steps stepsOf(ListBox &list, const QStringList &all, const QList<int> &odd)
{
    return {
        {"fill", [&] { list.addItems(all); }},
        {"select all", [&] { list.selectAll(); }},
        {"clear the selection", [&] { list.clearSelections(); }},
        {"select every second, one by one",
            [&] {
                for (const int index : odd)
                    list.setSelected(index, true);
            }},
        {"scroll through", [&] { scrollThrough(list); }},
        {"remove every second", [&] { list.removeItems(odd); }},
        {"clear", [&] { list.clear(); }},
    };
}

Steps stepsOf(QListWidget &list, const QStringList &all, const QList<int> &odd)
{
    return {
        {"fill", [&] { list.addItems(all); }},
        {"select all", [&] { list.selectAll(); }},
        {"clear the selection", [&] { list.clearSelection(); }},
        {"select every second, one by one",
            [&] {
                QItemSelection selection;
                for (const int index : odd) {
                    const QModelIndex row = list.model()->index(index, 0);
                    selection.append(QItemSelectionRange(row));
                }
                list.selectionModel()->select(selection, QItemSelectionModel::Select);
            }},
        {"scroll through", [&] { scrollThrough(list); }},
        {"remove every second",
            [&] {
                for (auto index = odd.crbegin(); index != odd.crend(); ++index)
                    delete list.takeItem(*index);
            }},
        {"clear", [&] { list.clear(); }},
    };
}

void compareWithTheToolkit(int rounds)
{
    const QStringList all = paths();
    const QList<int> odd = everySecond(all.size());
    ListBox own;
    QListWidget toolkits;
    toolkits.setSelectionMode(QAbstractItemView::ExtendedSelection);
    toolkits.setUniformItemSizes(true);
    for (QWidget *view : {static_cast<QWidget *>(&own), static_cast<QWidget *>(&toolkits)}) {
        view->resize(300, 400);
        view->show();
    }
    QCoreApplication::processEvents();
    const Steps ours = stepsOf(own, all, odd);
    const Steps theirs = stepsOf(toolkits, all, odd);
    QVector<QVector<double>> ourTimes(ours.size());
    QVector<QVector<double>> theirTimes(theirs.size());
    for (int round = 0; round < rounds; ++round)
        for (qsizetype step = 0; step < ours.size(); ++step) {
            ourTimes[step].append(timed(own, ours[step].second));
            theirTimes[step].append(timed(toolkits, theirs[step].second));
        }
    for (qsizetype step = 0; step < ours.size(); ++step) {
        const double us = median(ourTimes[step]);
        const double them = median(theirTimes[step]);
        std::printf("%-34s %8.1f ms   QListWidget %8.1f ms   ratio %.2f\n", ours[step].first, us, them, us / them);
    }
}

void moveBetweenTheLists()
{
    auto &window = form<frmMainViewer>();
    ListBox &selection = *window.lstSelect;
    ListBox &display = *window.lstDisplay;
    const auto select = [](ListBox &list, const QList<int> &indices) {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        list.clearSelections();
        for (const int index : indices)
            list.setSelected(index, true);
    };
    const auto line = [&](const char *what, const std::function<void()> &work) {
        std::printf("%-34s %8.1f ms\n", what, timed(window, work));
    };
    const QStringList all = paths();
    selection.addItems(all);
    select(selection, everySecond(all.size()));
    line("move every second to display", [&] { window.AddSelectedToDisplayList(); });
    line("move the rest", [&] { window.AddAllToDisplayList(); });
    select(display, everySecond(all.size()));
    line("remove every second from it", [&] { window.RemoveSelectedFromDisplayList(); });
    line("clear it", [&] { window.ClearDisplayList(); });
}

}

int main(int argc, char **argv)
{
    QTemporaryDir folder;
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "LUMORA_APP_FOLDER"})
        qputenv(variable, folder.path().toUtf8());
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    installIconThemes();
    const int rounds = std::max(1, argc > 1 ? std::atoi(argv[1]) : 5);
    compareWithTheToolkit(rounds);
    auto &window = form<frmMainViewer>();
    window.show();
    while (!globals.MainViewerActivated)
        QCoreApplication::processEvents();
    moveBetweenTheLists();
    std::fflush(stdout);
    std::_Exit(0); // the windows go with the process
}
