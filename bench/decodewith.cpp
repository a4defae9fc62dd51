// bench_decodewith LIBRARY ROUNDS FILE...
// Decodes every file ROUNDS times after one unmeasured time and prints the median and the shortest in milliseconds, one
// line a file;
// "-" where the library cannot read it. One library a process: some of them have functions of the same names.

#include "decodewith.h"

#include "engine/decodehere.h"

#include <QFile>
#include <QGuiApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include <dlfcn.h>

namespace {

template <class Function> Function symbol(void *library, const char *name)
{
    if (auto *const found = reinterpret_cast<Function>(dlsym(library, name)))
        return found;
    std::fprintf(stderr, "bench_decodewith: no %s\n", name);
    std::exit(1);
}

double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double median(std::vector<double> &times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

bool decodeByLumora(const char *path)
{
    const Result<EncodedFile> file = readEncodedFile(QFile::decodeName(path));
    return file && decodeHere(*file) && true;
}

// Declared here: Debian's development packages of the two would drag in a desktop's worth of headers.
bool decodeByMagickWand(const char *path)
{
    static void *const library = openLibrary("libMagickWand-6.Q16.so.6");
    static const auto newWand = [] {
        symbol<void (*)()>(library, "MagickWandGenesis")();
        return symbol<void *(*)()>(library, "NewMagickWand");
    }();
    static const auto read = symbol<int (*)(void *, const char *)>(library, "MagickReadImage");
    static const auto destroy = symbol<void *(*)(void *)>(library, "DestroyMagickWand");
    void *const wand = newWand();
    const bool done = read(wand, path) != 0;
    destroy(wand);
    return done;
}

bool decodeByVips(const char *path)
{
    static void *const library = openLibrary("libvips.so.42");
    static const auto open = [] {
        symbol<int (*)(const char *)>(library, "vips_init")("bench");
        symbol<void (*)(int)>(library, "vips_cache_set_max")(0);
        return symbol<void *(*)(const char *, ...)>(library, "vips_image_new_from_file");
    }();
    static const auto write = symbol<void *(*)(void *, size_t *)>(library, "vips_image_write_to_memory");
    static const auto unref = symbol<void (*)(void *)>(library, "g_object_unref");
    static const auto release = symbol<void (*)(void *)>(library, "g_free");
    constexpr int sequential = 1;
    void *const image = open(path, "access", sequential, nullptr);
    if (!image)
        return false;
    size_t bytes = 0;
    void *const pixels = write(image, &bytes);
    release(pixels);
    unref(image);
    return pixels != nullptr;
}

}

void *openLibrary(const char *name)
{
    if (void *const library = dlopen(name, RTLD_NOW | RTLD_LOCAL))
        return library;
    std::fprintf(stderr, "bench_decodewith: %s\n", dlerror());
    std::exit(1);
}

int main(int argc, char **argv)
{
    const QByteArray library = argc > 3 ? argv[1] : "";
    bool (*const decode)(const char *) = library == "lumora" ? decodeByLumora
        : library == "graphicsmagick"                        ? decodeByGraphicsMagick
        : library == "imagemagick"                           ? decodeByMagickWand
        : library == "vips"                                  ? decodeByVips
                                                             : nullptr;
    const int rounds = argc > 3 ? std::atoi(argv[2]) : 0;
    if (!decode || rounds < 1) {
        std::fprintf(stderr, "usage: bench_decodewith lumora|graphicsmagick|imagemagick|vips ROUNDS FILE...\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    for (int i = 3; i < argc; ++i) {
        std::vector<double> times;
        std::vector<double> processorTimes;
        for (int round = 0; round <= rounds; ++round) {
            const double used = processorTime();
            const auto start = std::chrono::steady_clock::now();
            if (!decode(argv[i]))
                break;
            const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
            if (round == 0)
                continue;
            times.push_back(passed.count());
            processorTimes.push_back(processorTime() - used);
        }
        if (int(times.size()) < rounds)
            std::printf("-\t-\n");
        else
            std::printf("%.2f\t%.2f\n", median(times), median(processorTimes));
    }
}
