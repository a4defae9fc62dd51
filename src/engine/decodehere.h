#pragma once

#include "engine/decode.h"
#include "engine/metadata.h"

/// The work itself, in this process: what decode(), probe() and readTexts() do once they are behind the process
/// boundary, and what they do where there is none. Called by the decoder process, by the tests of single codecs and by
/// the fuzzers.
///
/// The codecs that may take part: all; the one built-in codec that knows the content; or those that are left once that
/// one has failed. Two attempts in all, however they are spread over two calls.
enum class Codecs : unsigned { All, BuiltIn, AfterBuiltIn };
Result<Picture> decodeHere(const EncodedFile &file, const DecodeHint &hint = {}, Codecs codecs = Codecs::All);
Result<ImageInfo> probeHere(const EncodedFile &file, int sizeIndex = -1, Codecs codecs = Codecs::All);
Result<PictureTexts> readTextsHere(const EncodedFile &file);

/// Whether a built-in codec knows the content.
bool builtInCodecKnows(const EncodedFile &file);
