#include "platform/disctracks/CloneCDReader.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/DescribedFiles.h"
#include "platform/disctracks/Subchannel.h"
#include "platform/disctracks/TextEncodings.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

namespace Tessaron
{

namespace
{

constexpr std::int64_t mostTracks = 99;
constexpr std::int64_t endOfSession = 0xA2; // the point of the lead-out
constexpr std::int64_t mostSessions = 99;
constexpr std::int64_t mostBlocks = std::int64_t(100) * 60 * 75; // of a CD, and more
constexpr std::uint64_t sectorSize = 2352;
constexpr qsizetype packSizeWithoutChecksum = 16;

/// A number with the line that says it.
struct Said {
    std::int64_t value = 0;
    std::uint32_t line = 0;
};

/// An [Entry n] of the table of contents.
struct Entry {
    std::uint32_t line = 0;
    std::map<QString, Said> values; ///< by name, in lower case

    [[nodiscard]] std::int64_t valueOf(const QString &name, std::int64_t otherwise = 0) const
    {
        const auto found = values.find(name);
        return found == values.end() ? otherwise : found->second.value;
    }
};

/// What a [TRACK n] adds.
struct TrackSection {
    std::uint32_t line = 0;
    std::optional<Said> mode;
    std::map<std::int64_t, Said> indexes;
    QByteArray isrc;
};

/// A track of the table of contents.
struct PlacedTrack {
    std::int64_t number = 0;
    std::int64_t session = 0;
    std::int64_t control = 0;
    Said start; ///< block of index 1
    std::int64_t pregapStart = 0; ///< block of index 0, or that of index 1
    std::int64_t end = 0; ///< block behind it
    const TrackSection *section = nullptr;
};

/// A whole number in decimal or, behind "0x", hexadecimal digits.
std::optional<std::int64_t> numberOf(const QString &text)
{
    bool isNumber = false;
    const std::int64_t number = text.startsWith(QStringLiteral("0x"), Qt::CaseInsensitive)
        ? text.mid(2).toLongLong(&isNumber, 16)
        : text.toLongLong(&isNumber, 10);
    const bool isSmall = number > -0x7FFFFFFF && number < 0x7FFFFFFF;
    return isNumber && isSmall ? std::optional(number) : std::nullopt;
}

QString correctIt()
{
    return QStringLiteral("Correct the line, or make the image again.");
}

class CloneCDParser
{
public:
    explicit CloneCDParser(CueSheet *sheet)
        : m_sheet(*sheet)
    {
    }

    /// Takes all lines. An error names its line.
    [[nodiscard]] NSError parse(QString text)
    {
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        for (const QStringView part : QStringView(text).split(u'\n')) {
            ++m_line;
            const QStringView line = part.trimmed();
            NSError error;
            if (line.startsWith(u'['))
                error = beginSection(line.sliced(1, line.size() - (line.endsWith(u']') ? 2 : 1)).toString().toLower());
            else if (!line.isEmpty() && !line.startsWith(u';'))
                error = takeValue(line);
            if (error)
                return error;
        }
        return m_entries.empty() ? cloneCDError(0, QStringLiteral("The file describes no disc of CloneCD."),
                                                QStringLiteral("Choose a .ccd file, or the image itself."))
                                 : NSError();
    }

    /// Puts the tracks into the sheet, which has the image as its only file.
    [[nodiscard]] NSError place(std::optional<std::uint64_t> imageLength);

private:
    void note(std::uint32_t line, const QString &text) { m_sheet.notes.push_back({line, text}); }

    [[nodiscard]] NSError beginSection(const QString &name);
    [[nodiscard]] NSError takeValue(QStringView line);
    [[nodiscard]] NSError takeOfDisc(const QString &key, const QString &value);
    [[nodiscard]] NSError takeOfTrack(const QString &key, const QString &value);
    [[nodiscard]] NSError takeOfEntry(const QString &key, const QString &value);
    void takePack(const QString &key, const QString &value);
    [[nodiscard]] Result<Said> said(const QString &value) const;

