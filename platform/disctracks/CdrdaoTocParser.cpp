#include "platform/disctracks/CdrdaoTocParser.h"

#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/DescribedFilePath.h"
#include "platform/disctracks/Subchannel.h"

#include <algorithm>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::size_t mostTracks = 99;
constexpr std::size_t mostIndexPoints = 98;
constexpr std::uint64_t bytesPerSample = 4;

/// What a cue sheet calls a track of this mode; empty for one that is not known.
QByteArray cueModeFor(const QString &mode, bool hasSubchannel)
{
    if (hasSubchannel)
        return mode == u"AUDIO"    ? "CDG"
            : mode == u"MODE1_RAW" ? "MODE1/2448"
            : mode == u"MODE2_RAW" ? "MODE2/2448"
                                   : "";
    static const std::map<QString, QByteArray> modes = {
        {QStringLiteral("AUDIO"), "AUDIO"},
        {QStringLiteral("MODE1"), "MODE1/2048"},
        {QStringLiteral("MODE1_RAW"), "MODE1/2352"},
        {QStringLiteral("MODE2"), "MODE2/2336"},
        {QStringLiteral("MODE2_FORM1"), "MODE2/2048"},
        {QStringLiteral("MODE2_FORM2"), "MODE2/2324"},
        {QStringLiteral("MODE2_FORM_MIX"), "MODE2/2336"},
        {QStringLiteral("MODE2_RAW"), "MODE2/2352"},
    };
    const auto found = modes.find(mode);
    return found == modes.end() ? QByteArray() : found->second;
}

bool isSubchannelMode(const CdrdaoWord &word)
{
    return word.is("RW") || word.is("RW_RAW");
}

} // namespace

CdrdaoTocParser::CdrdaoTocParser(CueSheet *sheet, const CueSheetFiles &files, std::vector<CdrdaoWord> words)
    : m_sheet(*sheet)
    , m_files(files)
    , m_words(std::move(words))
    , m_texts(&m_words, &sheet->notes)
{
}

NSError CdrdaoTocParser::parse()
{
    while (!m_words.isAtEnd()) {
        const CdrdaoWord &command = m_words.take();
        if (NSError error = takeCommand(command))
            return error;
    }
    if (!m_open)
        return cdrdaoError(0, QStringLiteral("The file is not a table of contents of cdrdao with a track."),
                           QStringLiteral("Choose a .toc file of cdrdao."));
    if (NSError error = finishTrack())
        return error;
    m_sheet.contents.sessions.push_back({BlockAddress(), std::move(m_tracks)});
    m_sheet.contents.cdText = m_texts.cdText(m_sheet.contents.trackCount());
    return {};
}

NSError CdrdaoTocParser::takeCommand(const CdrdaoWord &command)
{
    static const std::map<QString, Handler> handlers = {
        {QStringLiteral("TRACK"), &CdrdaoTocParser::takeTrack},
        {QStringLiteral("CATALOG"), &CdrdaoTocParser::takeCatalog},
        {QStringLiteral("CD_TEXT"), &CdrdaoTocParser::takeTexts},
    };
    static const std::map<QString, Handler> handlersOfTracks = {
        {QStringLiteral("ISRC"), &CdrdaoTocParser::takeIsrc},
        {QStringLiteral("NO"), &CdrdaoTocParser::takeNo},
        {QStringLiteral("COPY"), &CdrdaoTocParser::takeFlag},
        {QStringLiteral("PRE_EMPHASIS"), &CdrdaoTocParser::takeFlag},
        {QStringLiteral("TWO_CHANNEL_AUDIO"), &CdrdaoTocParser::takeFlag},
        {QStringLiteral("FOUR_CHANNEL_AUDIO"), &CdrdaoTocParser::takeFlag},
        {QStringLiteral("FILE"), &CdrdaoTocParser::takeFile},
        {QStringLiteral("AUDIOFILE"), &CdrdaoTocParser::takeFile},
        {QStringLiteral("DATAFILE"), &CdrdaoTocParser::takeDataFile},
        {QStringLiteral("FIFO"), &CdrdaoTocParser::takeFifo},
        {QStringLiteral("SILENCE"), &CdrdaoTocParser::takeSilence},
        {QStringLiteral("ZERO"), &CdrdaoTocParser::takeSilence},
        {QStringLiteral("PREGAP"), &CdrdaoTocParser::takePregap},
        {QStringLiteral("START"), &CdrdaoTocParser::takeStart},
        {QStringLiteral("INDEX"), &CdrdaoTocParser::takeIndex},
    };
    if (!command.isQuoted) {
        if (const auto handler = handlers.find(command.text); handler != handlers.end())
            return (this->*handler->second)(command);
        if (const auto handler = handlersOfTracks.find(command.text); handler != handlersOfTracks.end())
            return m_open
                ? (this->*handler->second)(command)
                : cdrdaoError(command.line, QStringLiteral("%1 stands before the first TRACK.").arg(command.text));
    }
    const bool isKindOfDisc =
        command.is("CD_DA") || command.is("CD_ROM") || command.is("CD_ROM_XA") || command.is("CD_I");
    return isKindOfDisc && !m_open ? NSError() : misplacedWord(command);
}

