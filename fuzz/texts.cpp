// The texts and raw blocks of a file.

#include "engine/codec.h"
#include "fuzzed.h"

extern "C" const CodecModule *lumoraCodecModule();

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int begun = fuzzed::begin();
    ignore(begun);
    const EncodedFile file = fuzzed::fileOf(data, size, "");
    const CodecModule *const module = lumoraCodecModule();
    if (module->readTexts)
        ignore(module->readTexts(file));
    if (module->readMetadata)
        ignore(module->readMetadata(file));
    return 0;
}
