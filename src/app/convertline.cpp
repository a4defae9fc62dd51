#include "app/convertline.h"

#include "app/commandline.h"
#include "platform/filepath.h"
#include "viewer/foldersearch.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

constexpr QLatin1String convertOption("--convert");

struct OperationWord
{
    const char *word;
    bool ConversionOptions::*box;
};
/// In the order in which they are done, whatever the order on the command line.
constexpr OperationWord operationWords[] = {
    {"autocontrast", &ConversionOptions::autoContrast},
    {"autolevel", &ConversionOptions::autoLevel},
    {"grayscale", &ConversionOptions::grayScale},
    {"colors256", &ConversionOptions::grayScale256},
    {"emboss", &ConversionOptions::emboss},
};

QString knownTypes()
{
    QStringList words;
    for (int i = 0; i < conversionTypeCount; ++i)
        words.append(conversionTypeWord(i));
    return words.join(QLatin1String(", "));
}

QString knownOperations()
{
    QStringList words;
    for (const OperationWord &row : operationWords)
        words.append(QLatin1String(row.word));
    return words.join(QLatin1String(", "));
}

/// Reads arguments from left to right into a ConvertLine.
class ConvertReader
{
public:
    ConvertReader(const QStringList &arguments, const QString &currentFolder)
        : m_arguments(arguments)
        , m_currentFolder(currentFolder)
    {
        m_options.carryOver = false;
        m_options.promptFirst = true; // the run answers itself
        m_options.photoCDSize = 2;
    }

    ConvertLine read()
    {
        while (m_next < m_arguments.size() && m_line.error.isEmpty())
            take(m_arguments.at(m_next++));
        if (m_line.error.isEmpty() && !m_line.help && !m_line.version)
            m_line.error = whatIsMissing();
        return m_line;
    }

private:
    struct Flag
    {
        const char *name;
        bool *value;
    };
    struct Option
    {
        const char *name;
        const char *needs;
        void (ConvertReader::*take)(const QString &value);
    };

    void take(const QString &argument)
    {
        if (argument.isEmpty())
            return;
        if (m_optionsEnded || !argument.startsWith(QLatin1Char('-')) || argument.size() == 1)
            m_line.command.sources.append(pathOfArgument(argument, m_currentFolder));
        else if (argument == QLatin1String("--"))
            m_optionsEnded = true;
        else if (!takeFlag(argument) && !takeOption(argument))
            m_line.error =
                Texts::tr("lumora: unknown option '%1' for a conversion, see lumora --help").arg(displayPath(argument));
    }

    bool takeFlag(const QString &argument)
    {
        const Flag flags[] = {
            {"--help", &m_line.help},
            {"-h", &m_line.help},
            {"--version", &m_line.version},
            {"-v", &m_line.version},
            {"--diffuse", &m_options.diffuseTwoColor},
            {"--overwrite", &m_options.overwriteFiles},
            {"--convert-folder", &m_options.addConvertFolder},
            {"--folder-per-type", &m_options.folderForEachType},
            {"--recursive", &m_line.command.recursive},
            {"--progress", &m_line.command.progress},
        };
        const auto *const flag =
            std::ranges::find_if(flags, [&](const Flag &row) { return argument == QLatin1String(row.name); });
        if (flag == std::end(flags))
            return false;
        *flag->value = true;
        return true;
    }

    bool takeOption(const QString &argument)
    {
        static constexpr Option options[] = {
            {"--convert", QT_TRANSLATE_NOOP("CommandLine", "one or more formats"), &ConvertReader::takeTypes},
            {"--to", QT_TRANSLATE_NOOP("CommandLine", "a folder"), &ConvertReader::takeFolder},
            {"--operations", QT_TRANSLATE_NOOP("CommandLine", "one or more operations"),
                &ConvertReader::takeOperations},
            {"--jpeg-quality", QT_TRANSLATE_NOOP("CommandLine", "a number from 1 to 100"),
                &ConvertReader::takeJpegQuality},
            {"--jpeg2000-quality", QT_TRANSLATE_NOOP("CommandLine", "a number from 1 to 100"),
                &ConvertReader::takeJpeg2000Quality},
            {"--photo-cd-size", QT_TRANSLATE_NOOP("CommandLine", "a number from 0 to 4"),
                &ConvertReader::takePhotoCDSize},
        };
        const qsizetype equals = argument.indexOf(QLatin1Char('='));
        const QString name = argument.left(equals);
        const auto *const option =
            std::ranges::find_if(options, [&](const Option &row) { return name == QLatin1String(row.name); });
        if (option == std::end(options))
            return false;
        QString value = argument.mid(equals + 1);
        if (equals < 0)
            value = m_next < m_arguments.size() ? m_arguments.at(m_next++) : QString();
        m_refused = value.isEmpty();
        if (!m_refused)
            (this->*option->take)(value);
        if (m_refused)
            m_line.error = Texts::tr("lumora: option '%1' needs %2, see lumora --help")
                               .arg(QLatin1String(option->name), Texts::tr(option->needs));
        return true;
    }

    void takeTypes(const QString &value)
    {
        for (const QString &word : value.split(QLatin1Char(','))) {
            if (const std::optional<int> type = conversionTypeOfWord(word.trimmed()))
                m_options.types.set(size_t(*type));
            else
                m_line.error =
                    Texts::tr("lumora: unknown format '%1', the formats are %2").arg(displayPath(word), knownTypes());
        }
    }