NSError CdrdaoTocParser::takeTrack(const CdrdaoWord &command)
{
    if (m_open) {
        if (NSError error = finishTrack())
            return error;
    }
    if (m_tracks.size() >= mostTracks)
        return cdrdaoError(command.line, QStringLiteral("There are more tracks than the 99 that a disc can have."),
                           QStringLiteral("Remove tracks."));
    const CdrdaoWord &mode = m_words.take();
    const bool hasSubchannel = isSubchannelMode(m_words.peek());
    if (hasSubchannel)
        m_words.take();
    m_open.emplace();
    m_open->line = command.line;
    m_open->track.number = std::uint32_t(m_tracks.size() + 1);
    const QByteArray cueMode = mode.isQuoted ? QByteArray() : cueModeFor(mode.text, hasSubchannel);
    if (cueMode.isEmpty() || !setCueMode(cueMode, &m_open->track))
        return cdrdaoError(mode.line,
                           QStringLiteral("\"%1%2\" is not a mode of a track that is known here.")
                               .arg(mode.text, hasSubchannel ? QStringLiteral(" with subchannel") : QString()),
                           QStringLiteral("Known are AUDIO, MODE1, MODE1_RAW, MODE2, MODE2_FORM1, MODE2_FORM2, "
                                          "MODE2_FORM_MIX and MODE2_RAW; AUDIO and the raw ones with RW or RW_RAW."));
    return {};
}

NSError CdrdaoTocParser::takeCatalog(const CdrdaoWord &command)
{
    const CdrdaoWord &number = m_words.take();
    if (isCatalogNumber(number.text.toUtf8()))
        m_sheet.contents.mediaCatalogNumber = number.text.toUtf8();
    else
        note(command.line,
             QStringLiteral("\"%1\" is not a catalogue number of 13 digits and was passed over.").arg(number.text));
    return {};
}

NSError CdrdaoTocParser::takeIsrc(const CdrdaoWord &command)
{
    const CdrdaoWord &word = m_words.take();
    const QByteArray isrc = word.text.toUpper().toUtf8();
    if (isIsrc(isrc))
        m_open->track.isrc = isrc;
    else
        note(command.line, QStringLiteral("\"%1\" is not an ISRC and was passed over.").arg(word.text));
    return {};
}

NSError CdrdaoTocParser::takeNo(const CdrdaoWord & /*command*/)
{
    const CdrdaoWord &flag = m_words.take();
    if (flag.is("COPY"))
        m_open->track.copyState = CopyState::Unstated;
    else if (flag.is("PRE_EMPHASIS"))
        m_open->track.hasPreEmphasis = false;
    else
        return misplacedWord(flag);
    return {};
}

NSError CdrdaoTocParser::takeFlag(const CdrdaoWord &command)
{
    if (command.is("COPY"))
        m_open->track.copyState = CopyState::CopyrightFree;
    else if (command.is("PRE_EMPHASIS"))
        m_open->track.hasPreEmphasis = true;
    else
        m_open->track.hasFourChannels = command.is("FOUR_CHANNEL_AUDIO");
    return {};
}

bool CdrdaoTocParser::isLengthNext() const
{
    const CdrdaoWord &word = m_words.peek();
    return !word.isQuoted && !word.text.isEmpty() && word.text[0] >= u'0' && word.text[0] <= u'9';
}

