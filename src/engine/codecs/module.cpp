// The loadable module: the codecs behind libraries that take long to load, and those of our own that few files need.

#include "engine/codecs/encoders.h"
#include "engine/codecs/fpx.h"
#include "engine/codecs/gem.h"
#include "engine/codecs/gemimage.h"
#include "engine/codecs/iff.h"
#include "engine/codecs/jpeg2000.h"
#include "engine/codecs/longtail.h"
#include "engine/codecs/mbm.h"
#include "engine/codecs/metadataread.h"
#include "engine/codecs/metafile.h"
#include "engine/codecs/modernformats.h"
#include "engine/codecs/ownencoders.h"
#include "engine/codecs/pic.h"
#include "engine/codecs/pict.h"
#include "engine/codecs/psd.h"
#include "engine/codecs/psp.h"
#include "engine/codecs/raw.h"
#include "engine/codecs/sgi.h"
#include "engine/codecs/smallformats.h"
#include "engine/codecs/sunraster.h"
#include "engine/codecs/texts.h"
#include "engine/codecs/tga.h"
#include "engine/codecs/tiff.h"
#include "engine/codecs/warmup.h"
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
            &webPCodec,
            &heifCodec,
            &jpegXlCodec,
            &svgCodec,
            &qoiCodec,
            &psdCodec,
            &pspCodec,
            &iffCodec,
            &mbmCodec,
            &tgaCodec,
            &sunRasterCodec,
            &sgiCodec,
            &gemImageCodec,
            &mspCodec,
            &cutCodec,
            &pmpCodec,
            &pnmCodec,
            &fpxCodec,
            &softimageCodec,
            &pictorCodec,
            &radianceCodec,
            &pictCodec,
            &emfCodec,
            &wmfCodec,
            &gemCodec,
        };
        // clang-format on
        const std::span<const Codec *const> others = longTailCodecs();
        rows.insert(rows.end(), others.begin(), others.end());
        // Asked behind the long-tail library's row WPG, which takes those that are bitmaps only.
        rows.push_back(&wpgDrawingCodec);
        return rows;
    }();
    static const CodecModule module{LUMORA_VERSION, codecs, encoders(), readMetadata, readFileTexts, warmUpCodecs};
    return &module;
}
