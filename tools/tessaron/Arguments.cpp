#include "tools/tessaron/Arguments.h"

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/OptionTable.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <array>
#include <cmath>

namespace Tessaron::Tool
{

namespace
{

/// Takes one value after the other from the words of a command.
class Parser
{
public:
    Parser(const QList<QByteArray> &words, Arguments &arguments)
        : m_words(words)
        , m_arguments(arguments)
    {
    }

    /// Reads all words; false when one makes no sense (the usage error is set then).
    bool parse();

private:
    bool parseLongOption(const QByteArray &word);
    bool parseShortOptions(const QByteArray &word);
    bool apply(const OptionDescription &option, const QByteArray &shownName, const QByteArray &value);
    bool takeValue(const QByteArray &shownName, QByteArray *value);
    bool setProgress(const QByteArray &value);
    bool setFormat(const QByteArray &value);
    bool setSoundFormat(const QByteArray &value);
    bool setFilesystems(const QByteArray &value);
    bool setGap(const QByteArray &value);
    bool setCapacity(const QByteArray &value);
    bool setTrack(const QByteArray &value);
    bool setBitRate(const QByteArray &value, const QByteArray &shownName, int *rate);
    bool setJobs(const QByteArray &value);
    bool setNumber(const QByteArray &value, const char *what, std::uint16_t most, std::uint16_t *number);
    bool setSpeed(const QByteArray &value);
    bool fail(const QString &message);