Result<std::uint64_t> CdrdaoTocParser::takeBytes(const CdrdaoTrack &open)
{
    const CdrdaoWord &word = m_words.take();
    const std::optional<MSF> time = word.isQuoted ? std::nullopt : MSF::fromText(word.text.toUtf8());
    if (time && time->isRegular())
        return std::uint64_t(time->totalFrames()) * open.track.blockSize;
    const std::optional<std::uint64_t> number = word.isQuoted ? std::nullopt : cdrdaoNumber(word.text);
    if (!number)
        return cdrdaoError(
            word.line, QStringLiteral("\"%1\" is not a length.").arg(word.text),
            QStringLiteral("Write minutes:seconds:frames, or a number of samples (of bytes for a file of data)."));
    return open.track.isAudio() ? *number * bytesPerSample : *number;
}

Result<std::uint64_t> CdrdaoTocParser::takeBlocks()
{
    const std::uint32_t line = m_words.peek().line;
    const Result<std::uint64_t> bytes = takeBytes(*m_open);
    if (!bytes)
        return bytes.error();
    if (*bytes % m_open->track.blockSize != 0)
        return cdrdaoError(line, QStringLiteral("The length makes no whole blocks."),
                           QStringLiteral("Write minutes:seconds:frames."));
    return *bytes / m_open->track.blockSize;
}

std::size_t CdrdaoTocParser::fileNamed(const QString &name, CueFileType type)
{
    std::vector<CueFile> &files = m_sheet.files;
    const QByteArray bytes = name.toUtf8();
    const auto found =
        std::ranges::find_if(files, [&](const CueFile &file) { return file.name == bytes && file.type == type; });
    if (found != files.end())
        return std::size_t(found - files.begin());
    files.push_back({bytes, {}, type, {}});
    return files.size() - 1;
}

Result<std::optional<std::uint64_t>> CdrdaoTocParser::lengthOf(std::size_t file, std::uint32_t line)
{
    if (const auto known = m_lengths.find(file); known != m_lengths.end())
        return known->second;
    std::optional<std::uint64_t> length;
    if (m_files.measure) {
        const Result<std::optional<std::uint64_t>> measured = m_files.measure(&m_sheet.files[file]);
        const QString remedy = measured.error().localizedRecoverySuggestion();
        if (!measured)
            return cdrdaoError(
                line,
                QStringLiteral("\"%1\" cannot be read: %2")
                    .arg(QString::fromUtf8(m_sheet.files[file].name), measured.error().localizedFailureReason()),
                remedy.isEmpty() ? QStringLiteral("Put the file beside the .toc file, or correct its name there.")
                                 : remedy);
        length = *measured;
        if (const QString other = noteOfOtherName(m_sheet.files[file]); !other.isEmpty())
            note(line, other);
    }
    m_lengths.emplace(file, length);
    return length;
}

NSError CdrdaoTocParser::takeFile(const CdrdaoWord &command)
{
    const CdrdaoWord &name = m_words.take();
    if (!name.isQuoted || name.text.isEmpty())
        return misplacedWord(name);
    if (!m_open->track.isAudio())
        return takeDataFile({name.text, command.line, true});
    const QString lower = name.text.toLower();
    const bool isSwapped = m_words.peek().is("SWAP");
    if (isSwapped)
        m_words.take();
    CueFileType type = isSwapped ? CueFileType::Binary : CueFileType::Motorola;
    if (lower.endsWith(QStringLiteral(".mp3")))
        type = CueFileType::Mp3;
    else if (lower.endsWith(QStringLiteral(".wav")) || lower.endsWith(QStringLiteral(".ogg")))
        type = CueFileType::Wave;
    Range range;
    if (NSError error = takeOffset(&range))
        return error;
    const Result<std::uint64_t> start = takeBytes(*m_open);
    if (!start)
        return start.error();
    range.offset += *start;
    if (isLengthNext()) {
        const Result<std::uint64_t> length = takeBytes(*m_open);
        if (!length)
            return length.error();
        if (*length > 0) // 0 stands for all the rest
            range.length = *length;
    }
    return addPiece(fileNamed(name.text, type), range, command.line);
}

/// "#" and a number of bytes, where that comes next.
NSError CdrdaoTocParser::takeOffset(Range *range)
{
    if (m_words.peek().isQuoted || !m_words.peek().text.startsWith(u'#'))
        return {};
    const CdrdaoWord &offset = m_words.take();
    const std::optional<std::uint64_t> number = cdrdaoNumber(QStringView(offset.text).sliced(1));
    if (!number)
        return misplacedWord(offset);
    range->offset = *number;
    return {};
}

