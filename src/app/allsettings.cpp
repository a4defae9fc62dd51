#include "app/allsettings.h"

#include "app/globals.h"
#include "app/settings.h"
#include "platform/registrystore.h"
#include "shell/frmPreferences.h"
#include "ui/background.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmMessage.h"

#include <QLoggingCategory>

#include <algorithm>
#include <string_view>

namespace {
Q_LOGGING_CATEGORY(settingsLog, "lumora.settings", QtWarningMsg)

/// A setting and the control that is its live value. `read` leaves the control as it is when the text cannot be read as
/// what it should be; without a `write` the control's own handler writes the key.
struct Setting
{
    const char *key;
    const char *fallback; ///< null: what the control holds
    void (*read)(int index, const QString &text);
    QString (*write)(int index);
    int first = 0;
    int last = 0;
    bool numbered = false; ///< the index stands behind the key
};

void loadBox(QCheckBox *box, const QString &text)
{
    box->setChecked(truth(text, box->isChecked()));
}

void loadMark(QAction *item, const QString &text)
{
    item->setChecked(truth(text, item->isChecked()));
}

template <auto Member> constexpr Setting box(const char *key, const char *fallback)
{
    return {key, fallback, [](int, const QString &text) { loadBox(form<frmPreferences>().*Member, text); },
        [](int) { return QString::number(int((form<frmPreferences>().*Member)->isChecked())); }};
}

template <auto Member> constexpr Setting boxes(const char *key, const char *fallback)
{
    using Boxes = std::remove_reference_t<decltype(std::declval<frmPreferences &>().*Member)>;
    return {key, fallback,
        [](int index, const QString &text) { loadBox((form<frmPreferences>().*Member)[index], text); },
        [](int index) { return QString::number(int((form<frmPreferences>().*Member)[index]->isChecked())); },
        Boxes::first, Boxes::last, true};
}

/// Boxes that write their own key when they change.
template <auto Member> constexpr Setting handledBox(const char *key, const char *fallback)
{
    Setting setting = box<Member>(key, fallback);
    setting.write = nullptr;
    return setting;
}

template <auto Member> constexpr Setting choice(const char *key, const char *fallback)
{
    return {key, fallback,
        [](int, const QString &text) {
            const auto &buttons = form<frmPreferences>().*Member;
            const std::optional<int> index = number(text);
            if (index && *index >= buttons.first && *index <= buttons.last)
                buttons[*index]->setChecked(true);
        },
        [](int) {
            const auto &buttons = form<frmPreferences>().*Member;
            for (int index = buttons.first; index <= buttons.last; ++index) {
                if (buttons[index]->isChecked())
                    return QString::number(index);
            }
            return QString(); // none chosen: nothing to write
        }};
}

template <auto Member> constexpr Setting mark(const char *key, const char *fallback)
{
    return {key, fallback, [](int, const QString &text) { loadMark(form<frmMainViewer>().*Member, text); },
        [](int) { return truthText((form<frmMainViewer>().*Member)->isChecked()); }};
}

constexpr Setting toolbarMarks(const char *key, const char *fallback, int index)
{
    return {key, fallback,
        [](int at, const QString &text) {
            loadMark(form<frmMainViewer>().mnuSlideShowToolbarButton[std::size_t(at)], text);
        },
        [](int at) { return truthText(form<frmMainViewer>().mnuSlideShowToolbarButton[std::size_t(at)]->isChecked()); },
        index, index, true};
}

template <auto Member> constexpr Setting quality(const char *key, const char *fallback)
{
    return {key, fallback,
        [](int, const QString &text) {
            // As typed, maybe with a fraction; the whole part counts.
            const double value = leadingNumber(text);
            if (value != 0 || number(text))
                (form<frmPreferences>().*Member)->setText(QString::number(int(std::clamp(value, 1.0, 100.0))));
        },
        [](int) { return (form<frmPreferences>().*Member)->text(); }};
}

template <auto Member> constexpr Setting global(const char *key, const char *fallback)
{
    return {key, fallback, [](int, const QString &text) { globals.*Member = number(text).value_or(globals.*Member); },
        [](int) { return QString::number(globals.*Member); }};
}

void loadColorMenu(int, const QString &text)
{
    globals.ColorMNU = number(text).value_or(globals.ColorMNU);
    ApplyColorMenu(globals.ColorMNU);
}

// 0 stands for the usual interval wherever it is used, so it is kept.
void loadInterval(int, const QString &text)
{
    const std::optional<int> seconds = number(text);
    if (seconds && *seconds >= 0 && *seconds <= 30)
        globals.SlideShowInterval = *seconds;
}

void loadBackColor(int, const QString &text)
{
    if (const std::optional<int> color = number(text))
        form<frmPreferences>().setThumbnailBackColor(colorFromNumber(*color));
}

void loadThumbnailSize(int, const QString &text)
{
    QSlider *slider = form<frmPreferences>().sldThumbNailSize;
    const std::optional<int> size = number(text);
    if (size && *size >= slider->minimum() && *size <= slider->maximum())
        slider->setValue(*size);
}

void loadFolder(int, const QString &text)
{
    form<frmPreferences>().txtImageFolder->setText(text);
}

QString folder(int)
{
    return form<frmPreferences>().txtImageFolder->text();
}

using Pref = frmPreferences;
using View = frmMainViewer;

// In the order of loading.
// clang-format off
constexpr Setting settings[] = {
    box<&Pref::chkStretch>("PrvStretch", "0"),
    boxes<&Pref::chkFileType>("IncludeFileType", "1"),
    boxes<&Pref::chkAVFileType>("IncludeAVFileType", "1"),
    boxes<&Pref::chkPolyFileType>("IncludePolyFileType", "1"),
    global<&Globals::ViewMode>("ViewMode", "0"),
    {"ColorMNU", "0", loadColorMenu, global<&Globals::ColorMNU>("", "").write},
    {"ThumbnailBackGroundColor", "0", loadBackColor, nullptr},
    {"ThumbnailCompressionLevel", "1", choice<&Pref::optThumbnailCompression>("", "").read, nullptr},
    {"ThumbnailSize", "100", loadThumbnailSize, nullptr},
    handledBox<&Pref::chkThumbNailStyle>("ThumbnailStyle", "1"),
    box<&Pref::chkCountFileTypes>("CountFileType", "1"),
    box<&Pref::chkCountFileSize>("CountFileSize", "1"),
    box<&Pref::chkCountFileColorDepth>("CountFileColorDepth", "1"),
    {"SlideShowInterval", "5", loadInterval, global<&Globals::SlideShowInterval>("", "").write},
    mark<&View::mnuOptionsMinimizeSystemTray>("SystemTrayIcon", "0"),
    mark<&View::mnuSlideShowLoopAround>("MediaShowLoop", "0"),
    toolbarMarks("MediaToolBar", "-1", 0),
    toolbarMarks("MediaToolBar", "0", 1),
    quality<&Pref::txtJPGQuality>("JPEGQuality", "100"),
    quality<&Pref::txtJPG2000Quality>("JPEG2000Quality", "100"),
    box<&Pref::chkJPGFastSaves>("JPEGFastSave", "0"),
    choice<&Pref::optPhotoCDSize>("PCDSize", "2"),
    choice<&Pref::optDefaultOpenFolder>("DefaultOpenFolder", "1"),
    {"UserChoiceOpenFolder", nullptr, loadFolder, folder},
    box<&Pref::chkDiffuseXPM>("DiffuseXPM", "0"),
    box<&Pref::chkDiffuseXBM>("DiffuseXBM", "0"),
    box<&Pref::chkDiffuseWBMP>("DiffuseWBMP", "0"),
    box<&Pref::chkDiffusePGM>("DiffusePGM", "0"),
    box<&Pref::chkDiffusePBM>("DiffusePBM", "0"),
    handledBox<&Pref::chkCacheThumbnails>("CacheThumbnails", "1"),
    handledBox<&Pref::chkOverWriteThumbnails>("OverWriteCacheThumbnails", "0"),
    mark<&View::mnuSlideshowDesktopStretched>("SlideshowDesktopStretched", "0"),
    mark<&View::mnuSlideshowDesktopCentered>("SlideshowDesktopCentered", "0"),
    mark<&View::mnuSlideShowViewerOnly>("SlideShowViewerOnly", "-1"),
    mark<&View::mnuSlideShowReverseOrder>("SlideShowReverse", "0"),
    mark<&View::mnuSlideShowForwardOrder>("SlideShowForward", "-1"),
    mark<&View::mnuSlideShowShuffleOrder>("SlideShowShuffle", "0"),
};

// Saving follows an order of its own. The fast saves are written twice; both times it is the same box.
constexpr std::string_view saveOrder[] = {
    "PrvStretch", "IncludeFileType", "IncludeAVFileType", "IncludePolyFileType", "ViewMode", "ColorMNU", "CountFileType",
    "CountFileSize", "CountFileColorDepth", "SlideShowInterval", "SystemTrayIcon", "SlideshowDesktopStretched",
    "SlideshowDesktopCentered", "SlideShowViewerOnly", "SlideShowReverse", "SlideShowForward", "SlideShowShuffle",
    "MediaShowLoop", "MediaToolBar", "JPEGQuality", "JPEG2000Quality", "JPEGFastSave", "PCDSize", "DefaultOpenFolder",
    "UserChoiceOpenFolder", "JPEGFastSave", "DiffuseXPM", "DiffuseXBM", "DiffuseWBMP", "DiffusePGM", "DiffusePBM",
};
// clang-format on

constexpr const char *firstStartKeys[] = {
    "MMPositionControls", "MMShowControls", "MMShowDisplay", "MMShowTracker", "MMStatusBar", "MMAudioControls"};

QByteArray keyOf(const Setting &setting, int index)
{
    return setting.numbered ? setting.key + QByteArray::number(index) : QByteArray(setting.key);
}

void load(const Setting &setting)
{
    for (int index = setting.first; index <= setting.last; ++index) {
        const QByteArray key = keyOf(setting, index);
        if (setting.fallback)
            setting.read(index, option(key.constData(), setting.fallback));
        else
            setting.read(index, option(key.constData(), qUtf8Printable(setting.write(index))));
    }
}

void save(const Setting &setting)
{
    for (int index = setting.first; index <= setting.last; ++index) {
        if (const QString value = setting.write(index); !value.isNull())
            saveOption(keyOf(setting, index).constData(), value);
    }
}

void saveInOrder()
{
    for (const std::string_view key : saveOrder) {
        for (const Setting &setting : settings) {
            if (setting.key == key)
                save(setting);
        }
    }
}
}

