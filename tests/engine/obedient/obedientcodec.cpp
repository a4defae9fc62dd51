// A module with one codec that does what the file orders, as a decoder would that a hostile file has taken over.

#include "engine/codec.h"
#include "engine/isolation/protocol.h"
#include "engine/obedient/obedient.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int connection = 3;
using Pointer = void (*)();

/// What a forbidden call came to, as the answer.
Result<Picture> outcome(long result)
{
    if (result < 0)
        return Failure{QStringLiteral("refused: ") + QString::fromLocal8Bit(strerror(errno))};
    return obedientPicture();
}

template <class Message> void say(const Message &message)
{
    ignore(write(connection, &message, sizeof message));
}

[[noreturn]] void waitForEver()
{
    while (true)
        poll(nullptr, 0, -1);
}

isolation::Done lie()
{
    isolation::Done head;
    head.succeeded = 1;
    head.width = head.height = head.fileWidth = head.fileHeight = 4;
    head.format = QImage::Format_Indexed8;
    head.bitsPerPixel = 8;
    head.pageCount = 1;
    return head;
}

[[noreturn]] void sayAndWait(const isolation::Done &head)
{
    say(head);
    waitForEver();
}

// Each pixel points far behind the two colours that come along.
[[noreturn]] void sendWrongIndices()
{
    isolation::Done head = lie();
    head.lengths[isolation::ColorTable] = 8;
    head.lengths[isolation::Pixels] = 16;
    QByteArray bytes(reinterpret_cast<const char *>(&head), sizeof head);
    bytes += QByteArray(8, '\x22') + QByteArray(16, '\xc8');
    ignore(write(connection, bytes.constData(), size_t(bytes.size())));
    _exit(0);
}

isolation::ArenaGiven askForMemory(int side)
{
    say(isolation::Need{isolation::Kind::Need, side, side, QImage::Format_RGB32});
    isolation::ArenaGiven given;
    if (read(connection, &given, sizeof given) != sizeof given)
        _exit(1);
    return given;
}

int recursion(int depth)
{
    char room[4096];
    room[depth % 4096] = char(depth);
    asm volatile("" : : "r"(&room) : "memory");
    return depth < 0 ? 0 : recursion(depth + 1) + room[0];
}

[[noreturn]] void loopForEver()
{
    while (true)
        asm volatile("");
}

[[noreturn]] void useAllMemory()
{
    while (true) {
        const char *const memory = new char[16 << 20];
        asm volatile("" : : "r"(memory) : "memory");
    }
}

Result<Picture> misbehave(const QByteArray &order)
{
    using namespace isolation;
    if (order == "crash")
        raise(SIGSEGV);
    if (order == "abort")
        std::abort();
    if (order == "exit")
        _exit(0);
    if (order == "loop")
        loopForEver();
    if (order == "wait")
        waitForEver();
    if (order == "memory")
        useAllMemory();
    if (order == "recursion")
        return outcome(recursion(0));
    if (order == "closed connection") {
        close(connection);
        waitForEver();
    }
    if (order == "garbage") {
        ignore(write(connection, "rubbish rubbish", 15));
        waitForEver();
    }
    if (order == "flood")
        while (true)
            say(Need{Kind::Need, 4, 4, QImage::Format_RGB32});
    if (order == "wrong index")
        sendWrongIndices();
    return Failure{QStringLiteral("unknown order")};
}

Result<Picture> lieAbout(const QByteArray &order)
{
    using namespace isolation;
    Done head = lie();
    if (order == "too few pixels") {
        head.lengths[Pixels] = 1;
        const QByteArray bytes = QByteArray(reinterpret_cast<const char *>(&head), sizeof head) + 'x';
        ignore(write(connection, bytes.constData(), size_t(bytes.size())));
        waitForEver();
    }
    if (order == "pixels that are not there") {
        head.inArena = 1;
    } else if (order == "another size than announced") {
        askForMemory(900);
        head.inArena = 1;
        head.width = 901;
        head.height = 900;
        head.format = QImage::Format_RGB32;
    } else if (order == "fields that never come") {
        head.lengths[Exif] = 1;
    } else if (order == "endless fields") {
        head.lengths.fill(~0U);
    } else if (order == "negative size") {
        head.width = -4;
    } else if (order == "unknown format") {
        head.format = 77;
    } else if (order == "no pages") {
        head.pageCount = 0;
    } else {
        if (askForMemory(60'000).bytes == 0)
            return Failure{QStringLiteral("refused: too large")};
    }
    sayAndWait(head);
}

Result<Picture> reachOut(const QByteArray &order)
{
    errno = 0;
    if (order == "open")
        return outcome(open("/etc/hostname", O_RDONLY | O_CLOEXEC));
    if (order == "create")
        return outcome(open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (order == "socket")
        return outcome(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (order == "exec")
        return outcome(execl("/bin/true", "true", nullptr));
    if (order == "fork") // past the C library, which may use another call
        return outcome(syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, 0));
    if (order == "kill parent")
        return outcome(kill(getppid(), SIGKILL));
    if (order == "trace")
        return outcome(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr));
    if (order == "shared memory")
        return outcome(memfd_create("more", MFD_CLOEXEC));
    void *const code = mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return outcome(code == MAP_FAILED ? -1 : 0);
}

Result<Picture> obey(const EncodedFile &file, const DecodeHint &hint)
{
    const QByteArray order(file.bytes.constData() + 5);
    if (order == "picture")
        return obedientPicture();
    if (order == "large") {
        Picture picture = obedientPicture();
        picture.pixels = largeObedientImage();
        return picture;
    }
    if (order == "echo")
        return Failure{QStringLiteral("%1 %2 %3 %4 %5 %6")
                           .arg(file.extension)
                           .arg(file.bytes.size())
                           .arg(hint.target.width())
                           .arg(hint.target.height())
                           .arg(hint.sizeIndex)
                           .arg(hint.page)};
    if (order == "talk") {
        for (int i = 0; i < 100; ++i)
            ignore(write(STDERR_FILENO, "OBEDIENT CODEC\n", 15));
        return obedientPicture();
    }
    if (order.startsWith("do "))
        return misbehave(order.mid(3));
    return order.startsWith("lie ") ? lieAbout(order.mid(4)) : reachOut(order.mid(4));
}

Result<ImageInfo> probeObedient(const EncodedFile &, int)
{
    return obedientPicture().info;
}

Result<PictureTexts> textsOfObedient(const EncodedFile &)
{
    PictureTexts texts;
    texts.description = QStringLiteral("d\u00e9 \U0001f600");
    texts.cameraDate = QStringLiteral("2020:07:15 08:35:14");
    texts.iptc = {{QStringLiteral("Keyword"), QStringLiteral("a")}, {QStringLiteral("Keyword"), QString()}};
    return texts;
}

const Codec obedient{"Obedient", "obey",
    [](std::span<const uchar> head) { return head.size() > 5 && std::memcmp(head.data(), "OBEY ", 5) == 0; },
    probeObedient, obey};

}

extern "C" __attribute__((visibility("default"))) const CodecModule *lumoraCodecModule()
{
    static const Codec *const rows[] = {&obedient};
    static const CodecModule module{LUMORA_VERSION, rows, {}, nullptr, textsOfObedient};
    return &module;
}
