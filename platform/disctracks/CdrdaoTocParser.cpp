#include "platform/disctracks/CdrdaoTocParser.h"

#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/Subchannel.h"

#include <algorithm>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::size_t mostTracks = 99;
constexpr std::size_t mostIndexPoints = 98;
constexpr std::uint32_t mostLanguages = 8;
constexpr std::uint64_t bytesPerSample = 4;
constexpr std::uint64_t mostBytes = std::uint64_t(1) << 48; // sums of a file's worth of them stay far below 2^63

QString correctIt()
{
    return QStringLiteral("Correct the line, as the manual of cdrdao says.");
}

/// A whole number in decimal digits; no value for anything else, or one beyond what a file can have.
std::optional<std::uint64_t> wholeNumber(QStringView text)
{
    const bool areDigits =
        !text.isEmpty() && std::ranges::all_of(text, [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
    bool isNumber = false;
    const std::uint64_t number = text.toULongLong(&isNumber);
    return areDigits && isNumber && number <= mostBytes ? std::optional(number) : std::nullopt;
}

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

/// EBU's code of a language that cdrdao has a name for, or of a number.
std::uint8_t languageCode(const QString &word)
{
    static const std::map<QString, std::uint8_t> codes = {
        {QStringLiteral("EN"), CDTextBlock::english},
        {QStringLiteral("DE"), 0x08},
        {QStringLiteral("FR"), 0x0F},
        {QStringLiteral("ES"), 0x0A},
        {QStringLiteral("IT"), 0x15},
        {QStringLiteral("NL"), 0x1D},
    };
    if (const auto found = codes.find(word.toUpper()); found != codes.end())
        return found->second;
    const std::optional<std::uint64_t> number = wholeNumber(word);
    return number && *number <= 0xFF ? std::uint8_t(*number) : CDTextBlock::english;
}

std::optional<CDTextKind> textKind(const CdrdaoWord &word)
{
    static const std::map<QString, CDTextKind> kinds = {
        {QStringLiteral("TITLE"), CDTextKind::Title},
        {QStringLiteral("PERFORMER"), CDTextKind::Performer},
        {QStringLiteral("SONGWRITER"), CDTextKind::Songwriter},
        {QStringLiteral("COMPOSER"), CDTextKind::Composer},
        {QStringLiteral("ARRANGER"), CDTextKind::Arranger},
        {QStringLiteral("MESSAGE"), CDTextKind::Message},
        {QStringLiteral("DISC_ID"), CDTextKind::DiscIdentification},
        {QStringLiteral("UPC_EAN"), CDTextKind::Codes},
        {QStringLiteral("ISRC"), CDTextKind::Codes},
    };
    const auto found = kinds.find(word.text);
    return word.isQuoted || found == kinds.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

CdrdaoTocParser::CdrdaoTocParser(CueSheet *sheet, const CueSheetFiles &files, std::vector<CdrdaoWord> words)
    : m_sheet(*sheet)
    , m_files(files)
    , m_words(std::move(words))
{
    m_end.line = m_words.empty() ? 1 : m_words.back().line;
}

const CdrdaoWord &CdrdaoTocParser::take()
{
    return isAtEnd() ? m_end : m_words[m_next++];
}

NSError CdrdaoTocParser::misplaced(const CdrdaoWord &word)
{
    if (word.text.isEmpty() && !word.isQuoted)
        return cdrdaoError(word.line, QStringLiteral("The file ends too early."), correctIt());
    return cdrdaoError(word.line, QStringLiteral("\"%1\" does not belong here.").arg(word.text), correctIt());
}

NSError CdrdaoTocParser::parse()
{
    while (!isAtEnd()) {
        const CdrdaoWord &command = take();
        if (NSError error = takeCommand(command))
            return error;
    }
    if (!m_open)
        return cdrdaoError(0, QStringLiteral("The file is no table of contents of cdrdao with a track."),
                           QStringLiteral("Choose a .toc file of cdrdao."));
    if (NSError error = finishTrack())
        return error;
    m_sheet.contents.sessions.push_back({BlockAddress(), std::move(m_tracks)});
    putTexts();
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
                : cdrdaoError(command.line, QStringLiteral("%1 stands before the first TRACK.").arg(command.text),
                              correctIt());
    }
    const bool isKindOfDisc =
        command.is("CD_DA") || command.is("CD_ROM") || command.is("CD_ROM_XA") || command.is("CD_I");
    return isKindOfDisc && !m_open ? NSError() : misplaced(command);
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
    const CdrdaoWord &mode = take();
    const bool hasSubchannel = isSubchannelMode(peek());
    if (hasSubchannel)
        take();
    m_open.emplace();
    m_open->line = command.line;
    m_open->track.number = std::uint32_t(m_tracks.size() + 1);
    const QByteArray cueMode = mode.isQuoted ? QByteArray() : cueModeFor(mode.text, hasSubchannel);
    if (cueMode.isEmpty() || !setCueMode(cueMode, &m_open->track))
        return cdrdaoError(mode.line,
                           QStringLiteral("\"%1%2\" is no mode of a track that is known here.")
                               .arg(mode.text, hasSubchannel ? QStringLiteral(" with subchannel") : QString()),
                           QStringLiteral("Known are AUDIO, MODE1, MODE1_RAW, MODE2, MODE2_FORM1, MODE2_FORM2, "
                                          "MODE2_FORM_MIX and MODE2_RAW; AUDIO and the raw ones with RW or RW_RAW."));
    return {};
}

NSError CdrdaoTocParser::takeCatalog(const CdrdaoWord &command)
{
    const CdrdaoWord &number = take();
    if (isCatalogNumber(number.text.toUtf8()))
        m_sheet.contents.mediaCatalogNumber = number.text.toUtf8();
    else
        note(command.line,
             QStringLiteral("\"%1\" is no catalogue number of 13 digits and was passed over.").arg(number.text));
    return {};
}

NSError CdrdaoTocParser::takeIsrc(const CdrdaoWord &command)
{
    const CdrdaoWord &word = take();
    const QByteArray isrc = word.text.toUpper().toUtf8();
    if (isIsrc(isrc))
        m_open->track.isrc = isrc;
    else
        note(command.line, QStringLiteral("\"%1\" is no ISRC and was passed over.").arg(word.text));
    return {};
}

NSError CdrdaoTocParser::takeNo(const CdrdaoWord & /*command*/)
{
    const CdrdaoWord &flag = take();
    if (flag.is("COPY"))
        m_open->track.copyState = CopyState::Unstated;
    else if (flag.is("PRE_EMPHASIS"))
        m_open->track.hasPreEmphasis = false;
    else
        return misplaced(flag);
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
    const CdrdaoWord &word = peek();
    return !word.isQuoted && !word.text.isEmpty() && word.text[0] >= u'0' && word.text[0] <= u'9';
}

Result<std::uint64_t> CdrdaoTocParser::takeBytes(const CdrdaoTrack &open)
{
    const CdrdaoWord &word = take();
    const std::optional<MSF> time = word.isQuoted ? std::nullopt : MSF::fromText(word.text.toUtf8());
    if (time && time->isRegular())
        return std::uint64_t(time->totalFrames()) * open.track.blockSize;
    const std::optional<std::uint64_t> number = word.isQuoted ? std::nullopt : wholeNumber(word.text);
    if (!number)
        return cdrdaoError(
            word.line, QStringLiteral("\"%1\" is no length.").arg(word.text),
            QStringLiteral("Write minutes:seconds:frames, or a number of samples (of bytes for a file of data)."));
    return open.track.isAudio() ? *number * bytesPerSample : *number;
}

Result<std::uint64_t> CdrdaoTocParser::takeBlocks()
{
    const std::uint32_t line = peek().line;
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
        if (!measured)
            return cdrdaoError(
                line,
                QStringLiteral("\"%1\" cannot be read: %2")
                    .arg(QString::fromUtf8(m_sheet.files[file].name), measured.error().localizedFailureReason()),
                QStringLiteral("Put the file beside the .toc file, or correct its name there."));
        length = *measured;
    }
    m_lengths.emplace(file, length);
    return length;
}

NSError CdrdaoTocParser::takeFile(const CdrdaoWord &command)
{
    const CdrdaoWord &name = take();
    if (!name.isQuoted || name.text.isEmpty())
        return misplaced(name);
    if (!m_open->track.isAudio())
        return takeDataFile({name.text, command.line, true});
    const QString lower = name.text.toLower();
    const bool isSwapped = peek().is("SWAP");
    if (isSwapped)
        take();
    CueFileType type = isSwapped ? CueFileType::Binary : CueFileType::Motorola;
    if (lower.endsWith(QStringLiteral(".mp3")))
        type = CueFileType::Mp3;
    else if (lower.endsWith(QStringLiteral(".wav")) || lower.endsWith(QStringLiteral(".ogg")))
        type = CueFileType::Wave;
    Range range;
    if (!peek().isQuoted && peek().text.startsWith(u'#')) {
        const CdrdaoWord &offset = take();
        const std::optional<std::uint64_t> number = wholeNumber(QStringView(offset.text).sliced(1));
        if (!number)
            return misplaced(offset);
        range.offset = *number;
    }
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

/// The command itself, or the quoted name behind another command that means the same.
NSError CdrdaoTocParser::takeDataFile(const CdrdaoWord &command)
{
    const CdrdaoWord &name = command.isQuoted ? command : take();
    if (!name.isQuoted || name.text.isEmpty())
        return misplaced(name);
    const QString fileName = name.text;
    Range range;
    if (!peek().isQuoted && peek().text.startsWith(u'#')) {
        const CdrdaoWord &offset = take();
        const std::optional<std::uint64_t> number = wholeNumber(QStringView(offset.text).sliced(1));
        if (!number)
            return misplaced(offset);
        range.offset = *number;
    }
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
    while (command.is("ZERO") && !isLengthNext() && !isAtEnd()) {
        const CdrdaoWord &word = take();
        if (!isSubchannelMode(word) && cueModeFor(word.text, false).isEmpty())
            return misplaced(word);
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
        return misplaced(command);
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
        return misplaced(command);
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
        return cdrdaoError(command.line, QStringLiteral("The track has more than 99 indexes."), correctIt());
    m_open->indexes.emplace_back(*blocks, command.line);
    return {};
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
            return cdrdaoError(line, QStringLiteral("This INDEX lies behind the end of its track, or before another."),
                               correctIt());
        track.indexPoints.push_back(point);
    }
    if (!place.isLengthKnown)
        track.length = std::max(track.length, track.indexPoints.empty() ? 0 : track.indexPoints.back() + 1);
    m_tracks.push_back(track);
    m_sheet.places.push_back(std::move(place));
    return {};
}

NSError CdrdaoTocParser::skipBraces()
{
    if (!peek().is("{"))
        return misplaced(peek());
    std::size_t depth = 0;
    do {
        const CdrdaoWord &word = take();
        if (word.is("{"))
            ++depth;
        else if (word.is("}"))
            --depth;
        else if (isAtEnd())
            return misplaced(m_end);
    } while (depth > 0);
    return {};
}

/// { LANGUAGE_MAP { … } LANGUAGE n { … } … }
NSError CdrdaoTocParser::takeTexts(const CdrdaoWord & /*command*/)
{
    if (const CdrdaoWord &brace = take(); !brace.is("{"))
        return misplaced(brace);
    while (!isAtEnd()) {
        const CdrdaoWord &word = take();
        if (word.is("}"))
            return {};
        NSError error;
        if (word.is("LANGUAGE_MAP"))
            error = takeLanguageMap();
        else if (word.is("LANGUAGE"))
            error = takeLanguage();
        else
            error = misplaced(word);
        if (error)
            return error;
    }
    return misplaced(m_end);
}

/// { 0 : EN  1: 8 … }, the colon with blanks around it or without.
NSError CdrdaoTocParser::takeLanguageMap()
{
    if (const CdrdaoWord &brace = take(); !brace.is("{"))
        return misplaced(brace);
    QString pairs;
    for (;;) {
        const CdrdaoWord &word = take();
        if (word.is("}"))
            break;
        if (word.isQuoted || word.text.isEmpty() || word.is("{"))
            return misplaced(word);
        pairs += word.text + u' ';
    }
    const QStringList words = pairs.replace(u':', u' ').split(u' ', Qt::SkipEmptyParts);
    for (qsizetype at = 0; at + 1 < words.size(); at += 2) {
        const std::optional<std::uint64_t> number = wholeNumber(words[at]);
        if (number && *number < mostLanguages)
            m_languages[std::uint32_t(*number)] = languageCode(words[at + 1]);
    }
    return {};
}

/// n { TITLE "…" PERFORMER "…" SIZE_INFO { … } }
NSError CdrdaoTocParser::takeLanguage()
{
    const CdrdaoWord &numberWord = take();
    const std::optional<std::uint64_t> number = wholeNumber(numberWord.text);
    if (numberWord.isQuoted || !number || *number >= mostLanguages)
        return cdrdaoError(numberWord.line, QStringLiteral("LANGUAGE needs a number from 0 to 7."), correctIt());
    if (const CdrdaoWord &brace = take(); !brace.is("{"))
        return misplaced(brace);
    const std::size_t place = m_open ? m_tracks.size() + 1 : 0;
    while (!isAtEnd()) {
        const CdrdaoWord word = take();
        if (word.is("}"))
            return {};
        if (peek().is("{")) { // bytes
            if (!word.is("SIZE_INFO")) // which is made anew
                note(word.line, QStringLiteral("The bytes of %1 were passed over.").arg(word.text));
            if (NSError error = skipBraces())
                return error;
            continue;
        }
        const CdrdaoWord &text = take();
        if (word.isQuoted || !text.isQuoted)
            return misplaced(text.isQuoted ? word : text);
        const std::optional<CDTextKind> kind = textKind(word);
        if (!kind) {
            note(word.line, QStringLiteral("%1 is not known and was passed over.").arg(word.text));
            continue;
        }
        std::vector<QString> &texts = m_texts[std::uint32_t(*number)].texts[*kind];
        texts.resize(std::max(texts.size(), place + 1));
        texts[place] = text.text;
    }
    return misplaced(m_end);
}

void CdrdaoTocParser::putTexts()
{
    const std::size_t count = m_sheet.contents.trackCount() + 1;
    for (auto &[number, block] : m_texts) {
        if (block.texts.empty())
            continue;
        bool isLatin = true;
        for (auto &[kind, texts] : block.texts) {
            texts.resize(count);
            for (const QString &text : texts)
                isLatin &= std::ranges::all_of(text, [](QChar character) { return character.unicode() <= 0xFF; });
        }
        const auto language = m_languages.find(number);
        block.language = language == m_languages.end() ? CDTextBlock::english : language->second;
        block.encoding = isLatin ? CDTextEncoding::Latin1 : CDTextEncoding::ShiftJis;
        m_sheet.contents.cdText.blocks.push_back(block);
    }
}

} // namespace Tessaron