    const QList<QByteArray> &m_words;
    qsizetype m_next = 0;
    Arguments &m_arguments;

public:
    bool hasFormat = false;
    bool hasTrack = false;
    QByteArray soundFormat; ///< empty where none was named
    int variableBitRate = 0; ///< kilobits a second; 0 where none was named
    int constantBitRate = 0;
    bool playsDVD = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

QString text(const QByteArray &bytes)
{
    return stringWithFileSystemRepresentation(bytes);
}

bool Parser::fail(const QString &message)
{
    m_arguments.usageError = message;
    return false;
}

bool Parser::parse()
{
    bool optionsHaveEnded = false;
    while (m_next < m_words.size()) {
        const QByteArray word = m_words[m_next++];
        if (optionsHaveEnded || !word.startsWith('-') || word == "-") {
            if (word.isEmpty())
                return fail(QStringLiteral("a PATH is empty"));
            m_arguments.paths.append(word);
        } else if (word == "--") {
            optionsHaveEnded = true;
        } else if (!(word.startsWith("--") ? parseLongOption(word) : parseShortOptions(word))) {
            return false;
        }
    }
    return true;
}

bool Parser::parseLongOption(const QByteArray &word)
{
    const qsizetype equals = word.indexOf('=');
    const QByteArray name = equals < 0 ? word : word.left(equals);
    const OptionDescription *const option = findOption(m_arguments.command, name.mid(2));
    if (option == nullptr)
        return fail(QStringLiteral("there is no option %1").arg(quoted(name)));
    if (option->valueName == nullptr) {
        if (equals >= 0)
            return fail(QStringLiteral("the option %1 takes no value").arg(text(name)));
        return apply(*option, name, {});
    }
    QByteArray value = word.mid(equals + 1);
    if (equals < 0 && !takeValue(name, &value))
        return false;
    return apply(*option, name, value);
}

bool Parser::parseShortOptions(const QByteArray &word)
{
    for (qsizetype position = 1; position < word.size(); ++position) {
        const QByteArray shownName = QByteArray("-") + word[position];
        const OptionDescription *const option = findOption(m_arguments.command, word[position]);
        if (option == nullptr)
            return fail(QStringLiteral("there is no option %1").arg(quoted(shownName)));
        if (option->valueName == nullptr) {
            if (!apply(*option, shownName, {}))
                return false;
            continue;
        }
        QByteArray value = word.mid(position + 1); // -oOUT
        if (value.isEmpty() && !takeValue(shownName, &value))
            return false;
        return apply(*option, shownName, value);
    }
    return true;
}

bool Parser::takeValue(const QByteArray &shownName, QByteArray *value)
{
    if (m_next >= m_words.size())
        return fail(QStringLiteral("the option %1 needs a value").arg(text(shownName)));
    *value = m_words[m_next++];
    return true;
}

bool Parser::apply(const OptionDescription &option, const QByteArray &shownName, const QByteArray &value)
{
    if (option.valueName != nullptr && value.isEmpty())
        return fail(QStringLiteral("the value of %1 is empty").arg(text(shownName)));
    switch (option.option) {
    case Option::Help:
        wantsHelp = true;
        return true;
    case Option::Version:
        wantsVersion = true;
        return true;
    case Option::Json:
        m_arguments.json = true;
        return true;
    case Option::Quiet:
        m_arguments.verbosity = Verbosity::Quiet;
        return true;
    case Option::Verbose:
        m_arguments.verbosity = Verbosity::Verbose;
        return true;
    case Option::Relocate:
        m_arguments.relocatesDeepFolders = true;
        return true;
    case Option::Strict:
        m_arguments.strict = true;
        return true;
    case Option::NoSync:
        m_arguments.isSynchronized = false;
        return true;
    case Option::Output:
        m_arguments.output = value;
        return true;
    case Option::Name:
        m_arguments.volumeName = text(value);
        return true;
    case Option::Progress:
        return setProgress(value);
    case Option::Format:
        return m_arguments.command == "extract" ? setSoundFormat(value) : setFormat(value);
    case Option::Filesystems:
        return setFilesystems(value);
    case Option::Gap:
        return setGap(value);
    case Option::NoGapless:
        m_arguments.isGapless = false;
        return true;
    case Option::Capacity:
        return setCapacity(value);
    case Option::Isrc:
        m_arguments.isrcFile = value;
        return true;
    case Option::Artwork:
        m_arguments.artworkFolder = value;
        return true;
    case Option::CdText:
        m_arguments.hasCDText = true;
        return true;
    case Option::Data:
        m_arguments.dataFolder = value;
        return true;
    case Option::Normalize:
        m_arguments.normalization = AudioNormalization::Album;
        return true;
    case Option::NormalizeEach:
        m_arguments.normalization = AudioNormalization::EachFile;
        return true;
    case Option::Track:
        return setTrack(value);
    case Option::To:
        soundFormat = value;
        return true;
    case Option::VariableBitRate:
        return setBitRate(value, shownName, &variableBitRate);
    case Option::ConstantBitRate:
        return setBitRate(value, shownName, &constantBitRate);
    case Option::Directory:
        m_arguments.folder = value;
        return true;
    case Option::Flat:
        m_arguments.isFlat = true;
        return true;
    case Option::Tags:
        m_arguments.carriesTags = true;
        return true;
    case Option::Jobs:
        return setJobs(value);
    case Option::Play:
        playsDVD = true;
        return true;
    case Option::Title:
        return setNumber(value, "title", 99, &m_arguments.title);
    case Option::Chapter:
        return setNumber(value, "chapter", 999, &m_arguments.chapter);
    case Option::Drive:
        m_arguments.drive = value;
        return true;
    case Option::Speed:
        return setSpeed(value);
    case Option::Simulate:
        m_arguments.isSimulated = true;
        return true;
    case Option::Multi:
        m_arguments.leavesOpen = true;
        return true;
    case Option::Overburn:
        m_arguments.overburns = true;
        return true;
    case Option::Verify:
        m_arguments.verifies = true;
        return true;
    case Option::Eject:
        m_arguments.ejects = true;
        return true;
    case Option::Full:
        m_arguments.blanksAll = true;
        return true;
    case Option::FormatDisc:
        m_arguments.formats = true;
        return true;
    case Option::Media:
        m_arguments.opensDrives = true;
        return true;
    case Option::Hidden:
        m_arguments.takesHiddenSound = true;
        return true;
    }
    return true;
}

bool Parser::setProgress(const QByteArray &value)
{
    if (value == "auto")
        m_arguments.progress = ProgressMode::Auto;
    else if (value == "bar")
        m_arguments.progress = ProgressMode::Bar;
    else if (value == "json")
        m_arguments.progress = ProgressMode::Json;
    else if (value == "none")
        m_arguments.progress = ProgressMode::None;
    else
        return fail(QStringLiteral("%1 is no kind of progress; use auto, bar, json or none").arg(quoted(value)));
    return true;
}

bool Parser::setFormat(const QByteArray &value)
{
    if (value == "iso")
        m_arguments.format = DiscFormat::ISO;
    else if (value == "bin")
        m_arguments.format = DiscFormat::BIN;
    else if (value == "vant")
        m_arguments.format = DiscFormat::VANT;
    else
        return fail(QStringLiteral("%1 is no image format; use iso, bin or vant").arg(quoted(value)));
    hasFormat = true;
    return true;
}

bool Parser::setSoundFormat(const QByteArray &value)
{
    if (value != "wav" && value != "flac")
        return fail(QStringLiteral("%1 is no sound format; use wav or flac").arg(quoted(value)));
    m_arguments.sound = value == "flac" ? ExtractedSound::FLAC : ExtractedSound::WAVE;
    hasFormat = true;
    return true;
}

bool Parser::setFilesystems(const QByteArray &value)
{
    DiscFilesystems mask;
    for (const QByteArray &name : value.split(',')) {
        if (name == "iso9660")
            mask |= DiscFilesystem::ISO9660;
        else if (name == "joliet")
            mask |= DiscFilesystem::Joliet;
        else if (name == "udf")
            mask |= DiscFilesystem::UDF;
        else if (name == "hfs+")
            mask |= DiscFilesystem::HFSPlus;
        else if (name == "rockridge")
            return fail(QStringLiteral("rockridge needs no mention: it always goes with iso9660"));
        else
            return fail(
                QStringLiteral("there is no filesystem %1; use some of iso9660,joliet,udf,hfs+").arg(quoted(name)));
    }
    m_arguments.filesystems = mask;
    m_arguments.hasFilesystems = true;
    return true;
}

bool Parser::setGap(const QByteArray &value)
{
    constexpr double longestGap = 99.0 * 60;
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0) || seconds > longestGap)
        return fail(QStringLiteral("%1 is no number of seconds; use 2 or 0.5, for example").arg(quoted(value)));
    m_arguments.gap = std::uint32_t(std::lround(seconds * double(MSF::framesPerSecond)));
    return true;
}

bool Parser::setCapacity(const QByteArray &value)
{
    constexpr std::array capacities = {74, 80, 90, 99};
    for (const int minutes : capacities) {
        if (value == QByteArray::number(minutes)) {
            m_arguments.capacity = std::uint32_t(minutes * MSF::framesPerMinute);
            return true;
        }
    }
    return fail(QStringLiteral("there is no disc of %1 minutes; use 74, 80, 90 or 99").arg(quoted(value)));
}

bool Parser::setTrack(const QByteArray &value)
{
    constexpr unsigned int mostTracks = 99;
    bool isNumber = false;
    const unsigned int number = value.toUInt(&isNumber);
    if (value != "all" && (!isNumber || number > mostTracks))
        return fail(QStringLiteral("%1 is no track; use a number from 1 to 99, 0 for what is in front of the first "
                                   "track, or all")
                        .arg(quoted(value)));
    m_arguments.track = value == "all" ? std::nullopt : std::optional(number);
    hasTrack = true;
    return true;
}

bool Parser::setBitRate(const QByteArray &value, const QByteArray &shownName, int *rate)
{
    if (value != "128" && value != "160")
        return fail(QStringLiteral("%1 is no bit rate for %2; use 128 or 160").arg(quoted(value), text(shownName)));
    *rate = value.toInt();
    return true;
}

bool Parser::setJobs(const QByteArray &value)
{
    constexpr unsigned int mostJobs = 256;
    bool isNumber = false;
    m_arguments.jobs = value.toUInt(&isNumber);
    return (isNumber && m_arguments.jobs >= 1 && m_arguments.jobs <= mostJobs)
        || fail(QStringLiteral("%1 is no number of jobs; use one from 1 to %2").arg(quoted(value)).arg(mostJobs));
}

bool Parser::setSpeed(const QByteArray &value)
{
    constexpr double fastest = 100;
    bool isNumber = false;
    m_arguments.speed = (value.endsWith('x') ? value.chopped(1) : value).toDouble(&isNumber);
    return (isNumber && m_arguments.speed > 0 && m_arguments.speed <= fastest)
        || fail(QStringLiteral("%1 is no speed; use 4 or 8, for example, for so many times single speed")
                    .arg(quoted(value)));
}

bool Parser::setNumber(const QByteArray &value, const char *what, std::uint16_t most, std::uint16_t *number)
{
    bool isNumber = false;
    *number = value.toUShort(&isNumber);
    return (isNumber && *number >= 1 && *number <= most)
        || fail(QStringLiteral("%1 is no %2; use a number from 1 to %3")
                    .arg(quoted(value), QLatin1String(what))
                    .arg(most));
}

QString checkScan(const Arguments &arguments)
{
    return arguments.paths.isEmpty() ? QStringLiteral("no PATH was given") : QString();
}

QString checkImage(Arguments &arguments, bool hasFormat)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no PATH was given: name the folders and files that go into the image");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name the image file with -o OUT");
    const QByteArray name = lastComponent(arguments.output);
    if (!hasFormat && name.toLower().endsWith(".cue"))
        return QStringLiteral("%1 is a name for a cue sheet; name the image, ending in .bin, and the cue sheet is made "
                              "beside it (or say --format iso)")
            .arg(quoted(name));
    if (!hasFormat)
        arguments.format = discFormatForFileName(name);
    if (arguments.format != DiscFormat::BIN)
        return {};
    if (name.contains('"') || name.contains('\n') || name.contains('\r'))
        return QStringLiteral("the name %1 cannot stand in a cue sheet; use one without quotes and line breaks")
            .arg(quoted(name));
    if (name.toLower().endsWith(".cue"))
        return QStringLiteral("%1 is the name of the cue sheet; use the name of the image, ending in .bin")
            .arg(quoted(name));
    return {};
}

