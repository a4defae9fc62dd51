#include "engine/codec.h"

#include "engine/codecs/jpeg.h"
#include "engine/codecs/oddones.h"
#include "engine/codecs/png.h"
#include "engine/codecs/qtformats.h"

#include <atomic>
#include <mutex>
#include <vector>

#include <dlfcn.h>
#include <unistd.h>

namespace {

const Codec *const builtIn[] = {
    &jpegCodec, &pngCodec, &bmpCodec, &gifCodec, &icoCodec, &xbmCodec, &xpmCodec, &sfwCodec, &compuServeCodec};

// Published once, when the module is in; the rows live as long as the program.
std::atomic<const std::vector<const Codec *> *> loadedTable = nullptr;
std::atomic<const CodecModule *> loadedModule = nullptr;
std::once_flag loadOnce;
std::mutex failureMutex;
QString moduleFailure;

// Read from the system and not from the application object, which need not stand yet.
QByteArray programFolder()
{
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const QByteArray program(path, length > 0 ? int(length) : 0);
    return program.left(program.lastIndexOf('/'));
}

QString loadFrom(const QByteArray &folder)
{
    const QByteArray path = folder + "/lumora-codecs.so";
    void *const library = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return QString::fromLocal8Bit(dlerror());
    const auto entry = reinterpret_cast<CodecModuleEntry>(dlsym(library, "lumoraCodecModule"));
    const CodecModule *const module = entry ? entry() : nullptr;
    if (!module || qstrcmp(module->version, LUMORA_VERSION) != 0)
        return QString::fromLocal8Bit(path) + QStringLiteral(" belongs to another version of the program");
    auto *const table = new std::vector<const Codec *>(std::begin(builtIn), std::end(builtIn));
    table->insert(table->end(), module->codecs.begin(), module->codecs.end());
    loadedModule.store(module, std::memory_order_release);
    loadedTable.store(table, std::memory_order_release);
    return {};
}

void loadModule()
{
    QString failure;
    for (const QByteArray &folder : moduleFolders()) {
        const QString reason = loadFrom(folder);
        if (reason.isEmpty())
            return;
        // The first reason counts: the other folders are for other ways of installing.
        if (failure.isEmpty())
            failure = reason;
    }
    const std::lock_guard lock(failureMutex);
    moduleFailure = QStringLiteral("the module lumora-codecs cannot be loaded: ") + failure;
}

}

std::vector<QByteArray> moduleFolders()
{
    std::vector<QByteArray> folders;
    if (const QByteArray asked = qgetenv("LUMORA_MODULES"); !asked.isEmpty())
        folders.push_back(asked);
    folders.push_back(programFolder() + "/lumora-modules");
    folders.push_back(programFolder() + "/../lib/lumora");
    return folders;
}

std::span<const Codec *const> builtInCodecs()
{
    return builtIn;
}

std::span<const Codec *const> codecTable()
{
    if (const auto *table = loadedTable.load(std::memory_order_acquire))
        return *table;
    return builtIn;
}

std::span<const Codec *const> builtInCodecs()
{
    return builtIn;
}

std::span<const Codec *const> fullCodecTable()
{
    std::call_once(loadOnce, loadModule);
    return codecTable();
}

const CodecModule *codecModule()
{
    std::call_once(loadOnce, loadModule);
    return loadedModule.load(std::memory_order_acquire);
}

QString codecModuleFailure()
{
    const std::lock_guard lock(failureMutex);
    return moduleFailure;
}
