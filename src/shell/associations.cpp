#include "shell/associations.h"

#include "app/mediatypes.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {
using Action = AssociationWrite::Action;

// Codes of one width stand packed behind each other.
struct CodeList
{
    std::size_t width;
    std::string_view codes;
    std::size_t count() const { return codes.size() / width; }
    QString code(std::size_t at) const
    {
        const std::string_view text = codes.substr(at * width, width);
        return QString::fromLatin1(text.data(), qsizetype(text.size()));
    }
};

// clang-format off
// In the order of the program file's icons, behind the two of the program itself. JPE comes last, with JPG's icon.
constexpr CodeList classLists[] = {
    {3, "ARTASFASXAVIBMPCRWCURCUTDCRDCXDIBEMFFPXGEMGIFLSLHRZICOIFFIMGJP2JPGLBMMACMBMMIDMP2MP3MPGMRWMSPNEFORFPBMPCDPCXPGM"
        "PICPMPPNGPNMPPMPSDPSPRAFRASRGBRLESFWTGATHMTIFWAVWMAWMFWMVWPGXBMXPMXWD"},
    {4, "JPEGMPEGTIFFWBMP"},
    {3, "JPE"},
};
constexpr int firstTypeIcon = 2;

/// A list whose box is the position in it, from 1, and `boxOffset`.
struct AppliedList
{
    CodeList list;
    int boxOffset;
};
constexpr AppliedList appliedLists[] = {
    {{3, "ARTBMPCURCUTDIBEMFGEMGIFHRZICOIFFIMGJPGJPELBMMACMSPPBMPCXPGMPICPNGPNMPPMRASRLETGATIFWMFWPG"
         "ASFASXWMAWMVAVIWAVMPGMP2MP3MIDDCXMBMPCDPSDPSPSFWRGBXBMXPMXWDLSL"}, 0},
    {{3, "CRWDCRFPXJP2MRWNEFORFRAFPMPTHM"}, 51},
    {{4, "WBMPTIFFJPEGMPEG"}, 50},
};

// What the boxes show, one behind the other: 60 codes for the 60 boxes that there are. JPE and the list file are not
// among them, so from DCX on a box shows another type than it decides.
constexpr CodeList shownLists[] = {
    {3, "ARTBMPCURCUTDIBEMFGEMGIFHRZICOIFFIMGJPGLBMMACMSPPBMPCXPGMPICPNGPNMPPMRASRLETGATIFWMFWPG"
        "ASFASXWMAWMVAVIWAVMPGMP2MP3MIDDCXMBMPCDPSDPSPSFWRGBXBMXPMXWD"},
    {4, "WBMP"},
    {3, "CRWDCRFPXJP2MRWNEFORFRAFPMPTHM"},
};
// clang-format on

constexpr const char *extraCaptions[] = {".XWD", ".DCX", ".MBM", ".PCD", ".PSD", ".PSP", ".SFW", ".RGB", ".XBM", ".XPM",
    "", ".WBMP", ".CRW", ".DCR", ".FPX", ".JP2", ".MRW", ".NEF", ".ORF", ".RAF", ".PMP", ".THM"};
constexpr int firstAudioBox = fileTypeCount + 1;
constexpr int firstExtraBox = firstAudioBox + avFileTypeCount;
static_assert(firstExtraBox + int(std::size(extraCaptions)) == associationBoxCount + 1);

// clang-format off
/// The desktop entry's MIME types, by the boxes' captions from box 1. IMG, GEM and PIC have none: on most systems those
/// extensions belong to disk images, archives and others, whose programs stay what they are.
constexpr const char *mimeTypes[] = {
    "image/x-art", "image/bmp", "image/x-win-bitmap", "image/x-cut", "image/bmp", "image/emf", "", "image/gif",
    "image/x-hrz", "image/vnd.microsoft.icon", "image/x-ilbm", "", "image/jpeg", "image/x-ilbm", "image/x-macpaint",
    "image/x-msp", "image/x-portable-bitmap", "image/vnd.zbrush.pcx", "image/x-portable-graymap", "", "image/png",
    "image/x-portable-anymap", "image/x-portable-pixmap", "image/x-cmu-raster", "image/rle", "image/x-tga", "image/tiff",
    "image/wmf", "application/x-wpg",
    "application/vnd.ms-asf", "audio/x-ms-asx", "audio/x-ms-wma", "video/x-ms-wmv", "video/x-msvideo", "audio/x-wav",
    "video/mpeg", "audio/mp2", "audio/mpeg", "audio/midi",
    "image/x-xwindowdump", "image/vnd.zbrush.dcx", "image/x-epoc-mbm", "image/x-photo-cd", "image/vnd.adobe.photoshop",
    "image/x-psp", "image/x-sfw", "image/x-rgb", "image/x-xbitmap", "image/x-xpixmap", "", "image/vnd.wap.wbmp",
    "image/x-canon-crw", "image/x-kodak-dcr", "image/vnd.fpx", "image/jp2", "image/x-minolta-mrw", "image/x-nikon-nef",
    "image/x-olympus-orf", "image/x-fuji-raf", "image/x-pmp", "image/x-thm",
};
// clang-format on
static_assert(std::size(mimeTypes) == associationBoxCount);

