#pragma once

#include "engine/decode.h"

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

    const ImageInfo &info() const { return m_info; }
    /// The largest pixels decoded so far.
    Picture current() const;
    /// Pixels that are at least `needed` in both directions, or all there are. May decode; takes as long as that takes.
    Picture atLeast(QSize needed) const;
    Picture full() const { return atLeast(m_info.size); }
    /// Bytes held: pixels and the file.
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
};