/// The command itself, or the quoted name behind another command that means the same.
NSError CdrdaoTocParser::takeDataFile(const CdrdaoWord &command)
{
    const CdrdaoWord &name = command.isQuoted ? command : m_words.take();
    if (!name.isQuoted || name.text.isEmpty())
        return misplacedWord(name);
    const QString fileName = name.text;
    Range range;
    if (NSError error = takeOffset(&range))
        return error;
    if (isLengthNext()) {
        const Result<std::uint64_t> length = takeBytes(*m_open);
        if (!length)
            return length.error();
        range.length = *length;
    }
    const CueFileType type = m_open->track.isAudio() ? CueFileType::Motorola : CueFileType::Binary;
    return addPiece(fileNamed(fileName, type), range, command.line);
}

NSError CdrdaoTocParser::takeFifo(const CdrdaoWord &command)
{
    return cdrdaoError(command.line, QStringLiteral("The track's data comes from a pipe, which is read only once."),
                       QStringLiteral("Put the data into a file, and name it with DATAFILE or AUDIOFILE."));
}

NSError CdrdaoTocParser::addPiece(std::size_t file, const Range &range, std::uint32_t line)
{
    const Result<std::optional<std::uint64_t>> measured = lengthOf(file, line);
    if (!measured)
        return measured.error();
    const std::optional<std::uint64_t> there = *measured;
    if (there && (range.offset > *there || range.length.value_or(0) > *there - range.offset))
        return cdrdaoError(line,
                           QStringLiteral("The piece lies beyond the end of \"%1\", which has %2 bytes.")
                               .arg(QString::fromUtf8(m_sheet.files[file].name))
                               .arg(*there),
                           QStringLiteral("Use the file that the table was made for, or correct the length."));
    const std::uint32_t blockSize = m_open->track.blockSize;
    std::uint64_t bytes = 0;
    if (range.length)
        bytes = *range.length;
    else if (there)
        bytes = *there - range.offset;
    else
        m_open->isLengthKnown = false;
    if (bytes % blockSize != 0)
        note(line,
             QStringLiteral("The piece of \"%1\" ends with %2 bytes that fill no block of %3.")
                 .arg(QString::fromUtf8(m_sheet.files[file].name))
                 .arg(bytes % blockSize)
                 .arg(blockSize));
    const std::uint64_t blocks = bytes / blockSize;
    m_open->restBytes = m_sheet.files[file].isSound() ? std::uint32_t(bytes % blockSize) : 0;
    m_open->pieces.push_back({CueRun{file, range.offset, blocks}, blocks, line});
    return {};
}

NSError CdrdaoTocParser::takeSilence(const CdrdaoWord &command)
{
    // ZERO may name a mode, which must be the track's own, and a form of subchannel.
    while (command.is("ZERO") && !isLengthNext() && !m_words.isAtEnd()) {
        const CdrdaoWord &word = m_words.take();
        if (!isSubchannelMode(word) && cueModeFor(word.text, false).isEmpty())
            return misplacedWord(word);
    }
    const Result<std::uint64_t> blocks = takeBlocks();
    if (!blocks)
        return blocks.error();
    m_open->restBytes = 0; // they end no track
    m_open->pieces.push_back({std::nullopt, *blocks, command.line});
    return {};
}

NSError CdrdaoTocParser::takePregap(const CdrdaoWord &command)
{
    if (!m_open->pieces.empty() || m_open->start)
        return misplacedWord(command);
    const Result<std::uint64_t> blocks = takeBlocks();
    if (!blocks)
        return blocks.error();
    m_open->pieces.push_back({std::nullopt, *blocks, command.line});
    m_open->start = *blocks;
    return {};
}

NSError CdrdaoTocParser::takeStart(const CdrdaoWord &command)
{
    if (m_open->start)
        return misplacedWord(command);
    if (isLengthNext()) {
        const Result<std::uint64_t> blocks = takeBlocks();
        if (!blocks)
            return blocks.error();
        m_open->start = *blocks;
        return {};
    }
    m_open->start = 0;
    for (const CdrdaoPiece &piece : m_open->pieces)
        *m_open->start += piece.blocks;
    return {};
}

NSError CdrdaoTocParser::takeIndex(const CdrdaoWord &command)
{
    const Result<std::uint64_t> blocks = takeBlocks();
    if (!blocks)
        return blocks.error();
    if (m_open->indexes.size() >= mostIndexPoints)
        return cdrdaoError(command.line, QStringLiteral("The track has more than 99 indexes."));
    m_open->indexes.emplace_back(*blocks, command.line);
    return {};
}