QString checkAudio(Arguments &arguments, bool hasFormat)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no FILE was given: name the audio files that become tracks");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name the image file with -o OUT.bin or -o OUT.vant");
    if (!arguments.volumeName.isEmpty() && arguments.dataFolder.isEmpty())
        return QStringLiteral("--name is for the volume of --data, which was not given");
    if (arguments.output == "-" && !hasFormat) {
        arguments.format = DiscFormat::VANT;
        return {};
    }
    if (arguments.output.toLower().endsWith(".cue"))
        return QStringLiteral("%1 is a name for a cue sheet; name the image, ending in .bin, and the cue sheet is made "
                              "beside it")
            .arg(quoted(arguments.output));
    QString error = checkImage(arguments, hasFormat);
    const bool isOfSound = arguments.format == DiscFormat::BIN || arguments.format == DiscFormat::VANT;
    if (error.isEmpty() && !isOfSound && hasFormat)
        return QStringLiteral("an image of sound has the format bin or vant");
    if (error.isEmpty() && !isOfSound)
        return QStringLiteral("the output %1 ends neither in .bin nor in .vant, which say what is made")
            .arg(quoted(arguments.output));
    return error;
}

QString checkInspect(const Arguments &arguments)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no IMAGE was given");
    return arguments.paths.size() > 1 ? QStringLiteral("more than one IMAGE was given; look at one at a time")
                                      : QString();
}

