#include "actions/convertcommand.h"

#include "actions/progressline.h"
#include "app/mediatypes.h"
#include "engine/limits.h"
#include "engine/polyimage.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "viewer/foldersearch.h"
#include "viewer/listfile.h"

#include <QCoreApplication>
#include <QSet>

#include <array>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <system_error>

namespace {

constexpr int statusAllWritten = 0;
constexpr int statusSomeFailed = 1;
constexpr int statusOfSignals = 128;
constexpr int mostEntries = 32767; ///< of a list that does not tell how many it has
constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(ConvertCommand)
};

/// A sentence with the path that it is about in front, unless that stands in it.
QString about(const QString &path, const QString &sentence)
{
    const QString shown = displayPath(path);
    return sentence.contains(shown) ? sentence : shown + QLatin1String(": ") + sentence;
}

/// The signal that asked for the end; 0 as long as none has come.
std::atomic<int> arrivedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void noteSignal(int signal)
{
    arrivedSignal = signal;
}

/// The first signal ends the run after the file that is being written, the second one at once.
void watchSignals()
{
    for (const int signal : endingSignals) {
        struct sigaction before
        {
        };
        // Whoever starts a program with a signal ignored, as nohup does, wants it to stay so.
        if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
            continue;
        struct sigaction action
        {
        };
        action.sa_handler = &noteSignal;
        action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
        ::sigaction(signal, &action, nullptr);
    }
}

class ConsoleClient : public ConversionClient
{
public:
    ConsoleClient(const ConvertCommand &command, const QStringList &entries, ProgressLine &line)
        : m_command(command)
        , m_entries(entries)
        , m_sources(entries.begin(), entries.end())
        , m_line(line)
    {
    }

    ConversionOptions options() const override { return m_command.options; }
    int entryCount() const override { return int(m_entries.size()); }
    QString entry(int index) const override { return m_entries.value(index); }
    bool isSelected(int) const override { return true; }

    bool cancelled() const override { return arrivedSignal != 0; }
    void clearCancel() override { } // a signal stays

    MessageBox::Answer ask(const MessageBox &) override
    {
        const bool taken = m_takenTwice.contains(m_target) || (m_target != m_entry && m_sources.contains(m_target));
        if (taken)
            m_refused.insert(m_target);
        return taken ? MessageBox::Answer::No : MessageBox::Answer::Yes;
    }
    void showPercent(int percent) override { m_percent = percent; }
    void showFiles(const QString &from, const QString &to) override
    {
        m_entry = from;
        m_target = to;
        if (m_targets.contains(to))
            m_takenTwice.insert(to);
        m_targets.insert(to);
        m_line.show(m_percent, displayPath(from));
    }
    void showOperation(const QString &) override { }

    void finished(const ConversionOutcome &outcome) override
    {
        switch (outcome.what) {
        case ConversionOutcome::Written:
            ++m_written;
            if (outcome.damaged)
                tellOfEntry(outcome.entry, Texts::tr("is damaged, and only what could be read of it is written"));
            return;
        case ConversionOutcome::LeftAlone:
            m_line.tell(about(outcome.entry, about(outcome.target, whyLeftAlone(outcome.target))));
            return;
        case ConversionOutcome::NotWritten:
            if (outcome.target.isEmpty() || !outcome.loaded)
                tellOfEntry(outcome.entry, outcome.reason);
            else
                m_line.tell(about(outcome.entry, about(outcome.target, outcome.reason)));
        }
    }

    int written() const { return m_written; }
    /// Whether every entry was read as a whole.
    bool allWhole() const { return m_bad.isEmpty(); }
    qint64 asked() const { return qint64(m_entries.size()) * qint64(m_command.options.types.count()); }

private:
    /// Once, not for every format.
    void tellOfEntry(const QString &entry, const QString &sentence)
    {
        if (!m_bad.contains(entry))
            m_line.tell(about(entry, sentence));
        m_bad.insert(entry);
    }
    QString whyLeftAlone(const QString &target) const
    {
        return m_refused.contains(target) || m_takenTwice.contains(target)
            ? Texts::tr("another file of this run has the same name")
            : Texts::tr("exists already and is left as it is");
    }

