#pragma once

#include "engine/encode.h"

#include <QString>
#include <QVector>

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <variant>

class PolyImage;

/// An output format. Its place in saveFormats() is its batch index: 0 to 22.
struct SaveFormat
{
    const char *batchLabel; ///< blanks at the end and spelling belong to it
    const char *extension; ///< with its dot, as batch conversion appends it
    const char *batchFolder; ///< with the separator at its end
    TypeCode typeCode;
    /// 1-based indices of the save dialog's filters that stand for it; 0 where there is none. What has no first one is
    /// for batch conversion only.
    std::array<int, 3> dialogIndices;
};
std::span<const SaveFormat> saveFormats();

inline constexpr int saveDialogFilterCount = 22;
/// The filters of the save dialog, one behind the other.
QString saveDialogFilter();

/// The controls that steer a save, read at the moment of the save.
struct SaveOptions
{
    bool jpegFastSaves = false;
    int jpegQuality = 100; ///< 1 to 100
    double jpeg2000Quality = 100; ///< 1 to 100
    bool diffusePBM = false;
    bool diffusePGM = false;
    bool diffuseWBMP = false;
    bool diffuseXBM = false;
    bool diffuseXPM = false;
    bool diffuseTwoColor = false; ///< of batch conversion, for all of them
};

/// The steps of a preparation.
namespace savestep {
/// Up to a depth, when the picture has less.
struct RaiseBits
{
    int bits;
    bool operator==(const RaiseBits &) const = default;
};
struct SetBits
{
    int bits;
    bool operator==(const SetBits &) const = default;
};
/// Below the depth raised to it, at it left alone, above it reduced to that many colours with diffusion.
struct DepthRule
{
    int bits;
    int colors;
    bool operator==(const DepthRule &) const = default;
};
struct ReduceColors
{
    int colors;
    int bits;
    bool diffuse;
    bool operator==(const ReduceColors &) const = default;
};
struct ReduceToBits
{
    int bits;
    bool diffuse;
    bool operator==(const ReduceToBits &) const = default;
};
/// The screen shows the picture as it is by now.
struct RefreshScreen
{
    bool operator==(const RefreshScreen &) const = default;
};
struct JpegOptions
{
    bool fastSave;
    int quality;
    bool operator==(const JpegOptions &) const = default;
};
struct Jpeg2000Option
{
    double quality; ///< 0.01 to 1.0
    bool operator==(const Jpeg2000Option &) const = default;
};
}
using SaveStep = std::variant<savestep::RaiseBits, savestep::SetBits, savestep::DepthRule, savestep::ReduceColors,
    savestep::ReduceToBits, savestep::RefreshScreen, savestep::JpegOptions, savestep::Jpeg2000Option>;

/// All that is done to write a picture: the steps before, and the arguments of the write.
struct SavePlan
{
    QVector<SaveStep> steps;
    TypeCode typeCode = TypeCode::Bmp;
    bool diffuse = false;
    bool operator==(const SavePlan &) const = default;
};

/// None for an index that stands for no format.
std::optional<SavePlan> mainViewerSavePlan(int dialogIndex, const SaveOptions &options);
std::optional<SavePlan> batchSavePlan(int batchIndex, const SaveOptions &options);
std::optional<SavePlan> editorSavePlan(int dialogIndex, const SaveOptions &options);

/// One step; false with the reason in PolyLastError.
bool takeStep(const SaveStep &step, PolyImage &image, const std::function<void()> &refreshScreen = {});
/// The steps before the write. Ends at the first that fails, with the reason in PolyLastError.
bool prepareForSave(const SavePlan &plan, PolyImage &image, const std::function<void()> &refreshScreen = {});
/// The whole of a plan. Nothing is written when the preparation fails.
bool saveByPlan(
    const SavePlan &plan, PolyImage &image, const QString &path, const std::function<void()> &refreshScreen = {});
