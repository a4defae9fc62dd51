#pragma once

#include "engine/decode.h"
#include "engine/encode.h"
#include "engine/metadata.h"
#include "engine/picturememory.h"

#include <span>
#include <vector>

/// One row of the codec table: a decoder behind one name, with the content test that selects it.
struct Codec
{
    const char *name; ///< as `lumora-dev formats` prints it: "JPEG", "PNG", "Photo CD"
    const char *extensions; ///< lower case, blank-separated, that name this codec when the content says nothing
    /// True when the first bytes are surely this codec's. Null for formats without a signature.
    bool (*sniff)(std::span<const uchar> head);
    Result<ImageInfo> (*probe)(const EncodedFile &file, int sizeIndex);
    Result<Picture> (*decode)(const EncodedFile &file, const DecodeHint &hint);
    /// probe() given only the start of a file gives the right numbers or fails; it never guesses.
    bool probesPrefix = false;
    /// decode() needs nothing of the application object, which does not stand yet when the first picture starts to
    /// load.
    bool worksEarly = false;
};

/// Those that need no module.
std::span<const Codec *const> builtInCodecs();

/// All codecs, those of the loadable module (`lumora-codecs`) included once it is loaded.
/// The module holds what drags large libraries in, so that a start that shows a JPEG does not pay for them.
std::span<const Codec *const> codecTable();

/// The same after an attempt to load the module. Safe to call from any thread; the attempt is made once.
std::span<const Codec *const> fullCodecTable();

/// Those that need no module.
std::span<const Codec *const> builtInCodecs();

/// Where the modules may lie, the first one that has them counts.
std::vector<QByteArray> moduleFolders();

/// Why the module's codecs are missing; empty when they are there or were not asked for yet.
QString codecModuleFailure();

/// One way of writing. The options that the format has no use for are ignored.
struct Encoder
{
    TypeCode typeCode;
    const char *codec; ///< the row of the codec table that reads what is written here
    Result<QByteArray> (*encode)(const Picture &picture, const EncodeOptions &options);
};

/// What the module's one entry, `lumoraCodecModule`, points to. A module of another version is not used.
struct CodecModule
{
    const char *version;
    std::span<const Codec *const> codecs;
    std::span<const Encoder> encoders;
    /// The raw blocks of a file whose own codec does not collect them. Null pointers: this build cannot.
    Metadata (*readMetadata)(const EncodedFile &file);
    Result<PictureTexts> (*readTexts)(const EncodedFile &file);
    /// Touches all that is loaded or opened at first use (a library's tables, plug-ins, fonts, what the limits ask of
    /// the system): the decoder process opens no file any more once it has locked itself in. Takes over where that
    /// process wants large pictures.
    void (*warmUp)(const PictureMemory &memory) = nullptr;
};
using CodecModuleEntry = const CodecModule *(*)();

/// The loaded module; null with codecModuleFailure() when there is none.
const CodecModule *codecModule();
