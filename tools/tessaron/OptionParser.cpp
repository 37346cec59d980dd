#include "tools/tessaron/OptionParser.h"

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/OptionTable.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VolumeJson.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Tessaron::Tool
{

namespace
{

QString text(const QByteArray &bytes)
{
    return stringWithFileSystemRepresentation(bytes);
}

} // namespace

bool OptionParser::fail(const QString &message)
{
    m_arguments.usageError = message;
    return false;
}

bool OptionParser::parse()
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

bool OptionParser::parseLongOption(const QByteArray &word)
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

bool OptionParser::parseShortOptions(const QByteArray &word)
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

bool OptionParser::takeValue(const QByteArray &shownName, QByteArray *value)
{
    if (m_next >= m_words.size())
        return fail(QStringLiteral("the option %1 needs a value").arg(text(shownName)));
    *value = m_words[m_next++];
    return true;
}

bool OptionParser::apply(const OptionDescription &option, const QByteArray &shownName, const QByteArray &value)
{
    if (option.valueName != nullptr && value.isEmpty())
        return fail(QStringLiteral("the value of %1 is empty").arg(text(shownName)));
    switch (option.option) {
    case Option::Help:
        m_named.wantsHelp = true;
        return true;
    case Option::Version:
        m_named.wantsVersion = true;
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
    case Option::Split:
        return setSplitCapacity(value);
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
    case Option::Filesystem:
        return setFilesystem(value);
    case Option::Files:
        m_named.takesFiles = true;
        return true;
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
        m_named.soundFormat = value;
        return true;
    case Option::VariableBitRate:
        return setBitRate(value, shownName, &m_named.variableBitRate);
    case Option::ConstantBitRate:
        return setBitRate(value, shownName, &m_named.constantBitRate);
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
        m_named.playsDVD = true;
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
    case Option::Audio:
        m_arguments.isSound = true;
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

bool OptionParser::setProgress(const QByteArray &value)
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
        return fail(QStringLiteral("%1 is not a kind of progress; use auto, bar, json or none").arg(quoted(value)));
    return true;
}

bool OptionParser::setFormat(const QByteArray &value)
{
    if (value == "iso")
        m_arguments.format = DiscFormat::ISO;
    else if (value == "bin")
        m_arguments.format = DiscFormat::BIN;
    else if (value == "vant")
        m_arguments.format = DiscFormat::VANT;
    else
        return fail(QStringLiteral("%1 is not an image format; use iso, bin or vant").arg(quoted(value)));
    m_named.hasFormat = true;
    return true;
}

bool OptionParser::setSoundFormat(const QByteArray &value)
{
    if (value != "wav" && value != "flac")
        return fail(QStringLiteral("%1 is not a sound format; use wav or flac").arg(quoted(value)));
    m_arguments.sound = value == "flac" ? ExtractedSound::FLAC : ExtractedSound::WAVE;
    m_named.hasFormat = true;
    return true;
}

bool OptionParser::setFilesystems(const QByteArray &value)
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

bool OptionParser::setFilesystem(const QByteArray &value)
{
    for (const VolumeKind kind :
         {VolumeKind::RockRidge, VolumeKind::UDF, VolumeKind::HFSPlus, VolumeKind::Joliet, VolumeKind::ISO9660}) {
        if (text(value) == volumeKindKey(kind)) {
            m_arguments.extractedFilesystem = kind;
            return true;
        }
    }
    return fail(
        QStringLiteral("there is no filesystem %1; use rockridge, udf, hfs+, joliet or iso9660").arg(quoted(value)));
}

bool OptionParser::setGap(const QByteArray &value)
{
    constexpr double longestGap = 99.0 * 60;
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0) || seconds > longestGap)
        return fail(QStringLiteral("%1 is not a number of seconds; use 2 or 0.5, for example").arg(quoted(value)));
    m_arguments.gap = std::uint32_t(std::lround(seconds * double(MSF::framesPerSecond)));
    return true;
}

