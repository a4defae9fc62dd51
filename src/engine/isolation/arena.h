#pragma once

#include "engine/isolation/descriptor.h"

#include <QtGlobal>

#include <optional>
#include <span>

namespace isolation {

/// Memory that the program shares with one decoder process. The program makes it and seals its size, so that the other
/// side can neither cut it under a reader nor let it grow. It is kept from picture to picture: fresh pages cost more
/// than everything else about the boundary.
class Arena
{
public:
    /// Rounds up, with some room for the next picture. Nothing when there is no memory. The program maps the first page
    /// alone and copies the rest by system calls: its own memory does not grow by what it shares.
    static std::optional<Arena> make(qint64 bytes);
    /// The other side's view of one; nothing when it is not as large as was told.
    static std::optional<Arena> open(Descriptor descriptor, qint64 bytes);

    Arena(Arena &&other) noexcept;
    Arena &operator=(Arena &&other) noexcept;
    ~Arena();

    /// The first page, and on the other side everything.
    uchar *data() const { return m_data; }
    bool write(qint64 at, std::span<const uchar> bytes) const;
    bool read(qint64 at, std::span<uchar> to) const;
    qint64 size() const { return m_size; }
    int descriptor() const { return m_descriptor.value(); }

private:
    Arena(Descriptor descriptor, uchar *data, qint64 size, qint64 mapped);

    Descriptor m_descriptor; ///< closed already on the other side
    uchar *m_data = nullptr;
    qint64 m_size = 0;
    qint64 m_mapped = 0;
};

}
