#include "engine/encode.h"

#include "engine/codec.h"
#include "platform/files.h"

#include <QCoreApplication>

#include <algorithm>
#include <exception>

Result<QByteArray> encode(const Picture &picture, TypeCode typeCode, const EncodeOptions &options)
{
    if (picture.isNull())
        return Failure{QCoreApplication::translate("Engine", "there is no picture to write")};
    if (picture.isReduced())
        return Failure{QCoreApplication::translate("Engine", "only a reduced picture is at hand")};
    const CodecModule *const module = codecModule();
    if (!module)
        return Failure{codecModuleFailure()};
    const auto known = std::find_if(module->encoders.begin(), module->encoders.end(),
        [&](const Encoder &encoder) { return encoder.typeCode == typeCode; });
    if (known == module->encoders.end())
        return Failure{QCoreApplication::translate("Engine", "no writer for the format %1").arg(int(typeCode))};
    // Nothing that a library throws may leave the engine.
    try {
        Result<QByteArray> bytes = known->encode(picture, options);
        if (bytes && bytes->isEmpty())
            return Failure{QLatin1String(known->codec) + QStringLiteral(" writer: gave nothing")};
        return bytes;
    } catch (const std::exception &problem) {
        return Failure{QLatin1String(known->codec) + QStringLiteral(" writer: ") + QLatin1String(problem.what())};
    } catch (...) {
        return Failure{QLatin1String(known->codec) + QStringLiteral(" writer: stopped by an unknown exception")};
    }
}

Result<void> encodeFile(const Picture &picture, const QString &path, TypeCode typeCode, const EncodeOptions &options)
{
    const Result<QByteArray> bytes = encode(picture, typeCode, options);
    if (!bytes)
        return bytes.failure();
    return writeFileAtomically(path, *bytes);
}
