#include "platform/disctracks/CueSheetParser.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/Subchannel.h"

#include <algorithm>

namespace Tessaron
{

/// A line cut into words; what stands between quotes is one.
struct CueLine {
    std::uint32_t number = 0;
    QString command; ///< in capitals
    QStringList words; ///< behind the command
    QString rest; ///< all behind the command, as it stands
};

namespace
{

constexpr unsigned int mostTracks = 99;
constexpr unsigned int mostIndex = 99;

/// The next word; drops it from the text. A quote that is not closed ends with the line.
QString takeWord(QStringView *text)
{
    *text = text->trimmed();
    const bool isQuoted = text->startsWith(u'"');
    qsizetype end = 0;
    if (isQuoted) {
        end = text->indexOf(u'"', 1);
        QString word = text->sliced(1, (end < 0 ? text->size() : end) - 1).toString();
        *text = end < 0 ? QStringView() : text->sliced(end + 1);
        return word;
    }
    while (end < text->size() && !(*text)[end].isSpace())
        ++end;
    QString word = text->first(end).toString();
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

/// Whether one language of the disc has all of these texts of a kind, which begin with that of the disc.
bool areAmong(const CDText &disc, const std::pair<const CDTextKind, std::vector<QString>> &texts)
{
    return std::ranges::any_of(disc.blocks, [&](const CDTextBlock &block) {
        const auto found = block.texts.find(texts.first);
        for (std::size_t place = 0; place < texts.second.size(); ++place) {
            const std::size_t placeInBlock = place == 0 ? 0 : place - block.firstTrack + 1;
            const bool isThere = found != block.texts.end() && placeInBlock < found->second.size()
                && found->second[placeInBlock] == texts.second[place];
            if (!isThere && !texts.second[place].isEmpty())
                return false;
        }
        return true;
    });
}

} // namespace

CueSheetParser::CueSheetParser(CueSheet *sheet, const CueSheetFiles &files, const QByteArray &bytes)
    : m_sheet(*sheet)
    , m_files(files)
{
    QByteArray lines = bytes;
    lines.replace("\r\n", "\n").replace('\r', '\n');
    m_byteLines = lines.split('\n');
}

NSError CueSheetParser::parse(const QString &text)
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
        return cueSheetError(0, QStringLiteral("The file is not a cue sheet with a track."),
                             QStringLiteral("Choose a cue sheet, or write FILE, TRACK and INDEX lines into this one."));
    return checkIndexes();
}

void CueSheetParser::putTexts()
{
    if (m_texts.empty())
        return;
    if (const CDText &ofFile = m_sheet.contents.cdText; !ofFile.isEmpty()) {
        if (!std::ranges::all_of(m_texts, [&](const auto &texts) { return areAmong(ofFile, texts); }))
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

void CueSheetParser::note(const CueLine &line, const QString &text)
{
    m_sheet.notes.push_back({line.number, text});
}

NSError CueSheetParser::take(const CueLine &line)
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
        {QStringLiteral("TITLE"), CDTextKind::Title},           {QStringLiteral("PERFORMER"), CDTextKind::Performer},
        {QStringLiteral("SONGWRITER"), CDTextKind::Songwriter}, {QStringLiteral("COMPOSER"), CDTextKind::Composer},
        {QStringLiteral("ARRANGER"), CDTextKind::Arranger},     {QStringLiteral("MESSAGE"), CDTextKind::Message},
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

NSError CueSheetParser::needsTrack(const CueLine &line)
{
    return cueSheetError(line.number, QStringLiteral("%1 stands before the first TRACK.").arg(line.command),
                         QStringLiteral("Put it behind the TRACK that it belongs to."));
}

NSError CueSheetParser::takeFile(const CueLine &line)
{
    static const std::map<QString, CueFileType> types = {
        {QStringLiteral("BINARY"), CueFileType::Binary}, {QStringLiteral("MOTOROLA"), CueFileType::Motorola},
        {QStringLiteral("WAVE"), CueFileType::Wave},     {QStringLiteral("AIFF"), CueFileType::Aiff},
        {QStringLiteral("MP3"), CueFileType::Mp3},       {QStringLiteral("FLAC"), CueFileType::Wave},
        {QStringLiteral("MP4"), CueFileType::Wave},      {QStringLiteral("APE"), CueFileType::Wave}};
    const QString typeWord = line.words.size() > 1 ? line.words.last().toUpper() : QString();
    const auto type = types.find(typeWord);
    if (type == types.end())
        return cueSheetError(line.number,
                             line.words.size() > 1
                                 ? QStringLiteral("\"%1\" is not a type of file.").arg(line.words.last())
                                 : QStringLiteral("FILE needs a name and a type."),
                             QStringLiteral("Write FILE \"name\" and BINARY, MOTOROLA, WAVE, AIFF or MP3."));
    CueFile file;
    QString name = line.rest;
    if (name.startsWith(u'"'))
        name = line.words.first();
    else // an unquoted name may hold blanks; the type ends the line
        name = name.left(name.size() - line.words.last().size()).trimmed();
    if (name.isEmpty())
        return cueSheetError(line.number, QStringLiteral("FILE names no file."),
                             QStringLiteral("Write FILE \"name\" BINARY."));
    file.name = name.toUtf8();
    file.nameAsWritten = bytesOfLineName(line);
    file.type = type->second;
    m_sheet.files.push_back(std::move(file));
    m_fileLines.push_back(line.number);
    return {};
}

NSError CueSheetParser::takeTrack(const CueLine &line)
{
    const std::optional<unsigned int> number = smallNumber(line.words.value(0));
    if (!number || *number == 0)
        return cueSheetError(line.number, QStringLiteral("TRACK needs a number from 01 to 99."),
                             QStringLiteral("Number the tracks 01, 02 and so on."));
    if (!m_tracks.empty() && *number != m_tracks.back().track.number + 1)
        return cueSheetError(
            line.number, QStringLiteral("TRACK %1 follows TRACK %2.").arg(*number).arg(m_tracks.back().track.number),
            QStringLiteral("Number the tracks one after another."));
    if (NSError error = checkIndexes())
        return error;
    SpokenTrack track;
    const QByteArray mode = line.words.value(1).toUpper().toUtf8();
    if (!setCueMode(mode, &track.track))
        return cueSheetError(
            line.number, QStringLiteral("\"%1\" is not a mode of a track that is known here.").arg(line.words.value(1)),
            QStringLiteral("Known are %1.").arg(QString::fromLatin1(knownCueModes())));
    track.track.number = *number;
    track.line = line.number;
    track.session = m_session;
    m_tracks.push_back(std::move(track));
    return {};
}

NSError CueSheetParser::takeIndex(const CueLine &line)
{
    SpokenTrack *const track = current();
    if (!track)
        return needsTrack(line);
    if (m_sheet.files.empty())
        return cueSheetError(line.number, QStringLiteral("INDEX stands before the first FILE."),
                             QStringLiteral("Name the file with a FILE line in front."));
    const std::optional<unsigned int> number = smallNumber(line.words.value(0));
    if (!number || *number > mostIndex)
        return cueSheetError(line.number, QStringLiteral("INDEX needs a number from 00 to 99."),
                             QStringLiteral("Write INDEX 01 mm:ss:ff."));
    Result<std::uint64_t> frame = framesOf(line, line.words.value(1));
    if (!frame)
        return frame.error();
    track->indexes.push_back({*number, m_sheet.files.size() - 1, *frame, line.number});
    return {};
}

NSError CueSheetParser::takeGap(const CueLine &line)
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

Result<std::uint64_t> CueSheetParser::framesOf(const CueLine &line, const QString &word)
{
    const std::optional<MSF> time = MSF::fromText(word.toUtf8());
    if (!time || !time->isRegular())
        return cueSheetError(line.number, QStringLiteral("\"%1\" is not a time.").arg(word),
                             QStringLiteral("Write minutes:seconds:frames, seconds up to 59 and frames up to 74."));
    return std::uint64_t(time->totalFrames());
}

NSError CueSheetParser::takeFlags(const CueLine &line)
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

NSError CueSheetParser::takeIsrc(const CueLine &line)
{
    SpokenTrack *const track = current();
    if (!track)
        return needsTrack(line);
    QByteArray isrc = textOf(line).toUpper().toUtf8();
    isrc.replace('-', QByteArray()).replace(' ', QByteArray());
    if (isIsrc(isrc))
        track->track.isrc = isrc;
    else
        note(line, QStringLiteral("\"%1\" is not an ISRC and was passed over.").arg(textOf(line)));
    return {};
}

NSError CueSheetParser::takeCatalog(const CueLine &line)
{
    const QByteArray number = textOf(line).toUtf8();
    if (isCatalogNumber(number))
        m_sheet.contents.mediaCatalogNumber = number;
    else
        note(line,
             QStringLiteral("\"%1\" is not a catalogue number of 13 digits and was passed over.").arg(textOf(line)));
    return {};
}

NSError CueSheetParser::takeCDTextFile(const CueLine &line)
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

NSError CueSheetParser::takeRemark(const CueLine &line)
{
    const bool isSession = line.words.value(0).toUpper() == u"SESSION";
    const std::optional<unsigned int> number = isSession ? smallNumber(line.words.value(1)) : std::nullopt;
    if (number && *number >= 1)
        m_session = *number - 1;
    return {};
}

NSError CueSheetParser::checkIndexes()
{
    SpokenTrack *const track = current();
    if (!track)
        return {};
    std::ranges::stable_sort(track->indexes, {}, &CueIndex::number);
    unsigned int expected = track->indexes.empty() || track->indexes.front().number == 1 ? 1 : 0;
    for (const CueIndex &index : track->indexes) {
        if (index.number != expected++)
            return cueSheetError(index.line,
                                 QStringLiteral("INDEX %1 is there twice or one before it is missing.")
                                     .arg(index.number, 2, 10, QLatin1Char('0')),
                                 QStringLiteral("Number the indexes of a track one after another."));
    }
    if (expected < 2)
        return cueSheetError(track->line, QStringLiteral("TRACK %1 has no INDEX 01.").arg(track->track.number),
                             QStringLiteral("Say where the track begins: INDEX 01 mm:ss:ff."));
    if (track->pregap && track->indexes.front().number == 0)
        return cueSheetError(
            track->line,
            QStringLiteral("TRACK %1 has both a PREGAP, which no file holds, and an INDEX 00, which one "
                           "does.")
                .arg(track->track.number),
            QStringLiteral("Remove one of the two."));
    return {};
}

QByteArray CueSheetParser::bytesOfLineName(const CueLine &line) const
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

} // namespace Tessaron