QString checkExtract(Arguments &arguments, const Parser &parser)
{
    if (QString error = checkInspect(arguments); !error.isEmpty())
        return error;
    if (!parser.hasTrack)
        return QStringLiteral("no track was given: name one, or all, with --track");
    if (arguments.takesHiddenSound && arguments.track)
        return QStringLiteral("--hidden goes with --track all; one alone is taken with --track 0");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name it with -o OUT");
    if (!parser.hasFormat && arguments.track && arguments.output.toLower().endsWith(".flac"))
        arguments.sound = ExtractedSound::FLAC;
    return {};
}

QString checkDVD(Arguments &arguments, const Parser &parser)
{
    if (parser.playsDVD)
        arguments.action = Arguments::Action::PlayDVD;
    else if (arguments.title != 0 || arguments.chapter != 0)
        return QStringLiteral("--title and --chapter are for --play");
    if (parser.playsDVD && arguments.json)
        return QStringLiteral("--json tells what is on a disc; it does not go with --play");
    if (arguments.paths.isEmpty())
        return QStringLiteral("no PATH was given: name a folder VIDEO_TS, an image or a device");
    return arguments.paths.size() > 1 ? QStringLiteral("more than one PATH was given; look at one at a time")
                                      : QString();
}

QString checkBurn(const Arguments &arguments)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no PATH was given: name folders and files, or an image");
    if (arguments.verifies && arguments.isSimulated)
        return QStringLiteral("--verify compares what was written, and --simulate writes nothing");
    return {};
}

