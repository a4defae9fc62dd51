// bench_pixels SECONDS PROGRAM [ARGUMENTS]
// Starts a program and looks at the screen of $DISPLAY from outside until the field of the bench picture shows. Prints
//     milliseconds from the start to the picture <tab> peak resident memory in kB, all processes of the program
// and ends the program. Every program is measured alike, and none has to know of it. Exit status 1 when the picture did
// not show in time.

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

constexpr int rowDistance = 24; // pixels between the rows that are looked at
constexpr int enoughPixels = 300; // of the field's colour, over all rows
constexpr double settled = 400; // milliseconds without growth after which the picture counts as whole
constexpr timespec pollPause = {0, 4'000'000};

double now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

bool near(unsigned long channel, int wanted)
{
    return std::abs(static_cast<int>(channel & 255) - wanted) <= 12;
}

/// JPEG and scaling move the colour of makepicture.cpp a little, so that it is compared with some room.
bool isField(unsigned long pixel)
{
    return near(pixel >> 16, 255) && near(pixel >> 8, 0) && near(pixel, 200);
}

int fieldPixels(Display *display)
{
    const int screen = DefaultScreen(display);
    const int width = DisplayWidth(display, screen);
    int count = 0;
    for (int y = rowDistance / 2; y < DisplayHeight(display, screen); y += rowDistance) {
        XImage *row =
            XGetImage(display, DefaultRootWindow(display), 0, y, static_cast<unsigned>(width), 1, AllPlanes, ZPixmap);
        if (!row)
            continue;
        for (int x = 0; x < width; ++x)
            count += isField(XGetPixel(row, x, 0));
        XDestroyImage(row);
    }
    return count;
}

/// When the field stood as large as it gets: a program that paints from the top down is not done with the first rows. 0
/// when it did not come before `until`.
double momentOfWholeField(Display *display, double until)
{
    int largest = 0;
    double moment = 0;
    while (now() < (largest < enoughPixels ? until : moment + settled)) {
        const int count = fieldPixels(display);
        if (count > largest) {
            largest = count;
            moment = now();
        }
        nanosleep(&pollPause, nullptr);
    }
    return largest < enoughPixels ? 0 : moment;
}

std::string firstLineWith(const std::string &file, const char *start)
{
    std::string found;
    if (FILE *stream = std::fopen(file.c_str(), "r")) {
        char line[4096];
        while (found.empty() && std::fgets(line, sizeof line, stream)) {
            if (std::strncmp(line, start, std::strlen(start)) == 0)
                found = line + std::strlen(start);
        }
        std::fclose(stream);
    }
    return found;
}

std::vector<pid_t> childrenOf(pid_t parent)
{
    std::vector<pid_t> children;
    DIR *processes = opendir("/proc");
    while (const dirent *entry = processes ? readdir(processes) : nullptr) {
        const pid_t pid = std::atoi(entry->d_name);
        if (pid > 0 && std::atoi(firstLineWith("/proc/" + std::to_string(pid) + "/status", "PPid:").c_str()) == parent)
            children.push_back(pid);
    }
    if (processes)
        closedir(processes);
    return children;
}

/// The sum of each process's own peak: more than was ever used at one moment, never less.
long peakMemory(pid_t pid)
{
    long sum = std::atol(firstLineWith("/proc/" + std::to_string(pid) + "/status", "VmHWM:").c_str());
    for (const pid_t child : childrenOf(pid))
        sum += peakMemory(child);
    return sum;
}

void endProgram(pid_t pid)
{
    kill(pid, SIGTERM);
    const double until = now() + 3000;
    while (waitpid(pid, nullptr, WNOHANG) == 0) {
        if (now() > until) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            return;
        }
        nanosleep(&pollPause, nullptr);
    }
}

}

int main(int argc, char **argv)
{
    if (argc < 3 || std::atof(argv[1]) <= 0) {
        std::fprintf(stderr, "usage: bench_pixels SECONDS PROGRAM [ARGUMENTS]\n");
        return 2;
    }
    Display *display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "bench_pixels: there is no display\n");
        return 1;
    }
    if (fieldPixels(display) >= enoughPixels) {
        std::fprintf(stderr, "bench_pixels: the picture is on the screen already\n");
        return 1;
    }
    const double start = now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[2], nullptr, nullptr, argv + 2, environ) != 0) {
        std::fprintf(stderr, "bench_pixels: %s cannot be started\n", argv[2]);
        return 1;
    }
    const double shown = momentOfWholeField(display, start + std::atof(argv[1]) * 1000);
    const long memory = peakMemory(pid);
    endProgram(pid);
    if (shown <= 0) {
        std::fprintf(stderr, "bench_pixels: %s did not show the picture\n", argv[2]);
        return 1;
    }
    std::printf("%.1f\t%ld\n", shown - start, memory);
    return 0;
}
