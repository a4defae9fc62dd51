// One codec of our own, called directly: probe, decode, a reduced decode, the last page.

#include "engine/codec.h"
#include "fuzzed.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" const CodecModule *lumoraCodecModule();

namespace {

const Codec *fuzzedCodec()
{
    const auto called = [](const Codec *codec) { return std::strcmp(codec->name, LUMORA_FUZZED_CODEC) == 0; };
    for (const Codec *codec : codecTable()) {
        if (called(codec))
            return codec;
    }
    for (const Codec *codec : lumoraCodecModule()->codecs) {
        if (called(codec))
            return codec;
    }
    std::fprintf(stderr, "no codec is called %s\n", LUMORA_FUZZED_CODEC);
    std::exit(2);
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int begun = fuzzed::begin();
    ignore(begun);
    static const Codec *const codec = fuzzedCodec();
    const EncodedFile file = fuzzed::fileOf(data, size, LUMORA_FUZZED_EXTENSION);
    if (codec->sniff)
        ignore(codec->sniff(std::span(data, size)));
    const Result<ImageInfo> info = codec->probe(file, -1);
    const Result<Picture> picture = codec->decode(file, {});
    if (!picture)
        return 0;
    fuzzed::check(*picture);
    if (info && !picture->partial)
        fuzzed::checkSame(*info, picture->info);
    if (const Result<Picture> reduced = codec->decode(file, {QSize(16, 16), -1, 0}); reduced)
        fuzzed::check(*reduced);
    if (picture->info.pageCount > 1) {
        if (const Result<Picture> last = codec->decode(file, {QSize(), -1, picture->info.pageCount - 1}); last)
            fuzzed::check(*last);
    }
    return 0;
}