QString checkBlank(const Arguments &arguments)
{
    if (!arguments.paths.isEmpty())
        return QStringLiteral("%1 is too much: name the drive with --drive DEV").arg(quoted(arguments.paths.first()));
    return arguments.blanksAll && arguments.formats ? QStringLiteral("--full and --format exclude each other")
                                                    : QString();
}

QString checkInfo(const Arguments &arguments)
{
    return arguments.paths.isEmpty() ? QStringLiteral("no FILE was given: name audio or movie files") : QString();
}

QString checkVerify(const Arguments &arguments)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no IMAGE was given");
    return arguments.paths.size() == 1 ? QStringLiteral("no PATH was given to compare the image with") : QString();
}

/// Of MP3, by the bit rate; variable, 160 kilobits a second, where none was named.
std::int32_t mp3Format(const Parser &parser)
{
    if (parser.constantBitRate != 0)
        return parser.constantBitRate == 128 ? KRAudioConverter::mp3FormatConstant128
                                             : KRAudioConverter::mp3FormatConstant160;
    return parser.variableBitRate == 128 ? KRAudioConverter::mp3FormatVariable128
                                         : KRAudioConverter::mp3FormatVariable160;
}

QString checkSoundFormat(Arguments &arguments, const Parser &parser)
{
    const bool hasBitRate = parser.variableBitRate != 0 || parser.constantBitRate != 0;
    if (parser.soundFormat.isEmpty())
        return QStringLiteral("no format was given: name it with --to wav, --to aiff or --to mp3");
    if (parser.soundFormat == "mp3") {
        arguments.soundFormat = mp3Format(parser);
        return parser.variableBitRate != 0 && parser.constantBitRate != 0
            ? QStringLiteral("--vbr and --cbr exclude each other")
            : QString();
    }
    if (parser.soundFormat == "wav")
        arguments.soundFormat = KRAudioConverter::waveFormat;
    else if (parser.soundFormat == "aiff")
        arguments.soundFormat = KRAudioConverter::aiffFormat;
    else
        return QStringLiteral("%1 is no format to convert to; use wav, aiff or mp3").arg(quoted(parser.soundFormat));
    if (hasBitRate || arguments.carriesTags)
        return QStringLiteral("%1 is for --to mp3 only")
            .arg(hasBitRate ? QStringLiteral("a bit rate") : QStringLiteral("--tags"));
    return {};
}

QString checkConvert(Arguments &arguments, const Parser &parser)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no FILE was given: name the files and folders to convert");
    if (QString error = checkSoundFormat(arguments, parser); !error.isEmpty())
        return error;
    return arguments.folder.isEmpty() ? QStringLiteral("no folder was given for the results: name it with -d DIR")
                                      : QString();
}

