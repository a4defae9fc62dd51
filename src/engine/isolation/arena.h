#pragma once

#include "engine/isolation/descriptor.h"

#include <QtGlobal>

#include <optional>

namespace isolation {

/// Memory that the program shares with one decoder process. The program makes it and seals its size, so that the other
/// side can neither cut it under a reader nor let it grow. It is kept from picture to picture: fresh pages cost more
/// than everything else about the boundary.
class Arena
{
public:
    /// Rounds up, with some room for the next picture. Nothing when there is no memory.
    static std::optional<Arena> make(qint64 bytes);
    /// The other side's view of one; nothing when it is not as large as was told.
    static std::optional<Arena> open(Descriptor descriptor, qint64 bytes);

    Arena(Arena &&other) noexcept;
    Arena &operator=(Arena &&other) noexcept;
    ~Arena();

    uchar *data() const { return m_data; }
    qint64 size() const { return m_size; }
    int descriptor() const { return m_descriptor.value(); }

private:
    Arena(Descriptor descriptor, uchar *data, qint64 size);

    Descriptor m_descriptor; ///< closed already on the other side
    uchar *m_data = nullptr;
    qint64 m_size = 0;
};

}