    void takeOperations(const QString &value)
    {
        for (const QString &word : value.split(QLatin1Char(','))) {
            const auto *const row = std::ranges::find_if(operationWords, [&](const OperationWord &known) {
                return word.trimmed().compare(QLatin1String(known.word), Qt::CaseInsensitive) == 0;
            });
            if (row != std::end(operationWords))
                m_options.*row->box = true;
            else
                m_line.error = Texts::tr("lumora: unknown operation '%1', the operations are %2")
                                   .arg(displayPath(word), knownOperations());
        }
    }

    void takeFolder(const QString &value)
    {
        m_options.useImageFolder = false;
        m_options.imageFolder = folderWithSeparator(pathOfArgument(value, m_currentFolder));
    }

    void takeJpegQuality(const QString &value) { m_options.save.jpegQuality = numberFrom(value, 1, 100); }
    void takeJpeg2000Quality(const QString &value) { m_options.save.jpeg2000Quality = numberFrom(value, 1, 100); }
    void takePhotoCDSize(const QString &value) { m_options.photoCDSize = numberFrom(value, 0, 4); }

    int numberFrom(const QString &value, int least, int most)
    {
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        m_refused = !isNumber || number < least || number > most;
        return m_refused ? most : number;
    }

    QString whatIsMissing() const
    {
        if (m_line.command.sources.isEmpty())
            return Texts::tr("lumora: there is no file, folder or list to convert, see lumora --help");
        // Without folders of their own the second of them would always find the file of the first.
        for (int i = 0; i < conversionTypeCount && !m_options.folderForEachType; ++i) {
            for (int j = 0; j < i; ++j) {
                if (m_options.types.test(size_t(i)) && m_options.types.test(size_t(j))
                    && qstrcmp(saveFormats()[size_t(i)].extension, saveFormats()[size_t(j)].extension) == 0)
                    return Texts::tr(
                        "lumora: files of the formats '%1' and '%2' have the same names, add --folder-per-type")
                        .arg(conversionTypeWord(j), conversionTypeWord(i));
            }
        }
        return {};
    }

    const QStringList &m_arguments;
    const QString &m_currentFolder;
    qsizetype m_next = 0;
    bool m_optionsEnded = false;
    bool m_refused = false;
    ConvertLine m_line;
    ConversionOptions &m_options = m_line.command.options;
};

}

bool asksForConversion(const QStringList &arguments)
{
    const auto end = std::find(arguments.begin(), arguments.end(), QLatin1String("--"));
    return std::any_of(arguments.begin(), end, [](const QString &argument) {
        return argument == convertOption || argument.startsWith(convertOption + QLatin1Char('='));
    });
}

ConvertLine parseConvertLine(const QStringList &arguments, const QString &currentFolder)
{
    return ConvertReader(arguments, currentFolder).read();
}

QString conversionTypeWord(int batchIndex)
{
    return QString::fromLatin1(saveFormats()[size_t(batchIndex)].batchFolder).chopped(1).toLower();
}

std::optional<int> conversionTypeOfWord(const QString &word)
{
    QString wanted = word.toLower();
    if (wanted.startsWith(QLatin1Char('.')))
        wanted.remove(0, 1);
    if (wanted == QLatin1String("jpeg"))
        wanted = QStringLiteral("jpg");
    if (wanted == QLatin1String("tiff"))
        wanted = QStringLiteral("tif");
    for (int i = 0; i < conversionTypeCount; ++i) {
        if (conversionTypeWord(i) == wanted)
            return i;
    }
    return std::nullopt;
}

QString convertHelpText()
{
    return Texts::tr("\n"
                     "Converting without a window, see lumora(1):\n"
                     "\n"
                     "  lumora --convert FORMAT[,FORMAT]... [OPTION]... FILE|FOLDER|LIST...\n"
                     "\n"
                     "  --convert FORMATS      write every picture in each of these formats\n"
                     "  --to FOLDER            write there, not beside each picture; made when it is missing\n"
                     "  --operations LIST      change the pictures before, in this order: autocontrast,\n"
                     "                         autolevel, grayscale, colors256, emboss\n"
                     "  --diffuse              spread the error where colours are reduced\n"
                     "  --jpeg-quality N       1 to 100, 100 when it is not given\n"
                     "  --jpeg2000-quality N   1 to 100, 100 (nothing is lost) when it is not given\n"
                     "  --photo-cd-size N      size of a Photo CD from 0 (192x128) to 4 (3072x2048), else 2\n"
                     "  --overwrite            replace files that are there already\n"
                     "  --convert-folder       write into a folder 'convert' below\n"
                     "  --folder-per-type      write into a folder for each format below\n"
                     "  --recursive            take folders with all that is below them\n"
                     "  --progress             tell the progress also where standard error is no terminal\n"
                     "\n"
                     "  Formats: bmp, dcx, iff, jp2, jpg, mbm_comp, mbm, pbm, pcx, pgm, png, png_inter, ppm,\n"
                     "  psd, rgb, tga, tga_comp, tif, tif_jpeg, wbmp, xbm, xpm, xwd.\n"
                     "  Exit status: 0 all was written, 1 something was not, 2 wrong command line.\n");
}
