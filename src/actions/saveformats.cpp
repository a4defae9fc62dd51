#include "actions/saveformats.h"

#include "engine/polyimage.h"

#include <QCoreApplication>

#include <algorithm>

using namespace savestep;

namespace {

// clang-format off
constexpr SaveFormat formats[] = {
    // label, extension, folder, type code, dialog indices
    {QT_TRANSLATE_NOOP("SaveFormats", "(.BMP) Microsoft WIndows Bitmap"), ".bmp", "BMP/", TypeCode::Bmp, {1, 2, 3}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.DCX) DCX Format "), ".dcx", "DCX/", TypeCode::Dcx, {6, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.IFF) Commodore-Amiga IFF Format "), ".iff", "IFF/", TypeCode::Iff, {7, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.JP2) - Joint Photographics Experts Group 2000"), ".jp2", "JP2/", TypeCode::Jpeg2000, {5, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.JPG) - Joint Photographics Experts Group"), ".jpg", "JPG/", TypeCode::Jpeg, {4, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.MBM) Psion MultiBitMap Compressed Format "), ".mbm", "MBM_Comp/", TypeCode::MbmCompressed, {8, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.MBM) Psion MultiBitMap UnCompressed Format"), ".mbm", "MBM/", TypeCode::Mbm, {9, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PBM) PBM Format "), ".pbm", "PBM/", TypeCode::Pbm, {10, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PCX) PCX Format "), ".pcx", "PCX/", TypeCode::Pcx, {11, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PGM) PGM Format "), ".pgm", "PGM/", TypeCode::Pgm, {12, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PNG) PNG Format "), ".png", "PNG/", TypeCode::Png, {13, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PNG) PNG Format  - Interlaced"), ".png", "PNG_Inter/", TypeCode::PngInterlaced, {0, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PPM) PPM Format "), ".ppm", "PPM/", TypeCode::Ppm, {14, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.PSD) Adobe Photoshop "), ".psd", "PSD/", TypeCode::Psd, {15, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.RGB) SGI Format "), ".rgb", "RGB/", TypeCode::Sgi, {16, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.TGA) TGA UnCompressed Format "), ".tga", "TGA/", TypeCode::Tga, {17, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.TGA) TGA Compressed Format "), ".tga", "TGA_Comp/", TypeCode::TgaCompressed, {0, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.TIF) TIFF UnCompressed Format "), ".tif", "TIF/", TypeCode::Tiff, {18, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.TIF) TIFF Format - JPEG Compression"), ".tif", "TIF_JPEG/", TypeCode::TiffJpeg, {0, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.WBMP) WAP WBMP "), ".wbmp", "WBMP/", TypeCode::Wbmp, {19, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.XBM) XBM Format "), ".xbm", "XBM/", TypeCode::Xbm, {20, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.XPM) XPM Format "), ".xpm", "XPM/", TypeCode::Xpm, {21, 0, 0}},
    {QT_TRANSLATE_NOOP("SaveFormats", "(.XWD) XWD Format "), ".xwd", "XWD/", TypeCode::Xwd, {22, 0, 0}},
};
// clang-format on