NSError CdrdaoTocParser::takeTexts(const CdrdaoWord & /*command*/)
{
    return m_texts.take(m_open ? m_tracks.size() + 1 : 0);
}

/// How much of the track's silence no file need hold: `lead` blocks in front, within the pregap, and `tail` at the end.
NSError CdrdaoTocParser::takeGaps(std::uint64_t *lead, std::uint64_t *tail)
{
    const std::vector<CdrdaoPiece> &pieces = m_open->pieces;
    std::size_t first = 0;
    for (*lead = 0; first < pieces.size() && !pieces[first].run; ++first)
        *lead += pieces[first].blocks;
    std::size_t last = pieces.size();
    for (*tail = 0; last > first && !pieces[last - 1].run; --last)
        *tail += pieces[last - 1].blocks;
    const auto isSilent = [](const CdrdaoPiece &piece) { return !piece.run && piece.blocks > 0; };
    const auto begin = pieces.begin();
    const auto silent = std::find_if(begin + std::ptrdiff_t(first), begin + std::ptrdiff_t(last), isSilent);
    if (silent != begin + std::ptrdiff_t(last))
        return cdrdaoError(silent->line, QStringLiteral("There is silence between two pieces of the track."),
                           QStringLiteral("Put the silence into the file."));
    const std::uint64_t start = m_open->start.value_or(0);
    if (first == last && *lead > start) { // silence all through
        *tail = *lead - start;
        *lead = start;
    }
    if (*lead > 0 && *lead != start)
        return cdrdaoError(
            m_open->line,
            QStringLiteral("The silence in front of track %1 is not its pregap.").arg(m_open->track.number),
            QStringLiteral("Write START behind the silence, or put the silence into the file."));
    return {};
}

/// Gives the track the blocks of its pieces; those of silence are its gaps.
NSError CdrdaoTocParser::placePieces(std::uint64_t lead, std::uint64_t tail, CueTrackPlace *place)
{
    DiscTrack &track = m_open->track;
    const std::uint64_t start = m_open->start.value_or(0);
    std::uint64_t stored = 0;
    const std::uint64_t pregap = lead > 0 ? 0 : start; // that the files hold
    for (const CdrdaoPiece &piece : m_open->pieces) {
        if (!piece.run || piece.blocks == 0)
            continue;
        CueRun run = *piece.run;
        if (stored < pregap) {
            CueRun part = run;
            part.blocks = std::min(run.blocks, pregap - stored);
            place->pregap.push_back(part);
            run.offset += part.blocks * track.blockSize;
            run.blocks -= part.blocks;
            stored += part.blocks;
        }
        if (run.blocks > 0)
            place->data.push_back(run);
        stored += run.blocks;
    }
    if (stored < pregap)
        return cdrdaoError(m_open->line,
                           QStringLiteral("The pregap of track %1 is longer than what stands there.").arg(track.number),
                           QStringLiteral("Correct START, or the lengths of the files."));
    track.pregap = {start, lead == 0};
    track.length = stored - pregap + tail;
    track.postgap = {tail, false};
    return {};
}

NSError CdrdaoTocParser::finishTrack()
{
    std::uint64_t lead = 0;
    std::uint64_t tail = 0;
    CueTrackPlace place;
    place.isLengthKnown = m_open->isLengthKnown;
    place.restBytes = m_open->restBytes;
    NSError error = takeGaps(&lead, &tail);
    if (!error)
        error = placePieces(lead, tail, &place);
    if (error)
        return error;
    DiscTrack &track = m_open->track;
    if (track.length == 0 && place.isLengthKnown)
        return cdrdaoError(m_open->line, QStringLiteral("Track %1 has no blocks.").arg(track.number),
                           QStringLiteral("Name its file, or correct the length."));
    for (const auto &[point, line] : m_open->indexes) {
        const std::uint64_t before = track.indexPoints.empty() ? 0 : track.indexPoints.back();
        if (point <= before || (place.isLengthKnown && point >= track.length))
            return cdrdaoError(line, QStringLiteral("This INDEX lies behind the end of its track, or before another."));
        track.indexPoints.push_back(point);
    }
    if (!place.isLengthKnown)
        track.length = std::max(track.length, track.indexPoints.empty() ? 0 : track.indexPoints.back() + 1);
    m_tracks.push_back(track);
    m_sheet.places.push_back(std::move(place));
    return {};
}

} // namespace Tessaron
