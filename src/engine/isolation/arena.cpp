#include "engine/isolation/arena.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace isolation {

namespace {

constexpr qint64 firstPage = 4096;
constexpr qint64 granule = 2 * 1024 * 1024;

uchar *map(int descriptor, qint64 bytes)
{
    void *const start = mmap(nullptr, size_t(bytes), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    return start == MAP_FAILED ? nullptr : static_cast<uchar *>(start);
}

}

Arena::Arena(Descriptor descriptor, uchar *data, qint64 size, qint64 mapped)
    : m_descriptor(std::move(descriptor))
    , m_data(data)
    , m_size(size)
    , m_mapped(mapped)
{
}

Arena::Arena(Arena &&other) noexcept
    : m_descriptor(std::move(other.m_descriptor))
    , m_data(std::exchange(other.m_data, nullptr))
    , m_size(std::exchange(other.m_size, 0))
    , m_mapped(std::exchange(other.m_mapped, 0))
{
}

Arena &Arena::operator=(Arena &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_mapped, other.m_mapped);
    return *this;
}

Arena::~Arena()
{
    if (m_data)
        munmap(m_data, size_t(m_mapped));
}

std::optional<Arena> Arena::make(qint64 bytes)
{
    const qint64 size = (bytes + bytes / 8 + granule - 1) / granule * granule;
    Descriptor descriptor(memfd_create("lumora-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!descriptor || ftruncate(descriptor.value(), size) != 0
        || fcntl(descriptor.value(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return {};
    uchar *const data = map(descriptor.value(), firstPage);
    if (!data)
        return {};
    return Arena(std::move(descriptor), data, size, firstPage);
}

std::optional<Arena> Arena::open(Descriptor descriptor, qint64 bytes)
{
    struct stat state;
    if (!descriptor || bytes <= 0 || fstat(descriptor.value(), &state) != 0 || state.st_size != bytes)
        return {};
    uchar *const data = map(descriptor.value(), bytes);
    if (!data)
        return {};
    return Arena(Descriptor(), data, bytes, bytes);
}

bool Arena::write(qint64 at, std::span<const uchar> bytes) const
{
    while (!bytes.empty()) {
        const ssize_t done = pwrite(descriptor(), bytes.data(), bytes.size(), at);
        if (done <= 0 && errno != EINTR)
            return false;
        bytes = bytes.subspan(size_t(std::max<ssize_t>(done, 0)));
        at += std::max<ssize_t>(done, 0);
    }
    return true;
}

bool Arena::read(qint64 at, std::span<uchar> to) const
{
    while (!to.empty()) {
        const ssize_t done = pread(descriptor(), to.data(), to.size(), at);
        if (done == 0 || (done < 0 && errno != EINTR))
            return false;
        to = to.subspan(size_t(std::max<ssize_t>(done, 0)));
        at += std::max<ssize_t>(done, 0);
    }
    return true;
}

}