    [[nodiscard]] Result<std::vector<PlacedTrack>> placedTracks();
    [[nodiscard]] NSError findPregaps(std::vector<PlacedTrack> *tracks);
    [[nodiscard]] NSError findEnds(std::vector<PlacedTrack> *tracks) const;
    [[nodiscard]] DiscTrack describe(const PlacedTrack &placed);
    void putTexts();

    enum class Section : std::uint8_t { Other, Disc, Entry, Track, CDText };

    CueSheet &m_sheet;
    std::uint32_t m_line = 0;
    Section m_section = Section::Other;
    std::int64_t m_track = 0; ///< of the section
    std::vector<Entry> m_entries;
    std::map<std::int64_t, TrackSection> m_tracks;
    QByteArray m_packs;
};

NSError CloneCDParser::beginSection(const QString &name)
{
    m_section = Section::Other;
    const QString kind = name.section(u' ', 0, 0, QString::SectionSkipEmpty);
    if (kind == u"disc") {
        m_section = Section::Disc;
    } else if (kind == u"cdtext") {
        m_section = Section::CDText;
    } else if (kind == u"entry") {
        m_section = Section::Entry;
        m_entries.push_back({m_line, {}});
    } else if (kind == u"track") {
        m_section = Section::Track;
        const std::optional<std::int64_t> number = numberOf(name.section(u' ', 1, 1, QString::SectionSkipEmpty));
        if (!number || *number < 1 || *number > mostTracks)
            return cloneCDError(m_line, QStringLiteral("A TRACK needs a number from 1 to 99."), correctIt());
        m_track = *number;
        if (!m_tracks.emplace(m_track, TrackSection{m_line, {}, {}, {}}).second)
            return cloneCDError(m_line, QStringLiteral("TRACK %1 is described twice.").arg(m_track), correctIt());
    }
    return {};
}

NSError CloneCDParser::takeValue(QStringView line)
{
    const qsizetype equals = line.indexOf(u'=');
    if (equals < 0) {
        note(m_line, QStringLiteral("The line says no value and was passed over."));
        return {};
    }
    const QString key = line.first(equals).trimmed().toString().toLower();
    const QString value = line.sliced(equals + 1).trimmed().toString();
    switch (m_section) {
    case Section::Disc:
        return takeOfDisc(key, value);
    case Section::Entry:
        return takeOfEntry(key, value);
    case Section::Track:
        return takeOfTrack(key, value);
    case Section::CDText:
        takePack(key, value);
        break;
    case Section::Other:
        break;
    }
    return {};
}

Result<Said> CloneCDParser::said(const QString &value) const
{
    const std::optional<std::int64_t> number = numberOf(value);
    if (!number)
        return cloneCDError(m_line, QStringLiteral("\"%1\" is not a number.").arg(value), correctIt());
    return Said{*number, m_line};
}

NSError CloneCDParser::takeOfDisc(const QString &key, const QString &value)
{
    if (key == u"datatracksscrambled" && value != u"0")
        return cloneCDError(m_line, QStringLiteral("The sectors of data are scrambled in the image."),
                            QStringLiteral("Make the image again, without scrambled sectors."));
    if (key == u"catalog") {
        const QByteArray number = value.toUtf8();
        if (isCatalogNumber(number))
            m_sheet.contents.mediaCatalogNumber = number;
        else
            note(m_line,
                 QStringLiteral("\"%1\" is not a catalogue number of 13 digits and was passed over.").arg(value));
    }
    return {};
}

NSError CloneCDParser::takeOfEntry(const QString &key, const QString &value)
{
    Result<Said> number = said(value);
    if (!number)
        return number.error();
    m_entries.back().values[key] = *number;
    return {};
}

NSError CloneCDParser::takeOfTrack(const QString &key, const QString &value)
{
    TrackSection &track = m_tracks[m_track];
    if (key == u"isrc") {
        const QByteArray isrc = value.toUpper().toUtf8();
        if (isIsrc(isrc))
            track.isrc = isrc;
        else
            note(m_line, QStringLiteral("\"%1\" is not an ISRC and was passed over.").arg(value));
        return {};
    }
    const bool isIndex = key.startsWith(QStringLiteral("index"));
    if (!isIndex && key != u"mode")
        return {}; // the entries say the flags
    Result<Said> number = said(value);
    if (!number)
        return number.error();
    if (!isIndex) {
        constexpr std::int64_t mostMode = 2;
        if (number->value < 0 || number->value > mostMode)
            return cloneCDError(m_line,
                                QStringLiteral("\"%1\" is not a mode of a track that is known here.").arg(value),
                                QStringLiteral("Known are 0 (audio), 1 and 2."));
        track.mode = *number;
        return {};
    }
    const std::optional<std::int64_t> index = numberOf(key.mid(5).trimmed());
    if (!index || *index < 0 || *index > mostTracks)
        return cloneCDError(m_line, QStringLiteral("An INDEX needs a number from 0 to 99."), correctIt());
    track.indexes[*index] = *number;
    return {};
}

/// "Entry n" with the bytes of a pack without its checksum.
void CloneCDParser::takePack(const QString &key, const QString &value)
{
    if (!key.startsWith(QStringLiteral("entry ")))
        return;
    const QByteArray bytes = QByteArray::fromHex(value.toLatin1());
    if (bytes.size() != packSizeWithoutChecksum) {
        note(m_line, QStringLiteral("The line has no 16 bytes of CD-TEXT and was passed over."));
        return;
    }
    const std::uint16_t checksum =
        subchannelChecksum(reinterpret_cast<const std::uint8_t *>(bytes.constData()), std::size_t(bytes.size()));
    m_packs += bytes;
    m_packs += char(checksum >> 8);
    m_packs += char(checksum & 0xFF);
}

/// The tracks in the order of their numbers, as far as the entries say them.
Result<std::vector<PlacedTrack>> CloneCDParser::placedTracks()
{
    std::vector<PlacedTrack> tracks;
    for (const Entry &entry : m_entries) {
        const std::int64_t point = entry.valueOf(QStringLiteral("point"));
        if (point < 1 || point > mostTracks)
            continue;
        const auto start = entry.values.find(QStringLiteral("plba"));
        if (start == entry.values.end())
            return cloneCDError(entry.line, QStringLiteral("Track %1 has no PLBA.").arg(point), correctIt());
        PlacedTrack track;
        track.number = point;
        track.session = entry.valueOf(QStringLiteral("session"), 1);
        track.control = entry.valueOf(QStringLiteral("control"));
        track.start = start->second;
        if (track.session < 1 || track.session > mostSessions)
            return cloneCDError(entry.line, QStringLiteral("Track %1 is in no session from 1 to 99.").arg(point),
                                correctIt());
        if (track.start.value < 0 || track.start.value > mostBlocks)
            return cloneCDError(track.start.line,
                                QStringLiteral("Block %1 is not a place of a track on a CD.").arg(track.start.value),
                                correctIt());
        const auto section = m_tracks.find(point);
        track.section = section == m_tracks.end() ? nullptr : &section->second;
        tracks.push_back(track);
    }
    std::ranges::sort(tracks, {}, &PlacedTrack::number);
    for (std::size_t index = 1; index < tracks.size(); ++index) {
        const PlacedTrack &before = tracks[index - 1];
        const PlacedTrack &track = tracks[index];
        if (track.number != before.number + 1)
            return cloneCDError(track.start.line,
                                QStringLiteral("Track %1 follows track %2.").arg(track.number).arg(before.number),
                                QStringLiteral("Every track needs one entry."));
        if (track.start.value <= before.start.value || track.session < before.session)
            return cloneCDError(track.start.line,
                                QStringLiteral("Track %1 begins before track %2.").arg(track.number).arg(before.number),
                                correctIt());
    }
    if (tracks.empty())
        return cloneCDError(0, QStringLiteral("The file names no track."), correctIt());
    return tracks;
}

NSError CloneCDParser::findPregaps(std::vector<PlacedTrack> *tracks)
{
    for (PlacedTrack &track : *tracks) {
        const bool isFirst = &track == &tracks->front();
        // Block 0 is the image's first; what lies between it and track 1 belongs to that track.
        track.pregapStart = isFirst ? 0 : track.start.value;
        if (!track.section)
            continue;
        const auto &indexes = track.section->indexes;
        const auto first = indexes.find(1);
        if (first != indexes.end() && first->second.value != track.start.value)
            note(
                first->second.line,
                QStringLiteral("Index 1 of track %1 is not where its entry says; the entry counts.").arg(track.number));
        const auto gap = indexes.find(0);
        if (gap == indexes.end() || isFirst)
            continue;
        const std::int64_t before = (&track - 1)->start.value;
        if (gap->second.value > track.start.value || gap->second.value <= before)
            return cloneCDError(gap->second.line,
                                QStringLiteral("Index 0 of track %1 does not lie between track %2 and index 1.")
                                    .arg(track.number)
                                    .arg(track.number - 1),
                                correctIt());
        track.pregapStart = gap->second.value;
    }
    return {};
}

NSError CloneCDParser::findEnds(std::vector<PlacedTrack> *tracks) const
{
    for (PlacedTrack &track : *tracks) {
        const bool isLastOfSession = &track == &tracks->back() || (&track + 1)->session != track.session;
        if (!isLastOfSession) {
            track.end = (&track + 1)->pregapStart;
            continue;
        }
        const auto isEnd = [&](const Entry &entry) {
            return entry.valueOf(QStringLiteral("point")) == endOfSession
                && entry.valueOf(QStringLiteral("session"), 1) == track.session;
        };
        const auto end = std::ranges::find_if(m_entries, isEnd);
        if (end == m_entries.end())
            return cloneCDError(track.start.line,
                                QStringLiteral("Session %1 has no entry for its end (point 0xa2).").arg(track.session),
                                correctIt());
        track.end = end->valueOf(QStringLiteral("plba"), -1);
        const bool isLast = &track == &tracks->back();
        if (track.end <= track.start.value || track.end > mostBlocks
            || (!isLast && track.end > (&track + 1)->pregapStart))
            return cloneCDError(end->line,
                                QStringLiteral("Session %1 does not end behind its last track.").arg(track.session),
                                correctIt());
    }
    return {};
}

DiscTrack CloneCDParser::describe(const PlacedTrack &placed)
{
    const bool isData = (placed.control & SubchannelControl::data) != 0;
    std::int64_t mode = isData ? 1 : 0;
    if (placed.section && placed.section->mode)
        mode = placed.section->mode->value;
    else if (isData)
        note(placed.start.line, QStringLiteral("Track %1 says no mode and was taken for mode 1.").arg(placed.number));
    DiscTrack track;
    track.number = std::uint32_t(placed.number);
    if (!setCueMode(mode == 0 ? "AUDIO" : mode == 1 ? "MODE1/2352" : "MODE2/2352", &track))
        track.blockSize = sectorSize;
    track.pregap = {std::uint64_t(placed.start.value - placed.pregapStart), true};
    track.length = std::uint64_t(placed.end - placed.start.value);
    track.hasPreEmphasis = !isData && (placed.control & SubchannelControl::preEmphasis) != 0;
    track.hasFourChannels = !isData && (placed.control & SubchannelControl::fourChannels) != 0;
    if ((placed.control & SubchannelControl::copyPermitted) != 0)
        track.copyState = CopyState::CopyrightFree;
    if (!placed.section)
        return track;
    track.isrc = placed.section->isrc;
    for (const auto &[index, place] : placed.section->indexes) {
        if (index < 2)
            continue;
        const std::int64_t point = place.value - placed.start.value;
        const std::int64_t before = track.indexPoints.empty() ? 0 : std::int64_t(track.indexPoints.back());
        if (index == std::int64_t(track.indexPoints.size()) + 2 && point > before && point < std::int64_t(track.length))
            track.indexPoints.push_back(std::uint64_t(point));
        else
            note(place.line,
                 QStringLiteral("Index %1 of track %2 makes no sense there and was passed over.")
                     .arg(index)
                     .arg(placed.number));
    }
    return track;
}

void CloneCDParser::putTexts()
{
    if (m_packs.isEmpty())
        return;
    const Result<CDText> text = cdTextOfPacks(m_packs);
    if (text)
        m_sheet.contents.cdText = *text;
    else
        note(0, QStringLiteral("The CD-TEXT cannot be used: %1").arg(text.error().localizedFailureReason()));
}

NSError CloneCDParser::place(std::optional<std::uint64_t> imageLength)
{
    Result<std::vector<PlacedTrack>> placed = placedTracks();
    if (!placed)
        return placed.error();
    NSError error = findPregaps(&*placed);
    if (!error)
        error = findEnds(&*placed);
    if (error)
        return error;
    std::int64_t session = 0;
    std::uint64_t offset = 0;
    for (const PlacedTrack &track : *placed) {
        if (track.session != session) {
            session = track.session;
            m_sheet.contents.sessions.push_back({BlockAddress(track.pregapStart), {}});
        }
        const DiscTrack described = describe(track);
        CueTrackPlace place;
        if (described.pregap.length > 0)
            place.pregap.push_back({0, offset, described.pregap.length});
        offset += described.pregap.length * sectorSize;
        place.data.push_back({0, offset, described.length});
        offset += described.length * sectorSize;
        if (imageLength && offset > *imageLength)
            return cloneCDError(track.start.line,
                                QStringLiteral("Track %1 ends at byte %2, but the image has %3.")
                                    .arg(track.number)
                                    .arg(offset)
                                    .arg(*imageLength),
                                QStringLiteral("Use the image that the file was made for."));
        m_sheet.contents.sessions.back().tracks.push_back(described);
        m_sheet.places.push_back(place);
    }
    if (imageLength && *imageLength > offset)
        note(0, QStringLiteral("The image has %1 bytes behind its last track.").arg(*imageLength - offset));
    if (placed->front().number != 1) {
        note(placed->front().start.line, QStringLiteral("The tracks are counted from 1 here."));
        m_sheet.contents.numberTracks();
    }
    putTexts();
    return {};
}

} // namespace

Result<CueSheet> cloneCDOfText(const QByteArray &text, const QByteArray &image, const CueSheetFiles &files)
{
    if (text.size() > maximumCueSheetSize)
        return cloneCDError(0, QStringLiteral("The file has %1 bytes; no .ccd file is so long.").arg(text.size()),
                            QStringLiteral("Choose a .ccd file."));
    CueSheet sheet;
    sheet.files.push_back({image, image, CueFileType::Binary, {}});
    CloneCDParser parser(&sheet);
    if (NSError error = parser.parse(decodedText(text).text))
        return error;
    std::optional<std::uint64_t> length;
    if (files.measure) {
        const Result<std::optional<std::uint64_t>> measured = files.measure(&sheet.files.front());
        if (!measured)
            return cloneCDError(0,
                                QStringLiteral("\"%1\" cannot be read: %2")
                                    .arg(QString::fromUtf8(image), measured.error().localizedFailureReason()),
                                QStringLiteral("Put the image beside the .ccd file."));
        length = *measured;
    }
    NSError error = parser.place(length);
    if (!error)
        error = sheet.contents.check();
    return error ? Result<CueSheet>(error) : Result<CueSheet>(std::move(sheet));
}

Result<CueSheet> cloneCDOfFile(const QByteArray &path)
{
    const Result<QByteArray> text = textOfDescription(path);
    if (!text)
        return text.error();
    QByteArray name = path.sliced(path.lastIndexOf('/') + 1);
    const bool hasExtension = name.toLower().endsWith(".ccd");
    name = (hasExtension ? name.chopped(4) : name) + ".img";
    return cloneCDOfText(*text, name, filesBeside(path));
}

} // namespace Tessaron