    const ConvertCommand &m_command;
    const QStringList &m_entries;
    const QSet<QString> m_sources;
    ProgressLine &m_line;
    QString m_entry;
    QString m_target;
    QSet<QString> m_targets;
    QSet<QString> m_takenTwice;
    QSet<QString> m_refused;
    QSet<QString> m_bad;
    int m_percent = 0;
    int m_written = 0;
};

using Told = std::function<void(const QString &)>;

QStringList picturesOf(const QStringList &paths)
{
    QStringList pictures;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(pictures),
        [](const QString &path) { return conversionLoad(path) != ConversionLoad::None; });
    return pictures;
}

QStringList entriesOfList(const QString &path, const Told &failed)
{
    const Result<QByteArray> bytes = readFile(path, limits::maximumFileBytes);
    if (!bytes) {
        failed(about(path, bytes.reason()));
        return {};
    }
    const ListFileContent content = readListFile(*bytes, mostEntries);
    QStringList entries = content.entries;
    if (content.endMarkerAt)
        entries.removeAt(*content.endMarkerAt);
    if (!content.isListFile)
        failed(about(path, Texts::tr("is no list file")));
    else if (picturesOf(entries).isEmpty())
        failed(about(path, Texts::tr("there are no pictures in this list")));
    return picturesOf(entries);
}

QStringList entriesOfFolder(const QString &path, bool recursive, const Told &failed)
{
    EnabledFileTypes every;
    every.fileTypes.set();
    every.polyFileTypes.set();
    const FilePatterns patterns = filePatterns(every);
    const QString folder = folderWithSeparator(path);
    QStringList entries;
    if (recursive) {
        walkFolders(folder, patterns,
            {[] { return arrivedSignal == 0; },
                [&](const QStringList &paths) {
                    entries += paths;
                    return true;
                }});
    } else {
        for (const QString &name : collectFiles(folder, patterns))
            entries.append(folder + name);
    }
    if (const auto listed = listFolder(folder); !listed)
        failed(about(path, listed.reason()));
    else if (entries.isEmpty())
        failed(about(path, Texts::tr("there are no pictures in this folder")));
    return entries;
}

bool makeTargetFolder(const QString &folder, ProgressLine &line)
{
    std::error_code error;
    std::filesystem::create_directories(pathToBytes(folder).toStdString(), error);
    // Something that is no folder but has its name is no error of the call above.
    if (!error && !folderExists(folder))
        error = std::make_error_code(std::errc::not_a_directory);
    if (error)
        line.tell(about(folder, QString::fromStdString(error.message())));
    return !error;
}

}

QStringList conversionEntries(const QStringList &sources, bool recursive, const Told &failed)
{
    QStringList entries;
    for (const QString &source : sources) {
        if (folderExists(source))
            entries += entriesOfFolder(source, recursive, failed);
        else if (isListFileName(source))
            entries += entriesOfList(source, failed);
        else if (conversionLoad(source) == ConversionLoad::None)
            failed(about(source, Texts::tr("sounds and videos are not converted")));
        else
            entries.append(source);
    }
    entries.removeDuplicates();
    return entries;
}

int runConvertCommand(const ConvertCommand &command)
{
    watchSignals();
    ProgressLine line(command.progress);
    bool allThere = true;
    const QStringList entries = conversionEntries(command.sources, command.recursive, [&](const QString &sentence) {
        allThere = false;
        line.tell(sentence);
    });
    if (!command.options.useImageFolder && !entries.isEmpty() && !makeTargetFolder(command.options.imageFolder, line))
        return statusSomeFailed;
    ConsoleClient client(command, entries, line);
    PolyImage image;
    Gvbox gvbox;
    runConversion(client, image, gvbox, LookAhead::AllCores);
    line.clear();
    const int signal = arrivedSignal;
    if (signal != 0 && client.written() < client.asked()) {
        line.tell(Texts::tr("ended before all was done, %1 of %2 files are written")
                      .arg(client.written())
                      .arg(client.asked()));
        return statusOfSignals + signal;
    }
    if (client.written() < client.asked())
        line.tell(
            Texts::tr("%1 of %2 files were not written").arg(client.asked() - client.written()).arg(client.asked()));
    return allThere && client.allWhole() && client.written() == client.asked() ? statusAllWritten : statusSomeFailed;
}

void endAsBySignal(int status)
{
    const int number = status - statusOfSignals;
    if (std::count(endingSignals.begin(), endingSignals.end(), number) == 0)
        return;
    std::signal(number, SIG_DFL);
    std::raise(number);
}
