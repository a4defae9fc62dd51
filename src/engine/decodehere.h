#pragma once

#include "engine/decode.h"
#include "engine/metadata.h"

/// The work itself, in this process: what decode(), probe() and readTexts() do once they are behind the process
/// boundary, and what they do where there is none. Called by the decoder process, by the tests of single codecs and by
/// the fuzzers.
Result<Picture> decodeHere(const EncodedFile &file, const DecodeHint &hint = {});
Result<ImageInfo> probeHere(const EncodedFile &file, int sizeIndex = -1);
Result<PictureTexts> readTextsHere(const EncodedFile &file);
