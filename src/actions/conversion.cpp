#include "actions/conversion.h"

#include "app/mediatypes.h"
#include "engine/polyimage.h"
#include "engine/rounding.h"
#include "platform/filepath.h"
#include "platform/files.h"

#include <QCoreApplication>

#include <array>

namespace {

/// The share of pixels at each end of the scale that the automatic operations may lose.
constexpr double clipFraction = 0.005;
constexpr QLatin1String convertFolderName("convert/");

struct OperationRow
{
    ConversionOperation operation;
    bool ConversionOptions::*wanted;
    const char *title;
};

// In the order in which they are done.
// clang-format off
constexpr std::array<OperationRow, 5> operations{{
    {ConversionOperation::AutoContrast, &ConversionOptions::autoContrast, QT_TRANSLATE_NOOP("Conversion", " - Apply Auto Contrast")},
    {ConversionOperation::AutoLevel, &ConversionOptions::autoLevel, QT_TRANSLATE_NOOP("Conversion", " - Apply Auto Level")},
    {ConversionOperation::GrayScale, &ConversionOptions::grayScale, QT_TRANSLATE_NOOP("Conversion", " - Apply Gray Scale")},
    {ConversionOperation::Colors256, &ConversionOptions::grayScale256, QT_TRANSLATE_NOOP("Conversion", " - Apply Change to 256 Colors")},
    {ConversionOperation::Emboss, &ConversionOptions::emboss, QT_TRANSLATE_NOOP("Conversion", " - Apply Emboss")},
}};
// clang-format on

}

ConversionLoad conversionLoad(const QString &path)
{
    const QLatin1String kind = GetMediaKind(path);
    if (kind == kindMotion)
        return ConversionLoad::None;
    if (kind == kindPicture)
        return ConversionLoad::Picture;
    return usesPhotoCDSize(path) ? ConversionLoad::PhotoCD : ConversionLoad::Poly;
}

int conversionSizeIndex(ConversionLoad how, const ConversionOptions &options)
{
    constexpr int ownChoice = -1;
    switch (how) {
    case ConversionLoad::PhotoCD:
        return options.photoCDSize;
    case ConversionLoad::Poly:
        return 0;
    default:
        return ownChoice;
    }
}

QVector<ConversionStep> conversionSteps(const ConversionOptions &options, bool diffuse)
{
    QVector<ConversionStep> steps;
    for (const OperationRow &row : operations) {
        if (options.*row.wanted)
            steps.append({row.operation, row.operation == ConversionOperation::Colors256 && diffuse});
    }
    return steps;
}

QString operationTitle(ConversionOperation operation)
{
    return QCoreApplication::translate("Conversion", operations[std::size_t(operation)].title);
}

bool operate(const ConversionStep &step, PolyImage &image)
{
    switch (step.operation) {
    case ConversionOperation::AutoContrast:
        return image.PolyAutoContrast(clipFraction);
    case ConversionOperation::AutoLevel:
        return image.PolyAutoLevel(clipFraction);
    case ConversionOperation::GrayScale:
        return image.PolyGrayScale();
    case ConversionOperation::Colors256:
        return image.PolyReduceColors(256, 8, step.diffuse);
    case ConversionOperation::Emboss:
        return image.PolyEmboss();
    }
    return false;
}

ConversionTarget conversionTarget(const QString &entry, int batchIndex, const ConversionOptions &options)
{
    const PathParts parts = SplitFilePath(entry);
    const SaveFormat &format = saveFormats()[std::size_t(batchIndex)];
    const QString name = parts.file.section(QLatin1Char('.'), 0, 0);
    QString folder = options.useImageFolder ? parts.drive + parts.folder : options.imageFolder;
    ConversionTarget target;
    // The folder that is looked for and made is the one as it stands; what is written goes by the trimmed one.
    if (options.addConvertFolder) {
        target.convertFolder = folder + convertFolderName;
        folder = folder.trimmed() + convertFolderName;
    }
    if (options.folderForEachType) {
        target.typeFolder = folder + QLatin1String(format.batchFolder);
        folder = target.typeFolder;
    }
    target.path = (folder + name + QLatin1String(format.extension)).trimmed();
    return target;
}

int conversionPercent(qint64 done, int entries, int types)
{
    const qint64 all = qint64(entries) * types;
    return all <= 0 ? 100 : qMin(100, roundToInt(100.0 * double(done) / double(all)));
}

MessageBox overwriteBox(const QString &fileName)
{
    MessageBox box;
    box.title = QCoreApplication::translate("Conversion", "Overwrite file?");
    box.text = QCoreApplication::translate("Conversion", "The file ") + displayPath(fileName)
        + QCoreApplication::translate("Conversion", " already exists. Do you want to overwrite this file?");
    box.icon = MessageBox::Icon::Question;
    box.buttons = MessageBox::Buttons::YesNo;
    box.defaultAnswer = MessageBox::Answer::No;
    return box;
}

bool OverWriteInConvert(const QString &fileName, const ConversionOptions &options,
    const std::function<MessageBox::Answer(const MessageBox &)> &ask)
{
    if (!options.overwriteFiles)
        return false;
    if (!options.promptFirst || !FileExists(fileName))
        return true;
    return ask(overwriteBox(fileName)) == MessageBox::Answer::Yes;
}
