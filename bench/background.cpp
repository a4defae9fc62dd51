// The ground of the dialogs on a 4K screen, beside the gradient that the toolkit offers for it, and the slider of the
// thumbnail size over a picture of 24 megapixels:
//     bench_background [ROUNDS]

#include "ui/background.h"
#include "app/checkjpg.h"
#include "app/globals.h"
#include "shell/frmPreferences.h"

#include <QApplication>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>
#include <vector>

namespace {

constexpr QSize screenSize(3840, 2160);

/// Processor time of this thread, in milliseconds: what another program takes away does not count.
double processorTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/// Shortest, median and longest of the rounds.
void measure(const char *what, int rounds, const std::function<void(int round)> &work)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const double begin = processorTime();
        work(round);
        times.push_back(processorTime() - begin);
    }
    std::sort(times.begin(), times.end());
    std::printf("%-44s %8.2f %8.2f %8.2f ms\n", what, times.front(), times[times.size() / 2], times.back());
}

class ToolkitGradient : public QWidget
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        QLinearGradient gradient(0, 0, 0, height());
        gradient.setColorAt(0, QColor(247, 251, 254));
        gradient.setColorAt(1, QColor(190, 225, 253));
        QPainter(this).fillRect(rect(), gradient);
    }
};

void paintGrounds(int rounds)
{
    QImage screen(screenSize, QImage::Format_RGB32);
    screen.fill(Qt::black);
    QWidget ours;
    ToolkitGradient toolkit;
    for (QWidget *window : {&ours, static_cast<QWidget *>(&toolkit)}) {
        window->setAttribute(Qt::WA_OpaquePaintEvent);
        window->resize(screenSize);
    }
    PaintFormBackground(&ours, QStringLiteral("OTHER"));
    const auto paint = [&screen](QWidget &window) { window.render(&screen, {}, {}, QWidget::RenderFlags()); };
    measure("a 4K window", rounds, [&](int) { paint(ours); });
    measure("the same, QLinearGradient", rounds, [&](int) { paint(toolkit); });
    measure("a 4K window of a new height", rounds, [&](int round) {
        ours.resize(screenSize.width(), screenSize.height() - 1 - round % 2);
        paint(ours);
    });
    PaintFormBackground(&ours, QStringLiteral("GRAY"));
    measure("a 4K window, a colour for each band", rounds, [&](int) { paint(ours); });
}

void moveSlider(int rounds)
{
    QImage photograph(6000, 4000, QImage::Format_RGB32);
    std::minstd_rand random(1);
    for (int y = 0; y < photograph.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(photograph.scanLine(y));
        std::generate_n(line, photograph.width(), [&random] { return QRgb(0xff000000U | random()); });
    }
    auto &preferences = form<frmPreferences>();
    form<checkjpg>().Gvbox2.setPicture(LoadedPicture::fromPicture(Picture::fromImage(photograph)));
    measure("the window of options over 24 megapixels", 1, [&](int) { preferences.Form_Activate(); });
    preferences.sldThumbNailSize->setSliderDown(true);
    measure("one place of the slider", rounds,
        [&](int round) { preferences.sldThumbNailSize->setSliderPosition(60 + round % 15 * 10); });
    measure("the same, MaskMakeThumbnail of the whole", std::min(rounds, 15), [&](int round) {
        auto &mask = form<checkjpg>().ImageMaskControl1;
        mask.setMaskPicture(form<checkjpg>().Picture1.picture());
        mask.MaskMakeThumbnail(60 + round % 15 * 10, 60 + round % 15 * 10);
    });
}

}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir home;
    for (const char *folder : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "LUMORA_APP_FOLDER"})
        qputenv(folder, QFile::encodeName(home.path() + QLatin1Char('/')));
    QApplication application(argc, argv);
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 60;
    std::printf("%-44s %8s %8s %8s\n", "processor time", "shortest", "median", "longest");
    paintGrounds(rounds);
    moveSlider(rounds);
    globals.ProgramExiting = true;
    unload<frmPreferences>();
    unload<checkjpg>();
    return 0;
}
