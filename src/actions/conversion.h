#pragma once

#include "actions/saveformats.h"
#include "platform/messagebox.h"

#include <QString>
#include <QVector>

#include <bitset>
#include <functional>
#include <memory>
#include <optional>

class PolyImage;
class Gvbox;

// Batch conversion without a window: the rules of a run, the run itself, and the little that it asks of whoever started
// it. For each chosen format, for each entry of the list: load, operate, work out the target, write.

inline constexpr int conversionTypeCount = 23; ///< the rows of saveFormats()

/// What the controls say at one moment. A run asks for it afresh at each step that needs it.
struct ConversionOptions
{
    bool selectedOnly = false; ///< optWhichFiles(0)
    std::bitset<conversionTypeCount> types; ///< optFileType, by batch index
    bool useImageFolder = true; ///< each file's own folder is the base folder
    QString imageFolder; ///< the base folder otherwise, taken as it stands: nothing puts a separator behind it
    bool addConvertFolder = false;
    bool folderForEachType = false; ///< chkCovertFolderForEachType
    bool overwriteFiles = false;
    bool promptFirst = false;
    bool diffuseTwoColor = false;
    bool grayScale = false;
    bool grayScale256 = false;
    bool autoLevel = false;
    bool autoContrast = false;
    bool emboss = false;
    int photoCDSize = -1; ///< the button of optPhotoCDSize that is on; -1: none, and a Photo CD is then not loaded
    SaveOptions save; ///< of frmPreferences; its diffuseTwoColor is set by the run
    /// What an entry leaves behind is what the next one begins with: the picture, when the next cannot be loaded, and
    /// the diffuse flag, which is off at the first entry. False: an entry that cannot be loaded, or that a step fails
    /// for, is not written, and the flag goes by diffuseTwoColor from the first entry on.
    bool carryOver = true;
};

// --- rules

/// Which control reads an entry. PhotoCD and Poly are read by `polImageBox1`, Picture by `Gvbox2`, which passes it on.
enum class ConversionLoad { None, Picture, PhotoCD, Poly };
/// By the entry's kind; None for audio and video. A Poly path with ".PCD" anywhere in it is a Photo CD.
ConversionLoad conversionLoad(const QString &path);
/// Which size of a Photo CD is loaded; all other files take no notice of it.
int conversionSizeIndex(ConversionLoad how, const ConversionOptions &options);

/// The operations in the order in which they are done.
enum class ConversionOperation { AutoContrast, AutoLevel, GrayScale, Colors256, Emboss };
struct ConversionStep
{
    ConversionOperation operation;
    bool diffuse = false; ///< of Colors256
    bool operator==(const ConversionStep &) const = default;
};
/// `diffuse` is the flag as the entry before left it: false at the first entry of a run, however the box stands.
QVector<ConversionStep> conversionSteps(const ConversionOptions &options, bool diffuse);
/// " - Apply Auto Contrast" ...: stands behind the title of the progress window while the operation runs.
QString operationTitle(ConversionOperation operation);
/// One operation on the held picture; a failure leaves it as it was.
bool operate(const ConversionStep &step, PolyImage &image);

/// Where an entry goes in one format. The folders are made, in this order, when FileExists says that they hold no file;
/// each is empty when the options want none. That a folder cannot be made changes nothing else.
struct ConversionTarget
{
    QString convertFolder;
    QString typeFolder;
    QString path;
    bool operator==(const ConversionTarget &) const = default;
};
ConversionTarget conversionTarget(const QString &entry, int batchIndex, const ConversionOptions &options);

/// Whole percents of done / (entries x types), ties to even, at most 100.
int conversionPercent(qint64 done, int entries, int types);

/// "The file ... already exists. Do you want to overwrite this file?"
MessageBox overwriteBox(const QString &fileName);
/// Whether an existing file may be overwritten; `ask` shows a box and is called only when the options want it and the
/// file exists.
bool OverWriteInConvert(const QString &fileName, const ConversionOptions &options,
    const std::function<MessageBox::Answer(const MessageBox &)> &ask);

// --- the run

/// What became of one entry in one format.
struct ConversionOutcome
{
    enum What {
        Written,
        LeftAlone, ///< the target exists and is not to be overwritten
        NotWritten ///< see `reason`
    };
    QString entry;
    QString target;
    What what = Written;
    bool loaded = true; ///< false: the entry could not be read, and what the control held before was written
    bool damaged = false; ///< only a part of the entry could be read, the rest is blank
    QString reason; ///< of a failed load, step or write; for logs and developers
};

/// Whoever starts a run: a window, a command line, a test. Everything but wake() is called on the thread of the run.
class ConversionClient
{
public:
    virtual ~ConversionClient();

    virtual ConversionOptions options() const = 0;
    virtual int entryCount() const = 0;
    /// Empty for an entry that is not there any more.
    virtual QString entry(int index) const = 0;
    virtual bool isSelected(int index) const = 0;

    /// The named places at which events come in; they do so until `ready` is true, where there is one. This one only
    /// waits for that, and looks several times a second: all that a program without windows needs.
    virtual void letEventsIn(const std::function<bool()> &ready);
    /// Called from any thread when `ready` may have become true.
    virtual void wake();

    virtual bool cancelled() const = 0;
    virtual void clearCancel() = 0;
    /// False when the program ends or what shows the run has gone: the run then ends after its next yield.
    virtual bool goesOn() const { return true; }

    virtual MessageBox::Answer ask(const MessageBox &box) = 0;
    virtual void showPercent(int percent) = 0;
    virtual void showFiles(const QString &from, const QString &to) = 0;
    /// Text of operationTitle() while an operation runs, empty behind it.
    virtual void showOperation(const QString &text) = 0;
    /// In the order of the run; a written file is told of when it stands, which may be some entries later.
    virtual void finished(const ConversionOutcome &outcome) { Q_UNUSED(outcome) }

protected:
    ConversionClient();

private:
    struct Waiting;
    const std::unique_ptr<Waiting> m_waiting;
};

enum class LookAhead {
    None, ///< one entry after the other, each step when it is due
    /// Coming entries are read, operated and encoded on all cores, files are written behind. What stands on the disk,
    /// what is asked and when a cancel takes effect are those of a run without it.
    AllCores
};

/// The whole run. `image` and `gvbox` are what the run begins with and hold what it has loaded last when it is over; a
/// file that cannot be loaded leaves there what was there. Never throws, never stops for a failure.
void runConversion(ConversionClient &client, PolyImage &image, Gvbox &gvbox, LookAhead lookAhead);