bool OptionParser::setCapacity(const QByteArray &value)
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

bool OptionParser::setTrack(const QByteArray &value)
{
    constexpr unsigned int mostTracks = 99;
    bool isNumber = false;
    const unsigned int number = value.toUInt(&isNumber);
    if (value != "all" && (!isNumber || number > mostTracks))
        return fail(QStringLiteral("%1 is not a track; use a number from 1 to 99, 0 for what is in front of the first "
                                   "track, or all")
                        .arg(quoted(value)));
    m_arguments.track = value == "all" ? std::nullopt : std::optional(number);
    m_named.hasTrack = true;
    return true;
}

bool OptionParser::setBitRate(const QByteArray &value, const QByteArray &shownName, int *rate)
{
    if (value != "128" && value != "160")
        return fail(QStringLiteral("%1 is not a bit rate for %2; use 128 or 160").arg(quoted(value), text(shownName)));
    *rate = value.toInt();
    return true;
}

bool OptionParser::setJobs(const QByteArray &value)
{
    constexpr unsigned int mostJobs = 256;
    bool isNumber = false;
    m_arguments.jobs = value.toUInt(&isNumber);
    return (isNumber && m_arguments.jobs >= 1 && m_arguments.jobs <= mostJobs)
        || fail(QStringLiteral("%1 is not a number of jobs; use one from 1 to %2").arg(quoted(value)).arg(mostJobs));
}

/// Of discs that differ a little, such as DVD-R and DVD+R, the smaller ones. Most CDs of 80 minutes say of themselves
/// that they have room for 359,849 blocks, and no more is written to them.
bool OptionParser::setSplitCapacity(const QByteArray &value)
{
    constexpr std::uint64_t blockSize = 2048;
    constexpr std::uint64_t smallest = 1'000'000; // an empty image has more than half of it
    constexpr std::uint64_t largest = 1'000'000'000'000'000;
    constexpr std::array<std::pair<const char *, std::uint64_t>, 5> discs = {
        {{"cd", 359'849}, {"dvd", 2'295'104}, {"dvd-dl", 4'171'712}, {"bd", 12'219'392}, {"bd-dl", 24'438'784}}};
    for (const auto &[name, blocks] : discs) {
        if (value == name) {
            m_arguments.splitCapacity = blocks * blockSize;
            return true;
        }
    }
    const qsizetype unit = QByteArrayView("kMG").indexOf(value.back());
    bool isNumber = false;
    std::uint64_t bytes = (unit < 0 ? value : value.chopped(1)).toULongLong(&isNumber);
    for (qsizetype step = 0; step <= unit; ++step)
        bytes = std::min(bytes, largest) * 1000;
    m_arguments.splitCapacity = bytes;
    return (isNumber && bytes >= smallest && bytes <= largest)
        || fail(QStringLiteral("%1 is not a capacity; use cd, dvd, dvd-dl, bd, bd-dl, or bytes such as 700M or 25G")
                    .arg(quoted(value)));
}

bool OptionParser::setSpeed(const QByteArray &value)
{
    constexpr double fastest = 100;
    bool isNumber = false;
    m_arguments.speed = (value.endsWith('x') ? value.chopped(1) : value).toDouble(&isNumber);
    return (isNumber && m_arguments.speed > 0 && m_arguments.speed <= fastest)
        || fail(QStringLiteral("%1 is not a speed; use a multiple of the single speed, such as 4 or 8")
                    .arg(quoted(value)));
}

bool OptionParser::setNumber(const QByteArray &value, const char *what, std::uint16_t most, std::uint16_t *number)
{
    bool isNumber = false;
    *number = value.toUShort(&isNumber);
    return (isNumber && *number >= 1 && *number <= most)
        || fail(QStringLiteral("%1 is not a %2; use a number from 1 to %3")
                    .arg(quoted(value), QLatin1String(what))
                    .arg(most));
}

} // namespace Tessaron::Tool
