// The loadable module: the codecs behind libraries that take long to load.

#include "engine/codecs/jpeg2000.h"
#include "engine/codecs/longtail.h"
#include "engine/codecs/raw.h"
#include "engine/codecs/tiff.h"
#include "engine/codecs/warmup.h"

#include <vector>

extern "C" __attribute__((visibility("default"))) const CodecModule *lumoraCodecModule()
{
    static const std::vector<const Codec *> codecs = [] {
        std::vector<const Codec *> rows{
            &tiffCodec, &jpeg2000Codec, &rawCodec,
            // one row a line
        };
        const std::span<const Codec *const> others = longTailCodecs();
        rows.insert(rows.end(), others.begin(), others.end());
        return rows;
    }();
    static const CodecModule module{LUMORA_VERSION, codecs, {}, nullptr, nullptr, warmUpCodecs};
    return &module;
}