/// The line's words are known; do they make sense together? Sets the action.
QString checkCommand(Arguments &arguments, const Parser &parser)
{
    if (arguments.command == "scan") {
        arguments.action = Arguments::Action::Scan;
        return checkScan(arguments);
    }
    if (arguments.command == "audio") {
        arguments.action = Arguments::Action::MakeAudioImage;
        return checkAudio(arguments, parser.hasFormat);
    }
    if (arguments.command == "inspect") {
        arguments.action = Arguments::Action::Inspect;
        return checkInspect(arguments);
    }
    if (arguments.command == "verify") {
        arguments.action = Arguments::Action::Verify;
        return checkVerify(arguments);
    }
    if (arguments.command == "tracks") {
        arguments.action = Arguments::Action::Tracks;
        return checkInspect(arguments);
    }
    if (arguments.command == "dvd") {
        arguments.action = Arguments::Action::DescribeDVD;
        return checkDVD(arguments, parser);
    }
    if (arguments.command == "burn") {
        arguments.action = Arguments::Action::BurnDisc;
        return checkBurn(arguments);
    }
    if (arguments.command == "blank") {
        arguments.action = Arguments::Action::BlankDisc;
        return checkBlank(arguments);
    }
    if (arguments.command == "drives") {
        arguments.action = Arguments::Action::ListDrives;
        return {};
    }
    if (arguments.command == "info") {
        arguments.action = Arguments::Action::Info;
        return checkInfo(arguments);
    }
    if (arguments.command == "extract") {
        arguments.action = Arguments::Action::Extract;
        return checkExtract(arguments, parser);
    }
    if (arguments.command == "convert") {
        arguments.action = Arguments::Action::Convert;
        return checkConvert(arguments, parser);
    }
    arguments.action = Arguments::Action::MakeImage;
    return checkImage(arguments, parser.hasFormat);
}

/// Also for a command line that makes no sense: a program that asked for JSON gets JSON.
bool asksForJson(const QList<QByteArray> &words)
{
    return words.mid(0, words.indexOf("--")).contains("--json");
}

Arguments withUsageError(Arguments arguments, const QList<QByteArray> &words, const QString &message)
{
    arguments.json = asksForJson(words);
    arguments.action = Arguments::Action::ReportUsageError;
    arguments.usageError = message;
    return arguments;
}

/// The command's name and what stands before it.
bool isCommand(const QByteArray &word)
{
    return word == "scan" || word == "image" || word == "audio" || word == "inspect" || word == "verify"
        || word == "tracks" || word == "extract" || word == "convert" || word == "info" || word == "dvd"
        || word == "burn" || word == "blank" || word == "drives";
}

/// "help" and "help COMMAND".
Arguments helpAbout(const QList<QByteArray> &words)
{
    Arguments result;
    if (words.size() > 1)
        return withUsageError(result, words, QStringLiteral("help is about one command at a time"));
    const bool isAboutAll = words.isEmpty() || words.first() == "help";
    if (!isAboutAll && !isCommand(words.first()))
        return withUsageError(result, words, QStringLiteral("there is no command %1").arg(quoted(words.first())));
    result.action = Arguments::Action::ShowHelp;
    result.command = isAboutAll ? QByteArray() : words.first();
    return result;
}

} // namespace

Arguments parseArguments(const QList<QByteArray> &words)
{
    Arguments result;
    if (words.isEmpty())
        return withUsageError(result, words, QStringLiteral("no command was given"));
    QList<QByteArray> rest = words;
    if (words.first() == "help")
        return helpAbout(words.mid(1));
    if (isCommand(words.first()))
        result.command = rest.takeFirst();
    else if (!words.first().startsWith('-'))
        return withUsageError(result, words, QStringLiteral("there is no command %1").arg(quoted(words.first())));

    Parser parser(rest, result);
    if (!parser.parse())
        return withUsageError(result, words, result.usageError);
    if (parser.wantsHelp || parser.wantsVersion) {
        result.action = parser.wantsHelp ? Arguments::Action::ShowHelp : Arguments::Action::ShowVersion;
        return result;
    }
    if (result.command.isEmpty())
        return withUsageError(result, words, QStringLiteral("no command was given"));
    const QString error = checkCommand(result, parser);
    return error.isEmpty() ? result : withUsageError(result, words, error);
}

} // namespace Tessaron::Tool
