#include "engine/isolation/arena.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace isolation {

namespace {

constexpr qint64 granule = 2 * 1024 * 1024;

uchar *map(int descriptor, qint64 bytes)
{
    void *const start = mmap(nullptr, size_t(bytes), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    return start == MAP_FAILED ? nullptr : static_cast<uchar *>(start);
}

}

Arena::Arena(Descriptor descriptor, uchar *data, qint64 size)
    : m_descriptor(std::move(descriptor))
    , m_data(data)
    , m_size(size)
{
}

Arena::Arena(Arena &&other) noexcept
    : m_descriptor(std::move(other.m_descriptor))
    , m_data(std::exchange(other.m_data, nullptr))
    , m_size(std::exchange(other.m_size, 0))
{
}

Arena &Arena::operator=(Arena &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    return *this;
}

Arena::~Arena()
{
    if (m_data)
        munmap(m_data, size_t(m_size));
}

std::optional<Arena> Arena::make(qint64 bytes)
{
    const qint64 size = (bytes + bytes / 8 + granule - 1) / granule * granule;
    Descriptor descriptor(memfd_create("lumora-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!descriptor || ftruncate(descriptor.value(), size) != 0
        || fcntl(descriptor.value(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return {};
    uchar *const data = map(descriptor.value(), size);
    if (!data)
        return {};
    return Arena(std::move(descriptor), data, size);
}

std::optional<Arena> Arena::open(Descriptor descriptor, qint64 bytes)
{
    struct stat state;
    if (!descriptor || bytes <= 0 || fstat(descriptor.value(), &state) != 0 || state.st_size != bytes)
        return {};
    uchar *const data = map(descriptor.value(), bytes);
    if (!data)
        return {};
    return Arena(Descriptor(), data, bytes);
}

}
