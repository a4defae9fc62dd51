// The loadable module: the codecs behind libraries that take long to load.

#include "engine/codecs/gem.h"
#include "engine/codecs/gemimage.h"
#include "engine/codecs/iff.h"
#include "engine/codecs/jpeg2000.h"
#include "engine/codecs/longtail.h"
#include "engine/codecs/ownencoders.h"
#include "engine/codecs/fpx.h"
#include "engine/codecs/jpeg2000.h"
#include "engine/codecs/longtail.h"
#include "engine/codecs/pic.h"
#include "engine/codecs/pict.h"
#include "engine/codecs/psp.h"
#include "engine/codecs/metafile.h"
#include "engine/codecs/modernformats.h"
#include "engine/codecs/raw.h"
#include "engine/codecs/smallformats.h"
#include "engine/codecs/mbm.h"
#include "engine/codecs/ownencoders.h"
#include "engine/codecs/psd.h"
#include "engine/codecs/raw.h"
#include "engine/codecs/sunraster.h"
#include "engine/codecs/tga.h"
#include "engine/codecs/encoders.h"
#include "engine/codecs/jpeg2000.h"
#include "engine/codecs/longtail.h"
#include "engine/codecs/metadataread.h"
#include "engine/codecs/raw.h"
#include "engine/codecs/texts.h"
#include "engine/codecs/tiff.h"
#include "engine/codecs/wpgdrawing.h"

#include <vector>

extern "C" __attribute__((visibility("default"))) const CodecModule *lumoraCodecModule()
{
    static const std::vector<const Codec *> codecs = [] {
        // clang-format off
        std::vector<const Codec *> rows{
            &tiffCodec,
            &jpeg2000Codec,
            &rawCodec,
            &gemCodec,
            &tiffCodec, &jpeg2000Codec, &rawCodec, &pspCodec, &fpxCodec, &softimageCodec, &pictorCodec, &radianceCodec,
            &pictCodec,
            // one row a line
            &iffCodec,
            &gemImageCodec,
            &mspCodec,
            &cutCodec,
            &pmpCodec,
            &mbmCodec,
            &psdCodec,
            &sunRasterCodec,
            &tgaCodec,
            &emfCodec,
            &wmfCodec,
            &heifCodec,
            &jpegXlCodec,
            &qoiCodec,
            &svgCodec,
            &webPCodec,
        };
        // clang-format on
        const std::span<const Codec *const> others = longTailCodecs();
        rows.insert(rows.end(), others.begin(), others.end());
        rows.push_back(&wpgDrawingCodec);
        return rows;
    }();
    static const CodecModule module{LUMORA_VERSION, codecs, ownEncoders(), nullptr, nullptr};
    static const CodecModule module{LUMORA_VERSION, codecs, encoders(), readMetadata, readFileTexts};
    return &module;
}