void LoadAllSettings()
{
    const ScopedFlag loading(form<frmPreferences>().LoadingSettings);
    for (const Setting &setting : settings)
        load(setting);
    const bool shuffles = form<frmMainViewer>().mnuSlideShowShuffleOrder->isChecked();
    form<frmMainViewer>().mnuSlideShowShuffleMediaFile->setEnabled(shuffles);
    form<frmMainViewer>().mnuSlideShowResetShuffleHistory->setEnabled(shuffles);
}

void SaveAllSettings()
{
    // Windows that never came up, or are just being filled, hold no settings: saving would put the defaults over what
    // the user chose.
    if (!isLoaded<frmPreferences>() || !isLoaded<frmMainViewer>() || form<frmPreferences>().LoadingSettings)
        return;
    const ScopedFlag saving(globals.SavingStandardList);
    if (const Result<void> saved = registryStore().transaction(saveInOrder); !saved)
        qCWarning(settingsLog) << "settings are not saved:" << saved.reason();
    // A store that cannot be written must not keep the list from being saved.
    form<frmMainViewer>().saveStandardList();
    unload<frmMessage>();
}

void writeFirstStartKeys()
{
    if (!option(firstStartKeys[0], "").isEmpty())
        return;
    const Result<void> saved = registryStore().transaction([] {
        for (const char *key : firstStartKeys)
            saveOption(key, QStringLiteral("1"));
    });
    if (!saved)
        qCWarning(settingsLog) << "the first start is not noted:" << saved.reason();
}
