#include "app/allsettings.h"

#include "app/globals.h"
#include "app/settings.h"
#include "platform/registrystore.h"
#include "shell/frmPreferences.h"
#include "ui/background.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmMessage.h"

#include <algorithm>
#include <cstring>

namespace {

frmPreferences &preferences()
{
    return form<frmPreferences>();
}

frmMainViewer &viewer()
{
    return form<frmMainViewer>();
}

/// One key, bound to what holds its live value. Arrays append their index to the key.
struct Row {
    const char *key;
    const char *fallback;
    QString (*live)(int index);
    /// Takes a stored text; leaves the live value alone when the text is not what it should be.
    void (*take)(const QString &text, int index);
    int first = -1;
    int last = -1;
};

/// 0, 1, -1, "True" and "False", as the different writers have left them.
std::optional<bool> storedTruth(const QString &text)
{
    if (const auto value = number(text))
        return *value != 0;
    if (text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    return {};
}

QString boxText(const QAbstractButton *box)
{
    return box->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
}

void takeTruth(QAbstractButton *box, const QString &text)
{
    if (const auto on = storedTruth(text))
        box->setChecked(*on);
}

void takeTruth(QAction *item, const QString &text)
{
    if (const auto on = storedTruth(text))
        item->setChecked(*on);
}

void takeNumber(int &value, const QString &text, int lowest, int highest)
{
    const auto stored = number(text);
    if (stored && *stored >= lowest && *stored <= highest)
        value = *stored;
}

template<class Options>
QString chosenIndex(const Options &options)
{
    for (int i = Options::first; i <= Options::last; ++i) {
        if (options[i]->isChecked())
            return QString::number(i);
    }
    return {};
}

template<class Options>
void choose(const Options &options, const QString &text)
{
    const auto index = number(text);
    if (index && *index >= Options::first && *index <= Options::last)
        options[*index]->setChecked(true);
}

void takeQuality(QLineEdit *box, const QString &text)
{
    const auto quality = number(text);
    if (quality && *quality >= 1 && *quality <= 100)
        box->setText(QString::number(*quality));
}

#define BOX(control)                                                                                                                   \
    [](int) { return boxText(preferences().control); }, [](const QString &text, int) { takeTruth(preferences().control, text); }
#define BOXES(control)                                                                                                                 \
    [](int i) { return boxText(preferences().control[i]); }, [](const QString &text, int i) { takeTruth(preferences().control[i], text); }
#define MARK(item)                                                                                                                     \
    [](int) { return truthText(viewer().item->isChecked()); }, [](const QString &text, int) { takeTruth(viewer().item, text); }
#define CHOICE(control)                                                                                                                \
    [](int) { return chosenIndex(preferences().control); }, [](const QString &text, int) { choose(preferences().control, text); }
#define QUALITY(control)                                                                                                               \
    [](int) { return preferences().control->text(); }, [](const QString &text, int) { takeQuality(preferences().control, text); }
#define NUMBER(value, lowest, highest)                                                                                                 \
    [](int) { return QString::number(globals.value); },                                                                                \
        [](const QString &text, int) { takeNumber(globals.value, text, lowest, highest); }

void takeThumbnailSize(const QString &text, int)
{
    const auto size = number(text);
    if (size && *size >= 60 && *size <= 200)
        preferences().sldThumbNailSize->setValue(*size);
}

/// Colours are one number with red in the low byte.
void takeThumbnailColor(const QString &text, int)
{
    if (const auto color = number(text))
        preferences().setThumbnailBackColor(QColor(*color & 255, *color >> 8 & 255, *color >> 16 & 255));
}

// clang-format off
const Row rows[] = {
    {"PrvStretch", "0", BOX(chkStretch)},
    {"IncludeFileType", "1", BOXES(chkFileType), 1, 29},
    {"IncludeAVFileType", "1", BOXES(chkAVFileType), 0, 9},
    {"IncludePolyFileType", "1", BOXES(chkPolyFileType), 1, 21},
    {"ViewMode", "0", NUMBER(ViewMode, 0, 32767)},
    {"ColorMNU", "0", NUMBER(ColorMNU, 0, 32767)},
    {"ThumbnailBackGroundColor", "0", nullptr, takeThumbnailColor},
    {"ThumbnailCompressionLevel", "1", CHOICE(optThumbnailCompression)},
    {"ThumbnailSize", "100", nullptr, takeThumbnailSize},
    {"ThumbnailStyle", "1", BOX(chkThumbNailStyle)},
    {"CountFileType", "1", BOX(chkCountFileTypes)},
    {"CountFileSize", "1", BOX(chkCountFileSize)},
    {"CountFileColorDepth", "1", BOX(chkCountFileColorDepth)},
    {"SlideShowInterval", "5", NUMBER(SlideShowInterval, 0, 30)},
    {"SystemTrayIcon", "0", MARK(mnuOptionsMinimizeSystemTray)},
    {"MediaShowLoop", "0", MARK(mnuSlideShowLoopAround)},
    {"MediaToolBar0", "-1", MARK(mnuSlideShowToolbarButton[0])},
    {"MediaToolBar1", "0", MARK(mnuSlideShowToolbarButton[1])},
    {"JPEGQuality", "100", QUALITY(txtJPGQuality)},
    {"JPEG2000Quality", "100", QUALITY(txtJPG2000Quality)},
    {"JPEGFastSave", "0", BOX(chkJPGFastSaves)},
    {"PCDSize", "2", CHOICE(optPhotoCDSize)},
    {"DefaultOpenFolder", "1", CHOICE(optDefaultOpenFolder)},
    {"UserChoiceOpenFolder", nullptr,
     [](int) { return preferences().txtImageFolder->text(); },
     [](const QString &text, int) { preferences().txtImageFolder->setText(text); }},
    {"DiffuseXPM", "0", BOX(chkDiffuseXPM)},
    {"DiffuseXBM", "0", BOX(chkDiffuseXBM)},
    {"DiffuseWBMP", "0", BOX(chkDiffuseWBMP)},
    {"DiffusePGM", "0", BOX(chkDiffusePGM)},
    {"DiffusePBM", "0", BOX(chkDiffusePBM)},
    {"CacheThumbnails", "1", BOX(chkCacheThumbnails)},
    {"OverWriteCacheThumbnails", "0", BOX(chkOverWriteThumbnails)},
    {"SlideshowDesktopStretched", "0", MARK(mnuSlideshowDesktopStretched)},
    {"SlideshowDesktopCentered", "0", MARK(mnuSlideshowDesktopCentered)},
    {"SlideShowViewerOnly", "-1", MARK(mnuSlideShowViewerOnly)},
    {"SlideShowReverse", "0", MARK(mnuSlideShowReverseOrder)},
    {"SlideShowForward", "-1", MARK(mnuSlideShowForwardOrder)},
    {"SlideShowShuffle", "0", MARK(mnuSlideShowShuffleOrder)},
};

/// What a save writes, in its order. The keys of the Thumbnails page are not among them: their handlers write them.
constexpr const char *saveOrder[] = {
    "PrvStretch", "IncludeFileType", "IncludeAVFileType", "IncludePolyFileType", "ViewMode", "ColorMNU",
    "CountFileType", "CountFileSize", "CountFileColorDepth", "SlideShowInterval", "SystemTrayIcon",
    "SlideshowDesktopStretched", "SlideshowDesktopCentered", "SlideShowViewerOnly",
    "SlideShowReverse", "SlideShowForward", "SlideShowShuffle",
    "MediaShowLoop", "MediaToolBar0", "MediaToolBar1", "JPEGQuality", "JPEG2000Quality", "JPEGFastSave",
    "PCDSize", "DefaultOpenFolder", "UserChoiceOpenFolder", "JPEGFastSave",
    "DiffuseXPM", "DiffuseXBM", "DiffuseWBMP", "DiffusePGM", "DiffusePBM",
};
// clang-format on

const Row &rowOf(const char *key)
{
    return *std::find_if(std::begin(rows), std::end(rows), [key](const Row &row) { return std::strcmp(row.key, key) == 0; });
}

template<class Visit>
void forEachKey(const Row &row, Visit visit)
{
    const QByteArray key(row.key);
    if (row.first < 0)
        return visit(key, 0);
    for (int i = row.first; i <= row.last; ++i)
        visit(key + QByteArray::number(i), i);
}

}

void LoadAllSettings()
{
    for (const Row &row : rows) {
        forEachKey(row, [&row](const QByteArray &key, int index) {
            const QByteArray fallback = row.fallback ? QByteArray(row.fallback) : row.live(index).toUtf8();
            row.take(option(key.constData(), fallback.constData()), index);
        });
    }
    ApplyColorMenu(globals.ColorMNU);
    viewer().mnuSlideShowShuffleMediaFile->setEnabled(viewer().mnuSlideShowShuffleOrder->isChecked());
    viewer().mnuSlideShowResetShuffleHistory->setEnabled(viewer().mnuSlideShowShuffleOrder->isChecked());
}

void SaveAllSettings()
{
    const ScopedFlag saving(globals.SavingStandardList);
    const auto writeKeys = [] {
        for (const char *name : saveOrder) {
            const Row &row = rowOf(name);
            forEachKey(row, [&row](const QByteArray &key, int index) {
                const QString value = row.live(index);
                // No button of a group is chosen only when a page was never completed: nothing to say then.
                if (!value.isNull())
                    saveOption(key.constData(), value);
            });
        }
    };
    // A store that cannot be written must not keep the list from being saved.
    ignore(registryStore().transaction(writeKeys));
    viewer().saveStandardList();
    unload<frmMessage>();
}

void writeFirstStartKeys()
{
    static constexpr const char *keys[]
        = {"MMPositionControls", "MMShowControls", "MMShowDisplay", "MMShowTracker", "MMStatusBar", "MMAudioControls"};
    if (!option(keys[0], "").isEmpty())
        return;
    ignore(registryStore().transaction([] {
        for (const char *key : keys)
            saveOption(key, QStringLiteral("1"));
    }));
}
