// The whole decode call: the last byte chooses the extension, so that what is found is the file with one byte behind it.

#include "engine/codec.h"
#include "fuzzed.h"

#include <vector>

extern "C" const CodecModule *lumoraCodecModule();

namespace {

std::vector<QByteArray> knownExtensions()
{
    std::vector<QByteArray> extensions{QByteArray()};
    const auto add = [&](const Codec *codec) {
        const QList<QByteArray> names = QByteArray(codec->extensions).split(' ');
        extensions.insert(extensions.end(), names.begin(), names.end());
    };
    for (const Codec *codec : codecTable())
        add(codec);
    for (const Codec *codec : lumoraCodecModule()->codecs)
        add(codec);
    return extensions;
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int begun = fuzzed::begin();
    ignore(begun);
    static const std::vector<QByteArray> extensions = knownExtensions();
    if (size < 1)
        return 0;
    const QByteArray &extension = extensions[data[size - 1] % extensions.size()];
    const EncodedFile file = fuzzed::fileOf(data, size - 1, extension.constData());
    ignore(probeHere(file));
    if (const Result<Picture> picture = decodeHere(file); picture)
        fuzzed::check(*picture);
    return 0;
}
