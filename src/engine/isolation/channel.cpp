#include "engine/isolation/channel.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>

namespace isolation {

std::pair<Descriptor, Descriptor> connectedPair()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return {};
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

bool send(int socket, std::span<const uchar> head, std::span<const uchar> rest, int descriptor)
{
    std::array<iovec, 2> pieces{
        iovec{const_cast<uchar *>(head.data()), head.size()}, iovec{const_cast<uchar *>(rest.data()), rest.size()}};
    msghdr message{};
    message.msg_iov = pieces.data();
    message.msg_iovlen = rest.empty() ? 1 : 2;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    if (descriptor >= 0) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr *const attached = CMSG_FIRSTHDR(&message);
        attached->cmsg_level = SOL_SOCKET;
        attached->cmsg_type = SCM_RIGHTS;
        attached->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(attached), &descriptor, sizeof descriptor);
    }
    ssize_t sent;
    do {
        sent = sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0 && size_t(sent) == head.size() + rest.size();
}

Received receive(int socket, std::span<uchar> to)
{
    iovec piece{to.data(), to.size()};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    message.msg_control = control.data();
    // Without the padding, in which a second one would find room.
    message.msg_controllen = CMSG_LEN(sizeof(int));
    ssize_t got;
    do {
        got = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (got < 0 && errno == EINTR);
    Received received;
    if (got < 0) {
        received.bytes = errno == ECONNRESET ? 0 : -1;
        return received;
    }
    const cmsghdr *const attached = CMSG_FIRSTHDR(&message);
    if (attached && attached->cmsg_level == SOL_SOCKET && attached->cmsg_type == SCM_RIGHTS
        && attached->cmsg_len == CMSG_LEN(sizeof(int))) {
        int descriptor;
        std::memcpy(&descriptor, CMSG_DATA(attached), sizeof descriptor);
        received.descriptor = Descriptor(descriptor);
    }
    received.bytes = message.msg_flags & (MSG_TRUNC | MSG_CTRUNC) ? -1 : got;
    return received;
}

bool waitReadable(int socket, Clock::time_point until)
{
    pollfd waiting{socket, POLLIN, 0};
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - Clock::now()).count();
        const timespec timeout{std::max<long>(0, left / 1'000'000'000), left < 0 ? 0 : long(left % 1'000'000'000)};
        const int ready = ppoll(&waiting, 1, &timeout, nullptr);
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

}
