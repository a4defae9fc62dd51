// lumora-decoder: started by the program, never by hand. `lumora-decoder quick|full PARENT`, the connection to the
// program as descriptor 3.

#include "engine/codec.h"
#include "engine/isolation/confinement.h"
#include "engine/isolation/worker.h"
#include "engine/isolation/zygote.h"
#include "engine/limits.h"

#include <QGuiApplication>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <sys/prctl.h>

using namespace isolation;

namespace {

constexpr int connectionPlace = 3;

// Qt finds its readers of these two as plug-ins at their first use.
void loadPlugins()
{
    static const char gif[] = "GIF89a\1\0\1\0\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0\1\0\1\0\0\2\2\x44\1\0;";
    static const char icon[] = "\0\0\1\0\1\0\1\1\2\0\1\0\1\0\x38\0\0\0\x16\0\0\0"
                               "\x28\0\0\0\1\0\0\0\2\0\0\0\1\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                               "\0\0\0\0\xff\xff\xff\0\0\0\0\0\0\0\0\0";
    ignore(decodeHere({QByteArray::fromRawData(gif, sizeof gif - 1), QStringLiteral("gif")}, {}, Codecs::BuiltIn));
    ignore(decodeHere({QByteArray::fromRawData(icon, sizeof icon - 1), QStringLiteral("ico")}, {}, Codecs::BuiltIn));
}

void warmUp(Family family)
{
    ignore(limits::decodeBudget());
    loadPlugins();
    if (family == Family::Quick)
        return;
    const CodecModule *const module = codecModule();
    if (module && module->warmUp)
        module->warmUp(clientMemory());
}

}

int main(int argc, char **argv)
{
    if (argc != 3 || fcntl(connectionPlace, F_SETFD, FD_CLOEXEC) != 0) {
        std::fprintf(stderr, "lumora-decoder is started by lumora alone\n");
        return 2;
    }
    // The program may have ended between its starting this one and now.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != QByteArray(argv[2]).toInt())
        return 1;
    const Family family = qstrcmp(argv[1], "quick") == 0 ? Family::Quick : Family::Full;
    const QByteArray mode = qgetenv("LUMORA_DECODER");

    // Pictures without a resolution get the same one on every machine.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    int count = 1;
    // The readers of drawings paint texts, which takes fonts.
    const std::unique_ptr<QCoreApplication> application(family == Family::Quick
            ? new QCoreApplication(count, argv)
            : static_cast<QCoreApplication *>(new QGuiApplication(count, argv)));
    std::setlocale(LC_NUMERIC, "C");
    warmUp(family);
    Confinement confinement =
        prepareConfinement(mode == "strict" ? Unknown::Ends : Unknown::Refused, mode == "debug" || mode == "strict");
    setPictureMemory(clientMemory());
    const int status = serveAsZygote(Descriptor(connectionPlace), family, confinement);
    // Nothing here is worth an orderly end.
    _exit(status);
}