QString extensionKey(const QString &code)
{
    return QLatin1Char('.') + code.toLower();
}

QString className(const QString &code)
{
    return QStringLiteral("Lumora.%1.3").arg(code.toLower());
}

QString restoreKey(const QString &code)
{
    return extensionKey(code) + QStringLiteral("\\Lumora.Restore");
}

QString explorerKey(const QString &code)
{
    return QStringLiteral("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\") + extensionKey(code);
}

constexpr QLatin1String progID("ProgID");

AssociationWrite createKey(const QString &key)
{
    return {Action::CreateClassesKey, key};
}

AssociationWrite setDefault(const QString &key, const QString &text)
{
    return {Action::SetClassesValue, key, {}, text};
}

/// Calls `visit` with each code of the applying lists, in their order, and the box that decides it. The box is that of
/// the code's place: as JPE stands among the codes but has no box, every code behind it follows the box of its
/// successor's caption, until the boxes begin anew behind MID. 0 for the code whose place has no box.
template <class Visitor> void forEachApplied(const Visitor &visit)
{
    for (const AppliedList &applied : appliedLists) {
        for (std::size_t at = 0; at < applied.list.count(); ++at) {
            const int box = int(at) + 1 + applied.boxOffset;
            visit(applied.list.code(at), box == missingAssociationBox ? 0 : box);
        }
    }
}

void writeVerb(AssociationWrites &writes, const QString &verbKey, const QString &caption, const QString &command)
{
    writes += setDefault(verbKey, caption);
    writes += setDefault(verbKey + QStringLiteral("\\Command"), command);
}

void writeClass(AssociationWrites &writes, const QString &code, const QString &program, int icon)
{
    const QString name = className(code);
    const QString open = name + QStringLiteral("\\Shell\\Open");
    const QString edit = name + QStringLiteral("\\Shell\\Edit");
    const QString preview = name + QStringLiteral("\\Shell\\Preview");
    writes += createKey(name);
    writes += setDefault(name, QStringLiteral("Lumora %1 File").arg(code));
    writes += createKey(name + QStringLiteral("\\DefaultIcon"));
    writes += setDefault(name + QStringLiteral("\\DefaultIcon"), program + QLatin1Char(',') + QString::number(icon));
    writes += createKey(name + QStringLiteral("\\PreviousAssociation"));
    for (const QString &verb : {open, edit, preview})
        writes += createKey(verb + QStringLiteral("\\Command"));
    const QString command = QStringLiteral("\"%1\" \"%2\"").arg(program, QStringLiteral("%1"));
    if (GetMediaKind(extensionKey(code)) == kindMotion) {
        writeVerb(writes, open, QStringLiteral("Play with &Lumora V3"), command);
        return;
    }
    writeVerb(writes, open, QStringLiteral("Open with &Lumora V3"), command);
    writeVerb(writes, preview, QStringLiteral("Preview with &Lumora V3"), command);
    writeVerb(writes, edit, QStringLiteral("Edit with &Lumora V3"), command);
}

void writeChoice(AssociationWrites &writes, const QString &code, bool checked, const DefaultReader &readDefault)
{
    QString wanted = checked ? className(code) : QString();
    const QString saved = readDefault(restoreKey(code));
    const QString current = readDefault(extensionKey(code));
    if (!wanted.isEmpty() && wanted != current) {
        writes += setDefault(restoreKey(code), current);
        writes += setDefault(extensionKey(code), wanted);
    }
    if (saved.isEmpty() && wanted.isEmpty())
        writes += setDefault(extensionKey(code), {});
    if (!saved.isEmpty() && wanted.isEmpty()) {
        writes += setDefault(extensionKey(code), saved);
        writes += setDefault(restoreKey(code), {});
        wanted = saved;
    }
    writes += {Action::SetUserValue, explorerKey(code), progID, wanted};
    if (wanted.isEmpty()) {
        writes += {Action::Beep, {}};
        writes += {Action::DeleteClassesKey, className(code)};
    }
}
}

