#pragma once

#include "engine/decode.h"

#include <array>
#include <memory>
#include <mutex>

/// A picture that a control holds: known in size and depth, decoded at least as large as was asked for, and able to
/// give its full pixels later from the very bytes that were read at load time, whatever happens to the file meanwhile.
///
/// Immutable to the outside and safe to use from any thread.
class LoadedPicture
{
public:
    /// Reads and decodes; `target` as in DecodeHint.
    static Result<std::shared_ptr<const LoadedPicture>> load(const QString &path, int sizeIndex, QSize target);
    /// The same for bytes that are read already.
    static Result<std::shared_ptr<const LoadedPicture>> fromFile(EncodedFile file, int sizeIndex, QSize target);
    /// Wraps a picture that is already complete.
    static std::shared_ptr<const LoadedPicture> fromPicture(const Picture &picture);
    /// Wraps what is left of a picture when only a small one will ever be asked for: its info is the file's, larger
    /// pixels than these cannot be had.
    static std::shared_ptr<const LoadedPicture> fromReduced(const Picture &picture);

    const ImageInfo &info() const { return m_info; }
    /// The largest pixels decoded so far.
    Picture current() const;
    /// Pixels that are at least `needed` in both directions, or all there are. May decode; takes as long as that takes.
    Picture atLeast(QSize needed) const;
    Picture full() const { return atLeast(m_info.size); }
    /// Pixels of exactly `size`, as a window system takes them: Format_RGB32, or Format_ARGB32_Premultiplied where the
    /// picture can be transparent. The sizes asked for last are kept, so that a picture can be made ready for its panes
    /// before it is shown.
    QImage scaled(QSize size) const;
    /// Bytes held: pixels, scaled pixels and the file.
    qint64 cost() const;

    LoadedPicture() = default;
    LoadedPicture(const LoadedPicture &) = delete;
    LoadedPicture &operator=(const LoadedPicture &) = delete;

private:
    ImageInfo m_info;
    int m_sizeIndex = -1;
    mutable std::mutex m_decoding; ///< held during a decode; taken before m_mutex
    mutable std::mutex m_mutex; ///< guards what follows, for moments only
    mutable EncodedFile m_file; ///< empty once the pixels are complete
    mutable Picture m_picture;
    mutable std::mutex m_scaling; ///< held while scaling; taken before the other two
    mutable std::array<QImage, 2> m_scaled; ///< the last one first
};
