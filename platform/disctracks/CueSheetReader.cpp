#include "platform/disctracks/CueSheetReader.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/Subchannel.h"
#include "platform/disctracks/TextEncodings.h"

#include <QStringList>

#include <algorithm>
#include <map>

namespace Tessaron
{

namespace
{

constexpr unsigned int mostTracks = 99;
constexpr unsigned int mostIndex = 99;

NSError sheetError(std::uint32_t line, const QString &reason, const QString &remedy)
{
    const QString place = line > 0 ? QStringLiteral("Line %1 of the cue sheet: ").arg(line) : QString();
    return NSError(
        DiscTracksErrorDomain, int(DiscTracksErrorCode::CueSheet),
        {{NSLocalizedFailureReasonErrorKey, place + reason}, {NSLocalizedRecoverySuggestionErrorKey, remedy}});
}

/// A line cut into words; what stands between quotes is one.
struct CueLine {
    std::uint32_t number = 0;
    QString command; ///< in capitals
    QStringList words; ///< behind the command
    QString rest; ///< all behind the command, as it stands
};

/// The next word; drops it from the text. A quote that is not closed ends with the line.
QString takeWord(QStringView *text)
{
    *text = text->trimmed();
    const bool isQuoted = text->startsWith(u'"');
    qsizetype end = 0;
    if (isQuoted) {
        end = text->indexOf(u'"', 1);
        const QString word = text->sliced(1, (end < 0 ? text->size() : end) - 1).toString();
        *text = end < 0 ? QStringView() : text->sliced(end + 1);
        return word;
    }
    while (end < text->size() && !(*text)[end].isSpace())
        ++end;
    const QString word = text->first(end).toString();
    *text = text->sliced(end);
    return word;
}

CueLine cutLine(QStringView text, std::uint32_t number)
{
    CueLine line;
    line.number = number;
    line.command = takeWord(&text).toUpper();
    line.rest = text.trimmed().toString();
    while (!text.trimmed().isEmpty())
        line.words << takeWord(&text);
    return line;
}

/// A text between quotes, which has no way to hold one, or all the rest of the line.
QString textOf(const CueLine &line)
{
    const QString &rest = line.rest;
    const bool isQuoted = rest.size() >= 2 && rest.startsWith(u'"') && rest.endsWith(u'"');
    return isQuoted ? rest.sliced(1, rest.size() - 2) : rest;
}

/// A whole number of one or two digits (more with zeros in front); no value for anything else.
std::optional<unsigned int> smallNumber(const QString &word)
{
    const bool areDigits =
        !word.isEmpty() && std::ranges::all_of(word, [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
    bool isNumber = false;
    const unsigned int number = word.toUInt(&isNumber);
    return areDigits && isNumber && number <= mostTracks ? std::optional(number) : std::nullopt;
}

struct CueIndex {
    unsigned int number = 0;
    std::size_t file = 0;
    std::uint64_t frame = 0; ///< from the start of the file
    std::uint32_t line = 0;
};

/// A track as the lines say it.
struct SpokenTrack {
    DiscTrack track;
    std::uint32_t line = 0;
    std::size_t session = 0;
    std::optional<std::uint64_t> pregap;
    std::vector<CueIndex> indexes;
};

/// Takes line after line.
class CueSheetParser
{
public:
    /// `bytes` is the sheet before it was decoded, for names that are not UTF-8; empty for UTF-16.
    CueSheetParser(CueSheet *sheet, const CueSheetFiles &files, const QByteArray &bytes)
        : m_sheet(*sheet)
        , m_files(files)
    {
        QByteArray lines = bytes;
        lines.replace("\r\n", "\n").replace('\r', '\n');
        m_byteLines = lines.split('\n');
    }

    [[nodiscard]] NSError parse(const QString &text)
    {
        // Carriage returns alone end lines, too.
        QString lines = text;
        lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        std::uint32_t number = 0;
        for (const QStringView part : QStringView(lines).split(u'\n')) {
            const CueLine line = cutLine(part, ++number);
            if (line.command.isEmpty())
                continue;
            if (NSError error = take(line))
                return error;
        }
        if (m_tracks.empty())
            return sheetError(
                0, QStringLiteral("The file is no cue sheet with a track."),
                QStringLiteral("Choose a cue sheet, or write FILE, TRACK and INDEX lines into this one."));
        return checkIndexes();
    }

    [[nodiscard]] std::vector<SpokenTrack> &tracks() { return m_tracks; }
    [[nodiscard]] const std::vector<std::uint32_t> &fileLines() const { return m_fileLines; }

    /// The texts of the disc and its tracks.
    void putTexts()
    {
        if (m_texts.empty())
            return;
        if (!m_sheet.contents.cdText.isEmpty()) {
            m_sheet.notes.push_back({0, QStringLiteral("The texts in the sheet give way to those of its CDTEXTFILE.")});
            return;
        }
        CDTextBlock block;
        bool isLatin = true;
        for (auto &[kind, texts] : m_texts) {
            texts.resize(m_tracks.size() + 1);
            for (const QString &text : texts)
                isLatin &= std::ranges::all_of(text, [](QChar character) { return character.unicode() <= 0xFF; });
        }
        block.encoding = isLatin ? CDTextEncoding::Latin1 : CDTextEncoding::ShiftJis;
        block.texts = std::move(m_texts);
        m_sheet.contents.cdText.blocks.push_back(std::move(block));
    }

private:
    using Handler = NSError (CueSheetParser::*)(const CueLine &);

    void note(const CueLine &line, const QString &text) { m_sheet.notes.push_back({line.number, text}); }

    [[nodiscard]] NSError take(const CueLine &line)
    {
        static const std::map<QString, Handler> handlers = {
            {QStringLiteral("FILE"), &CueSheetParser::takeFile},
            {QStringLiteral("TRACK"), &CueSheetParser::takeTrack},
            {QStringLiteral("INDEX"), &CueSheetParser::takeIndex},
            {QStringLiteral("PREGAP"), &CueSheetParser::takeGap},
            {QStringLiteral("POSTGAP"), &CueSheetParser::takeGap},
            {QStringLiteral("FLAGS"), &CueSheetParser::takeFlags},
            {QStringLiteral("ISRC"), &CueSheetParser::takeIsrc},
            {QStringLiteral("CATALOG"), &CueSheetParser::takeCatalog},
            {QStringLiteral("CDTEXTFILE"), &CueSheetParser::takeCDTextFile},
            {QStringLiteral("REM"), &CueSheetParser::takeRemark},
        };
        static const std::map<QString, CDTextKind> texts = {
            {QStringLiteral("TITLE"), CDTextKind::Title},
            {QStringLiteral("PERFORMER"), CDTextKind::Performer},
            {QStringLiteral("SONGWRITER"), CDTextKind::Songwriter},
            {QStringLiteral("COMPOSER"), CDTextKind::Composer},
            {QStringLiteral("ARRANGER"), CDTextKind::Arranger},
            {QStringLiteral("MESSAGE"), CDTextKind::Message},
        };
        if (const auto handler = handlers.find(line.command); handler != handlers.end())
            return (this->*handler->second)(line);
        if (const auto kind = texts.find(line.command); kind != texts.end()) {
            std::vector<QString> &ofKind = m_texts[kind->second];
            ofKind.resize(std::max(ofKind.size(), m_tracks.size() + 1));
            ofKind[m_tracks.size()] = textOf(line);
            return {};
        }
        note(line, QStringLiteral("%1 is not known and was passed over.").arg(line.command));
        return {};
    }

    /// The track that a line is about; null before the first one.
    [[nodiscard]] SpokenTrack *current() { return m_tracks.empty() ? nullptr : &m_tracks.back(); }

    [[nodiscard]] static NSError needsTrack(const CueLine &line)
    {
        return sheetError(line.number, QStringLiteral("%1 stands before the first TRACK.").arg(line.command),
                          QStringLiteral("Put it behind the TRACK that it belongs to."));
    }

    [[nodiscard]] NSError takeFile(const CueLine &line)
    {
        static const std::map<QString, CueFileType> types = {
            {QStringLiteral("BINARY"), CueFileType::Binary}, {QStringLiteral("MOTOROLA"), CueFileType::Motorola},
            {QStringLiteral("WAVE"), CueFileType::Wave},     {QStringLiteral("AIFF"), CueFileType::Aiff},
            {QStringLiteral("MP3"), CueFileType::Mp3},       {QStringLiteral("FLAC"), CueFileType::Wave},
            {QStringLiteral("MP4"), CueFileType::Wave},      {QStringLiteral("APE"), CueFileType::Wave}};
        const QString typeWord = line.words.size() > 1 ? line.words.last().toUpper() : QString();
        const auto type = types.find(typeWord);
        if (type == types.end())
            return sheetError(line.number,
                              line.words.size() > 1
                                  ? QStringLiteral("\"%1\" is no type of file.").arg(line.words.last())
                                  : QStringLiteral("FILE needs a name and a type."),
                              QStringLiteral("Write FILE \"name\" and BINARY, MOTOROLA, WAVE, AIFF or MP3."));
        CueFile file;
        QString name = line.rest;
        if (name.startsWith(u'"'))
            name = line.words.first();
        else // an unquoted name may hold blanks; the type ends the line
            name = name.left(name.size() - line.words.last().size()).trimmed();
        if (name.isEmpty())
            return sheetError(line.number, QStringLiteral("FILE names no file."),
                              QStringLiteral("Write FILE \"name\" BINARY."));
        file.name = name.toUtf8();
        file.nameAsWritten = bytesOfLineName(line);
        file.type = type->second;
        m_sheet.files.push_back(std::move(file));
        m_fileLines.push_back(line.number);
        return {};
    }

    [[nodiscard]] NSError takeTrack(const CueLine &line)
    {
        const std::optional<unsigned int> number = smallNumber(line.words.value(0));
        if (!number || *number == 0)
            return sheetError(line.number, QStringLiteral("TRACK needs a number from 01 to 99."),
                              QStringLiteral("Number the tracks 01, 02 and so on."));
        if (!m_tracks.empty() && *number != m_tracks.back().track.number + 1)
            return sheetError(
                line.number,
                QStringLiteral("TRACK %1 follows TRACK %2.").arg(*number).arg(m_tracks.back().track.number),
                QStringLiteral("Number the tracks one after another."));
        if (NSError error = checkIndexes())
            return error;
        SpokenTrack track;
        const QByteArray mode = line.words.value(1).toUpper().toUtf8();
        if (!setCueMode(mode, &track.track))
            return sheetError(
                line.number,
                QStringLiteral("\"%1\" is no mode of a track that is known here.").arg(line.words.value(1)),
                QStringLiteral("Known are %1.").arg(QString::fromLatin1(knownCueModes())));
        track.track.number = *number;
        track.line = line.number;
        track.session = m_session;
        m_tracks.push_back(std::move(track));
        return {};
    }

    [[nodiscard]] NSError takeIndex(const CueLine &line)
    {
        SpokenTrack *const track = current();
        if (!track)
            return needsTrack(line);
        if (m_sheet.files.empty())
            return sheetError(line.number, QStringLiteral("INDEX stands before the first FILE."),
                              QStringLiteral("Name the file with a FILE line in front."));
        const std::optional<unsigned int> number = smallNumber(line.words.value(0));
        if (!number || *number > mostIndex)
            return sheetError(line.number, QStringLiteral("INDEX needs a number from 00 to 99."),
                              QStringLiteral("Write INDEX 01 mm:ss:ff."));
        Result<std::uint64_t> frame = framesOf(line, line.words.value(1));
        if (!frame)
            return frame.error();
        track->indexes.push_back({*number, m_sheet.files.size() - 1, *frame, line.number});
        return {};
    }

    [[nodiscard]] NSError takeGap(const CueLine &line)
    {
        SpokenTrack *const track = current();
        if (!track)
            return needsTrack(line);
        Result<std::uint64_t> frames = framesOf(line, line.words.value(0));
        if (!frames)
            return frames.error();
        if (line.command == u"PREGAP")
            track->pregap = *frames;
        else
            track->track.postgap = {*frames, false};
        return {};
    }

    [[nodiscard]] static Result<std::uint64_t> framesOf(const CueLine &line, const QString &word)
    {
        const std::optional<MSF> time = MSF::fromText(word.toUtf8());
        if (!time || !time->isRegular())
            return sheetError(line.number, QStringLiteral("\"%1\" is no time.").arg(word),
                              QStringLiteral("Write minutes:seconds:frames, seconds up to 59 and frames up to 74."));
        return std::uint64_t(time->totalFrames());
    }

    [[nodiscard]] NSError takeFlags(const CueLine &line)
    {
        SpokenTrack *const track = current();
        if (!track)
            return needsTrack(line);
        for (const QString &word : line.words) {
            const QString flag = word.toUpper();
            CopyState &copy = track->track.copyState;
            if (flag == u"DCP" && copy != CopyState::ProtectedCopy)
                copy = CopyState::CopyrightFree;
            else if (flag == u"SCMS")
                copy = CopyState::ProtectedCopy;
            else if (flag == u"PRE")
                track->track.hasPreEmphasis = true;
            else if (flag == u"4CH")
                track->track.hasFourChannels = true;
            else if (flag != u"DCP" && flag != u"DATA") // which its mode says
                note(line, QStringLiteral("The flag %1 is not known and was passed over.").arg(word));
        }
        return {};
    }

    [[nodiscard]] NSError takeIsrc(const CueLine &line)
    {
        SpokenTrack *const track = current();
        if (!track)
            return needsTrack(line);
        QByteArray isrc = textOf(line).toUpper().toUtf8();
        isrc.replace('-', QByteArray()).replace(' ', QByteArray());
        if (isIsrc(isrc))
            track->track.isrc = isrc;
        else
            note(line, QStringLiteral("\"%1\" is no ISRC and was passed over.").arg(textOf(line)));
        return {};
    }

    [[nodiscard]] NSError takeCatalog(const CueLine &line)
    {
        const QByteArray number = textOf(line).toUtf8();
        if (isCatalogNumber(number))
            m_sheet.contents.mediaCatalogNumber = number;
        else
            note(line,
                 QStringLiteral("\"%1\" is no catalogue number of 13 digits and was passed over.").arg(textOf(line)));
        return {};
    }

    [[nodiscard]] NSError takeCDTextFile(const CueLine &line)
    {
        if (!m_files.cdText) {
            note(line, QStringLiteral("The file of CD-TEXT was not looked at."));
            return {};
        }
        const Result<QByteArray> bytes = m_files.cdText(textOf(line).toUtf8());
        const Result<CDText> text = bytes ? cdTextOfPacks(*bytes) : Result<CDText>(bytes.error());
        if (text)
            m_sheet.contents.cdText = *text;
        else
            note(line,
                 QStringLiteral("The CD-TEXT in %1 cannot be used: %2")
                     .arg(textOf(line), text.error().localizedFailureReason()));
        return {};
    }

    [[nodiscard]] NSError takeRemark(const CueLine &line)
    {
        const bool isSession = line.words.value(0).toUpper() == u"SESSION";
        const std::optional<unsigned int> number = isSession ? smallNumber(line.words.value(1)) : std::nullopt;
        if (number && *number >= 1)
            m_session = *number - 1;
        return {};
    }

    /// Whether the current track has the index that it needs.
    [[nodiscard]] NSError checkIndexes()
    {
        SpokenTrack *const track = current();
        if (!track)
            return {};
        std::ranges::stable_sort(track->indexes, {}, &CueIndex::number);
        unsigned int expected = track->indexes.empty() || track->indexes.front().number == 1 ? 1 : 0;
        for (const CueIndex &index : track->indexes) {
            if (index.number != expected++)
                return sheetError(index.line,
                                  QStringLiteral("INDEX %1 is there twice or one before it is missing.")
                                      .arg(index.number, 2, 10, QLatin1Char('0')),
                                  QStringLiteral("Number the indexes of a track one after another."));
        }
        if (expected < 2)
            return sheetError(track->line, QStringLiteral("TRACK %1 has no INDEX 01.").arg(track->track.number),
                              QStringLiteral("Say where the track begins: INDEX 01 mm:ss:ff."));
        if (track->pregap && track->indexes.front().number == 0)
            return sheetError(
                track->line,
                QStringLiteral("TRACK %1 has both a PREGAP, which no file holds, and an INDEX 00, which one "
                               "does.")
                    .arg(track->track.number),
                QStringLiteral("Remove one of the two."));
        return {};
    }

    /// The name of a FILE line as its bytes stand in the sheet.
    [[nodiscard]] QByteArray bytesOfLineName(const CueLine &line) const
    {
        const QByteArray bytes = m_byteLines.value(qsizetype(line.number) - 1);
        const qsizetype open = bytes.indexOf('"');
        const qsizetype close = open < 0 ? -1 : bytes.indexOf('"', open + 1);
        if (close > open)
            return bytes.sliced(open + 1, close - open - 1);
        const QByteArray simple = bytes.trimmed();
        const qsizetype start = simple.indexOf(' ');
        const qsizetype end = simple.lastIndexOf(' ');
        return start >= 0 && end > start ? simple.sliced(start, end - start).trimmed() : QByteArray();
    }

    CueSheet &m_sheet;
    const CueSheetFiles &m_files;
    QList<QByteArray> m_byteLines;
    std::vector<SpokenTrack> m_tracks;
    std::vector<std::uint32_t> m_fileLines; ///< of each FILE
    std::map<CDTextKind, std::vector<QString>> m_texts;
    std::size_t m_session = 0;
};

/// Gives each track its blocks of the files.
class CueSheetPlacer
{
public:
    CueSheetPlacer(CueSheet *sheet, std::vector<SpokenTrack> &tracks, const std::vector<std::uint32_t> &fileLines,
                   const CueSheetFiles &files)
        : m_sheet(*sheet)
        , m_tracks(tracks)
        , m_fileLines(fileLines)
        , m_files(files)
    {
    }

    [[nodiscard]] NSError place()
    {
        m_sheet.places.resize(m_tracks.size());
        std::vector<CuePoint> points;
        for (std::size_t track = 0; track < m_tracks.size(); ++track) {
            for (const CueIndex &index : m_tracks[track].indexes)
                points.push_back({track, index});
        }
        for (std::size_t at = 0; at < points.size(); ++at) {
            const bool isLastOfFile = at + 1 == points.size() || points[at + 1].index.file != points[at].index.file;
            NSError error = begin(points[at], at > 0 ? &points[at - 1] : nullptr);
            if (!error && isLastOfFile)
                error = takeRest(points[at]);
            if (error)
                return error;
        }
        reportUnusedFiles(points);
        return finishTracks();
    }

private:
    struct CuePoint {
        std::size_t track;
        CueIndex index;
    };

    [[nodiscard]] QString nameOf(std::size_t file) const { return QString::fromUtf8(m_sheet.files[file].name); }

    /// Comes to an index: what lies in front of it belongs to the index before.
    [[nodiscard]] NSError begin(const CuePoint &point, const CuePoint *before)
    {
        const CueIndex &index = point.index;
        const bool isFirstOfFile = !before || before->index.file != index.file;
        if (before && index.file < before->index.file)
            return sheetError(index.line, QStringLiteral("This INDEX lies in an earlier file than the one in front."),
                              QStringLiteral("Put the indexes into the order of their numbers."));
        if (NSError error = isFirstOfFile ? openFile(index.file) : NSError())
            return error;
        if (index.frame < m_frame)
            return sheetError(index.line, QStringLiteral("This INDEX lies before the one in front of it."),
                              QStringLiteral("Put the indexes of a file into the order of their times."));
        // At the start of a file there may be the rest of what the track began in another one, or its pregap.
        const bool isPregap = isFirstOfFile ? index.number < 2 : before->index.number == 0;
        const std::size_t owner = isFirstOfFile ? point.track : before->track;
        if (NSError error = takeBlocks(index.frame - m_frame, owner, isPregap, index))
            return error;
        DiscTrack &track = m_tracks[point.track].track;
        if (index.number >= 2)
            track.indexPoints.push_back(track.length);
        return {};
    }

    [[nodiscard]] NSError openFile(std::size_t file)
    {
        m_offset = 0;
        m_frame = 0;
        m_length.reset();
        if (!m_files.measure)
            return {};
        const Result<std::optional<std::uint64_t>> length = m_files.measure(&m_sheet.files[file]);
        if (!length) {
            const QString remedy = length.error().localizedRecoverySuggestion();
            return sheetError(
                m_fileLines[file],
                QStringLiteral("\"%1\" cannot be read: %2").arg(nameOf(file), length.error().localizedFailureReason()),
                remedy.isEmpty() ? QStringLiteral("Put the file beside the sheet, or correct its name there.")
                                 : remedy);
        }
        m_length = *length;
        return {};
    }

    /// Gives the track the next blocks of the current file.
    [[nodiscard]] NSError takeBlocks(std::uint64_t blocks, std::size_t owner, bool isPregap, const CueIndex &upTo)
    {
        DiscTrack &track = m_tracks[owner].track;
        const std::uint64_t bytes = blocks * track.blockSize; // times have nine digits at most: far below 2^63
        if (m_length && bytes > *m_length - m_offset) {
            const std::uint64_t end = m_frame + (*m_length - m_offset) / track.blockSize;
            return sheetError(upTo.line,
                              QStringLiteral("%1 lies beyond the end of \"%2\", which is at %3.")
                                  .arg(MSF::ofFrames(std::int64_t(upTo.frame)).text(), nameOf(upTo.file),
                                       MSF::ofFrames(std::int64_t(end)).text()),
                              QStringLiteral("Use the file that the sheet was made for, or correct the time."));
        }
        CueTrackPlace &place = m_sheet.places[owner];
        std::vector<CueRun> &runs = isPregap ? place.pregap : place.data;
        const bool continues = !runs.empty() && runs.back().file == upTo.file
            && runs.back().offset + runs.back().blocks * track.blockSize == m_offset;
        if (continues)
            runs.back().blocks += blocks;
        else if (blocks > 0)
            runs.push_back({upTo.file, m_offset, blocks});
        (isPregap ? track.pregap.length : track.length) += blocks;
        m_offset += bytes;
        m_frame += blocks;
        return {};
    }

    /// Gives the track of the file's last index what is left of the file.
    [[nodiscard]] NSError takeRest(const CuePoint &point)
    {
        if (!m_length) {
            m_sheet.places[point.track].isLengthKnown = false;
            return {};
        }
        const std::uint32_t blockSize = m_tracks[point.track].track.blockSize;
        const std::uint64_t rest = *m_length - m_offset;
        if (rest % blockSize != 0)
            m_sheet.notes.push_back({m_fileLines[point.index.file],
                                     QStringLiteral("\"%1\" ends with %2 bytes that fill no block of %3.")
                                         .arg(nameOf(point.index.file))
                                         .arg(rest % blockSize)
                                         .arg(blockSize)});
        return takeBlocks(rest / blockSize, point.track, point.index.number == 0, point.index);
    }

    void reportUnusedFiles(const std::vector<CuePoint> &points)
    {
        for (std::size_t file = 0; file < m_sheet.files.size(); ++file) {
            const auto liesIn = [file](const CuePoint &point) { return point.index.file == file; };
            if (std::ranges::none_of(points, liesIn))
                m_sheet.notes.push_back(
                    {m_fileLines[file], QStringLiteral("No track lies in \"%1\".").arg(nameOf(file))});
        }
    }

    [[nodiscard]] NSError finishTracks()
    {
        std::vector<DiscSession> &sessions = m_sheet.contents.sessions;
        std::size_t session = 0;
        for (std::size_t number = 0; number < m_tracks.size(); ++number) {
            const SpokenTrack &spoken = m_tracks[number];
            DiscTrack track = spoken.track;
            if (track.length == 0 && m_sheet.places[number].isLengthKnown)
                return sheetError(spoken.line, QStringLiteral("TRACK %1 has no blocks.").arg(track.number),
                                  QStringLiteral("Correct the times of its INDEX lines, or of the next track's."));
            track.pregap.isStored = track.pregap.length > 0;
            if (spoken.pregap && track.pregap.isStored)
                return sheetError(
                    spoken.line,
                    QStringLiteral("TRACK %1 has a PREGAP, but also blocks of its file in front.").arg(track.number),
                    QStringLiteral("Remove PREGAP, or let INDEX 01 be at 00:00:00."));
            if (spoken.pregap)
                track.pregap.length = *spoken.pregap;
            track.length += track.postgap.length;
            if (sessions.empty() || spoken.session > session)
                sessions.emplace_back();
            session = std::max(session, spoken.session);
            sessions.back().tracks.push_back(std::move(track));
        }
        if (m_tracks.front().track.number != 1) {
            m_sheet.notes.push_back({m_tracks.front().line, QStringLiteral("The tracks are counted from 1 here.")});
            m_sheet.contents.numberTracks();
        }
        m_sheet.contents.joinSessions();
        return {};
    }

    CueSheet &m_sheet;
    std::vector<SpokenTrack> &m_tracks;
    const std::vector<std::uint32_t> &m_fileLines;
    const CueSheetFiles &m_files;
    std::uint64_t m_offset = 0; ///< in the current file, bytes
    std::uint64_t m_frame = 0; ///< at m_offset
    std::optional<std::uint64_t> m_length; ///< of the current file, bytes
};

QString nameOfEncoding(TextFileEncoding encoding)
{
    return encoding == TextFileEncoding::ShiftJis ? QStringLiteral("Shift-JIS") : QStringLiteral("Windows-1252");
}

} // namespace

Result<CueSheet> cueSheetOfText(const QByteArray &text, const CueSheetFiles &files)
{
    if (text.size() > maximumCueSheetSize)
        return sheetError(0, QStringLiteral("The file has %1 bytes; no cue sheet is so long.").arg(text.size()),
                          QStringLiteral("Choose a cue sheet."));
    CueSheet sheet;
    const DecodedText decoded = decodedText(text);
    if (decoded.encoding == TextFileEncoding::ShiftJis || decoded.encoding == TextFileEncoding::Windows1252)
        sheet.notes.push_back(
            {0, QStringLiteral("The sheet is not UTF-8 and was read as %1.").arg(nameOfEncoding(decoded.encoding))});
    CueSheetParser parser(&sheet, files, decoded.encoding == TextFileEncoding::Utf16 ? QByteArray() : text);
    NSError error = parser.parse(decoded.text);
    if (error)
        return error;
    parser.putTexts();
    error = CueSheetPlacer(&sheet, parser.tracks(), parser.fileLines(), files).place();
    return error ? Result<CueSheet>(error) : Result<CueSheet>(std::move(sheet));
}

} // namespace Tessaron