QString associationCaption(int box)
{
    if (box < firstAudioBox)
        return QLatin1String(fileTypeCaptions[std::size_t(box - 1)]);
    if (box < firstExtraBox)
        return QLatin1String(avFileTypeCaptions[std::size_t(box - firstAudioBox)]);
    return QLatin1String(extraCaptions[box - firstExtraBox]);
}

QByteArray desktopTypeOfBox(int box)
{
    return mimeTypes[box - 1];
}

AssociationWrites classWrites(const QString &programFolder, const QString &programName)
{
    AssociationWrites writes;
    const QString program = programFolder + programName + QStringLiteral(".exe");
    int icon = firstTypeIcon;
    int iconOfJPG = 0;
    for (const CodeList &list : classLists) {
        for (std::size_t at = 0; at < list.count(); ++at, ++icon) {
            const QString code = list.code(at);
            if (code == QLatin1String("JPG"))
                iconOfJPG = icon;
            writeClass(writes, code, program, code == QLatin1String("JPE") ? iconOfJPG : icon);
        }
    }
    return writes;
}

AssociationWrites keyWrites()
{
    AssociationWrites writes;
    forEachApplied([&](const QString &code, int) {
        writes += createKey(extensionKey(code));
        writes += createKey(restoreKey(code));
    });
    return writes;
}

AssociationWrites userWrites()
{
    AssociationWrites writes;
    forEachApplied([&](const QString &code, int) {
        writes += {Action::CreateUserKey, explorerKey(code)};
        writes += {Action::SetUserValue, explorerKey(code), progID, className(code)};
    });
    return writes;
}

AssociationWrites choiceWrites(const AssociationBoxes &boxes, const DefaultReader &readDefault)
{
    AssociationWrites writes;
    forEachApplied([&](const QString &code, int box) {
        writeChoice(writes, code, box == 0 || boxes[std::size_t(box)], readDefault);
    });
    return writes;
}

AssociationBoxes associatedBoxes(const DefaultReader &readDefault)
{
    AssociationBoxes boxes;
    std::size_t box = 0;
    for (const CodeList &list : shownLists) {
        for (std::size_t at = 0; at < list.count(); ++at) {
            if (++box == missingAssociationBox)
                ++box;
            boxes[box] = readDefault(extensionKey(list.code(at))) == className(list.code(at));
        }
    }
    return boxes;
}

QVector<DesktopType> desktopTypes(const AssociationBoxes &boxes)
{
    QVector<DesktopType> types;
    const auto add = [&](const QByteArray &name, bool wanted) {
        const auto known =
            std::find_if(types.begin(), types.end(), [&name](const DesktopType &type) { return type.name == name; });
        if (known == types.end())
            types.append({name, wanted});
        else
            known->wanted = known->wanted || wanted;
    };
    for (int box = 1; box <= associationBoxCount; ++box) {
        if (const QByteArray name = desktopTypeOfBox(box); !name.isEmpty())
            add(name, boxes[std::size_t(box)]);
    }
    add("application/x-lumora-list", boxes[listFileBox]);
    return types;
}

MessageBox applyAssociationsBox()
{
    return {QCoreApplication::translate("Associations", "Apply Associations?"),
        QCoreApplication::translate("Associations", "Do you want to apply file association changes?"),
        MessageBox::Icon::Question, MessageBox::Buttons::YesNo, MessageBox::Answer::Yes};
}

MessageBox associationsMadeBox()
{
    return {QCoreApplication::translate("Associations", "File Association Changes"),
        QCoreApplication::translate("Associations", "File Association Changes have been made successfully"),
        MessageBox::Icon::Information, MessageBox::Buttons::Ok, MessageBox::Answer::Ok};
}