// The visible text of XPM has its letters in another order than its pattern, and keeps them so.
constexpr const char *filters[saveDialogFilterCount] = {
    QT_TRANSLATE_NOOP("SaveFormats", "Bitmap Files (*.BMP)|*.BMP|"),
    QT_TRANSLATE_NOOP("SaveFormats", "Bitmap Files 256 Colors (*.BMP)|*.BMP|"),
    QT_TRANSLATE_NOOP("SaveFormats", "Bitmap Files 16 Colors (*.BMP)|*.BMP|"),
    QT_TRANSLATE_NOOP("SaveFormats", "JPEG Format (*.JPG)|*.JPG|"),
    QT_TRANSLATE_NOOP("SaveFormats", "JPEG 2000 Format (*.JP2)|*.JP2|"),
    QT_TRANSLATE_NOOP("SaveFormats", "DCX Format (*.DCX)|*.DCX|"),
    QT_TRANSLATE_NOOP("SaveFormats", "Commodore-Amiga IFF Format (*.IFF)|*.IFF|"),
    QT_TRANSLATE_NOOP("SaveFormats", "Psion MultiBitMap Compressed Format (*.MBM)|*.MBM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "Psion MultiBitMap UnCompressed Format (*.MBM)|*.MBM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "PBM Format (*.PBM)|*.PBM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "PCX Format (*.PCX)|*.PCX|"),
    QT_TRANSLATE_NOOP("SaveFormats", "PGM Format (*.PGM)|*.PGM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "PNG Format (*.PNG)|*.PNG|"),
    QT_TRANSLATE_NOOP("SaveFormats", "PPM Format (*.PPM)|*.PPM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "Adobe Photoshop (*.PSD)|*.PSD|"),
    QT_TRANSLATE_NOOP("SaveFormats", "SGI Format (*.RGB)|*.RGB|"),
    QT_TRANSLATE_NOOP("SaveFormats", "TGA UnCompressed Format (*.TGA)|*.TGA|"),
    QT_TRANSLATE_NOOP("SaveFormats", "TIFF UnCompressed Format (*.TIF)|*.TIF|"),
    QT_TRANSLATE_NOOP("SaveFormats", "WAP WBMP (*.WBMP)|*.WBMP|"),
    QT_TRANSLATE_NOOP("SaveFormats", "XBM Format (*.XBM)|*.XBM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "XPM Format (*.XMP)|*.XPM|"),
    QT_TRANSLATE_NOOP("SaveFormats", "XWD Format (*.XWD)|*.XWD|"),
};

constexpr int bitmap24 = 1;
constexpr int bitmap256 = 2;
constexpr int bitmap16 = 3;

const SaveFormat *formatOfDialog(int dialogIndex)
{
    if (dialogIndex < 1)
        return nullptr;
    const auto *const found = std::find_if(std::begin(formats), std::end(formats),
        [&](const SaveFormat &format) { return std::ranges::count(format.dialogIndices, dialogIndex) > 0; });
    return found == std::end(formats) ? nullptr : found;
}

/// What all three writers do alike.
QVector<SaveStep> qualitySteps(TypeCode typeCode, const SaveOptions &options)
{
    if (typeCode == TypeCode::Jpeg)
        return {JpegOptions{options.jpegFastSaves, options.jpegQuality}};
    if (typeCode == TypeCode::Jpeg2000)
        return {Jpeg2000Option{options.jpeg2000Quality / 100.0}};
    return {};
}

/// The three bitmaps of the dialog. The editor shows what becomes of 16 colours on the way.
QVector<SaveStep> bitmapSteps(int dialogIndex, bool refreshes)
{
    switch (dialogIndex) {
    case bitmap24:
        return {RaiseBits{24}};
    case bitmap256:
        return {DepthRule{8, 256}};
    case bitmap16:
        if (refreshes)
            return {ReduceToBits{4, true}, RefreshScreen{}, DepthRule{4, 16}};
        return {ReduceToBits{4, true}, DepthRule{4, 16}};
    default:
        return {};
    }
}

QVector<SaveStep> blackAndWhiteSteps(bool diffuse)
{
    return {ReduceColors{2, 1, diffuse}, SetBits{1}};
}

/// The box of frmPreferences that belongs to a format of few colours.
std::optional<bool> diffuseBox(TypeCode typeCode, const SaveOptions &options)
{
    switch (typeCode) {
    case TypeCode::Pbm:
        return options.diffusePBM;
    case TypeCode::Pgm:
        return options.diffusePGM;
    case TypeCode::Wbmp:
        return options.diffuseWBMP;
    case TypeCode::Xbm:
        return options.diffuseXBM;
    case TypeCode::Xpm:
        return options.diffuseXPM;
    default:
        return std::nullopt;
    }
}

struct StepRunner
{
    PolyImage &image;
    const std::function<void()> &refreshScreen;

    bool operator()(const RaiseBits &step) const
    {
        return image.PolyBitsPerPixel() >= step.bits || image.PolySetBitsPerPixel(step.bits);
    }
    bool operator()(const SetBits &step) const { return image.PolySetBitsPerPixel(step.bits); }
    bool operator()(const DepthRule &step) const
    {
        const int bits = image.PolyBitsPerPixel();
        if (bits < step.bits)
            return image.PolySetBitsPerPixel(step.bits);
        return bits == step.bits || image.PolyReduceColors(step.colors, step.bits, true);
    }
    bool operator()(const ReduceColors &step) const
    {
        return image.PolyReduceColors(step.colors, step.bits, step.diffuse);
    }
    bool operator()(const ReduceToBits &step) const { return image.PolyReduceToBits(step.bits, step.diffuse); }
    bool operator()(const RefreshScreen &) const
    {
        if (refreshScreen)
            refreshScreen();
        return true;
    }
    bool operator()(const JpegOptions &step) const
    {
        image.setPolyJpegFastSave(step.fastSave);
        image.setPolyJpegQuality(step.quality);
        return true;
    }
    bool operator()(const Jpeg2000Option &step) const
    {
        image.setPolyJp2Quality(step.quality);
        return true;
    }
};

}

std::span<const SaveFormat> saveFormats()
{
    return formats;
}

QString saveDialogFilter()
{
    QString filter;
    for (const char *entry : filters)
        filter += QCoreApplication::translate("SaveFormats", entry);
    return filter;
}

std::optional<SavePlan> mainViewerSavePlan(int dialogIndex, const SaveOptions &options)
{
    const SaveFormat *const format = formatOfDialog(dialogIndex);
    if (!format)
        return std::nullopt;
    // Of the five diffuse boxes only those of PBM and PGM count here: their writers reduce, the others' never diffuse.
    const bool counts = format->typeCode == TypeCode::Pbm || format->typeCode == TypeCode::Pgm;
    const bool diffuse = counts && diffuseBox(format->typeCode, options).value_or(false);
    return SavePlan{
        bitmapSteps(dialogIndex, false) + qualitySteps(format->typeCode, options), format->typeCode, diffuse};
}

std::optional<SavePlan> batchSavePlan(int batchIndex, const SaveOptions &options)
{
    if (batchIndex < 0 || batchIndex >= int(std::size(formats)))
        return std::nullopt;
    SavePlan plan;
    plan.typeCode = formats[batchIndex].typeCode;
    plan.steps = qualitySteps(plan.typeCode, options);
    if (plan.typeCode == TypeCode::Pgm)
        plan.steps = {ReduceColors{256, 8, options.diffuseTwoColor}, SetBits{8}};
    else if (diffuseBox(plan.typeCode, options))
        plan.steps = blackAndWhiteSteps(options.diffuseTwoColor);
    return plan;
}

std::optional<SavePlan> editorSavePlan(int dialogIndex, const SaveOptions &options)
{
    const SaveFormat *const format = formatOfDialog(dialogIndex);
    if (!format)
        return std::nullopt;
    SavePlan plan;
    plan.typeCode = format->typeCode;
    plan.steps = bitmapSteps(dialogIndex, true) + qualitySteps(plan.typeCode, options);
    // PGM too ends in black and white here.
    if (const std::optional<bool> diffuse = diffuseBox(plan.typeCode, options))
        plan.steps = blackAndWhiteSteps(*diffuse);
    return plan;
}

bool takeStep(const SaveStep &step, PolyImage &image, const std::function<void()> &refreshScreen)
{
    return std::visit(StepRunner{image, refreshScreen}, step);
}

bool prepareForSave(const SavePlan &plan, PolyImage &image, const std::function<void()> &refreshScreen)
{
    return std::all_of(plan.steps.begin(), plan.steps.end(),
        [&](const SaveStep &step) { return takeStep(step, image, refreshScreen); });
}

bool saveByPlan(const SavePlan &plan, PolyImage &image, const QString &path, const std::function<void()> &refreshScreen)
{
    return prepareForSave(plan, image, refreshScreen) && image.PolySave(path, plan.typeCode, plan.diffuse);
}
