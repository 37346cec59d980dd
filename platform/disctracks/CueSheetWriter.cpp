#include "platform/disctracks/CueSheetWriter.h"

#include "platform/disctracks/CueModes.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

NSError writerError(const QString &reason, const QString &remedy = {})
{
    QVariantMap info{{NSLocalizedFailureReasonErrorKey, reason}};
    if (!remedy.isEmpty())
        info.insert(NSLocalizedRecoverySuggestionErrorKey, remedy);
    return NSError(DiscTracksErrorDomain, int(DiscTracksErrorCode::CueSheet), info);
}

bool canBeQuoted(QByteArrayView text)
{
    return std::ranges::none_of(
        text, [](char character) { return character == '"' || character == '\r' || character == '\n'; });
}

struct CueTextWord {
    CDTextKind kind;
    const char *word;
};
constexpr std::array textWords = {
    CueTextWord{CDTextKind::Title, "TITLE"},           CueTextWord{CDTextKind::Performer, "PERFORMER"},
    CueTextWord{CDTextKind::Songwriter, "SONGWRITER"}, CueTextWord{CDTextKind::Composer, "COMPOSER"},
    CueTextWord{CDTextKind::Arranger, "ARRANGER"},     CueTextWord{CDTextKind::Message, "MESSAGE"},
};

bool hasFurtherLanguages(const CDText &text)
{
    return text.blocks.size() > 1;
}

/// Whether the first language has a kind of text for which sheets have no word.
bool hasFurtherKinds(const CDText &text)
{
    if (text.isEmpty())
        return false;
    const CDTextBlock &block = text.blocks.front();
    const auto isSaid = [](const auto &texts) {
        return std::ranges::find(textWords, texts.first, &CueTextWord::kind) != textWords.end();
    };
    return block.genreCode != 0 || !std::ranges::all_of(block.texts, isSaid);
}

QByteArray twoDigits(std::size_t number)
{
    return QByteArray::number(qulonglong(number)).rightJustified(2, '0');
}

QByteArray timeOf(std::uint64_t frames)
{
    return MSF::ofFrames(std::int64_t(frames)).text().toLatin1();
}

class SheetMaker
{
public:
    explicit SheetMaker(const TableOfContents &contents)
        : m_contents(contents)
    {
    }

    [[nodiscard]] NSError make(const QByteArray &imageName, const QByteArray &cdTextFileName)
    {
        if (NSError error = m_contents.check())
            return error;
        if (!canBeQuoted(imageName) || !canBeQuoted(cdTextFileName))
            return writerError(QStringLiteral("A cue sheet cannot name a file whose name holds a quote or a line end."),
                               QStringLiteral("Choose another name for the image."));
        if (!m_contents.mediaCatalogNumber.isEmpty())
            line("", "CATALOG " + m_contents.mediaCatalogNumber);
        if (!cdTextFileName.isEmpty())
            line("", "CDTEXTFILE \"" + cdTextFileName + '"');
        if (NSError error = addTexts("", 0))
            return error;
        line("", "FILE \"" + imageName + "\" BINARY");
        for (std::size_t session = 0; session < m_contents.sessions.size(); ++session) {
            if (m_contents.sessions.size() > 1)
                line("  ", "REM SESSION " + twoDigits(session + 1));
            for (const DiscTrack &track : m_contents.sessions[session].tracks) {
                if (NSError error = addTrack(track))
                    return error;
            }
        }
        if (cdTextFileName.isEmpty())
            noteWhichTextsAreLost();
        return {};
    }

    CueSheetText take() { return {std::move(m_text), std::move(m_lost)}; }

private:
    void line(const char *indent, const QByteArray &content) { m_text += indent + content + "\r\n"; }

    void lose(const QString &what)
    {
        if (!m_lost.contains(what))
            m_lost << what;
    }

    /// `number` is that of the track; 0 for the disc.
    [[nodiscard]] NSError addTexts(const char *indent, std::uint32_t number)
    {
        if (m_contents.cdText.isEmpty())
            return {};
        const CDTextBlock &block = m_contents.cdText.blocks.front();
        if (number > 0 && number < block.firstTrack)
            return {};
        const std::size_t place = number == 0 ? 0 : number - block.firstTrack + 1;
        for (const CueTextWord &known : textWords) {
            const auto texts = block.texts.find(known.kind);
            if (texts == block.texts.end() || place >= texts->second.size() || texts->second[place].isEmpty())
                continue;
            const QByteArray text = texts->second[place].toUtf8();
            if (!canBeQuoted(text))
                return writerError(
                    QStringLiteral("A cue sheet cannot say the text %1, since it holds a quote or a line end.")
                        .arg(texts->second[place]),
                    QStringLiteral("Use other quotation marks in it."));
            line(indent, QByteArray(known.word) + " \"" + text + '"');
        }
        return {};
    }

    [[nodiscard]] NSError addTrack(const DiscTrack &track)
    {
        const QByteArray mode = cueModeOf(track);
        if (mode.isEmpty())
            return writerError(QStringLiteral("A cue sheet has no mode for track %1 with its blocks of %2 bytes.")
                                   .arg(track.number)
                                   .arg(track.blockSize),
                               QStringLiteral("Save the disc as a VANT image."));
        line("  ", "TRACK " + twoDigits(track.number) + ' ' + mode);
        constexpr const char *indent = "    ";
        if (NSError error = addTexts(indent, track.number))
            return error;
        if (const QByteArray flags = flagsOf(track); !flags.isEmpty())
            line(indent, "FLAGS" + flags);
        if (!track.isrc.isEmpty())
            line(indent, "ISRC " + track.isrc);
        if (track.pregap.length > 0 && track.pregap.isStored)
            addIndex(indent, 0, 0);
        else if (const std::uint64_t gap = gapToMake(track); gap > 0)
            line(indent, "PREGAP " + timeOf(gap));
        m_frame += track.pregap.isStored ? track.pregap.length : 0;
        const bool isPostgapMissing = track.postgap.length > 0 && !track.postgap.isStored;
        const std::uint64_t stored = track.length - (isPostgapMissing ? track.postgap.length : 0);
        addIndex(indent, 1, 0);
        for (std::size_t point = 0; point < track.indexPoints.size(); ++point) {
            if (track.indexPoints[point] < stored)
                addIndex(indent, point + 2, track.indexPoints[point]);
            else // The file has no such place: readers would look for it in the next track.
                lose(QStringLiteral("index points in postgaps that the image does not hold"));
        }
        if (isPostgapMissing)
            line(indent, "POSTGAP " + timeOf(track.postgap.length));
        m_frame += stored;
        if (track.kind == TrackKind::Mode2Formless || track.copyState == CopyState::ProtectedOriginal)
            lose(track.kind == TrackKind::Mode2Formless ? QStringLiteral("that mode 2 is without form")
                                                        : QStringLiteral("that a track is a protected original"));
        if (track.kind == TrackKind::Mode2Form1 && track.blockSize != std::uint32_t(SectorForm::UserData))
            lose(QStringLiteral("that all sectors of mode 2 are of form 1"));
        return {};
    }

    /// The length of the track's pregap that nothing stores. What of it lies in front of block 0 every CD has, and
    /// every reader of sheets adds.
    [[nodiscard]] std::uint64_t gapToMake(const DiscTrack &track) const
    {
        const bool isFirst = &track == &m_contents.sessions.front().tracks.front();
        const std::int64_t inFront = isFirst ? -m_contents.sessions.front().firstBlock.number() : 0;
        return track.pregap.length - std::min(track.pregap.length, std::uint64_t(std::max<std::int64_t>(inFront, 0)));
    }

    void addIndex(const char *indent, std::size_t number, std::uint64_t offset)
    {
        line(indent, "INDEX " + twoDigits(number) + ' ' + timeOf(m_frame + offset));
    }

    static QByteArray flagsOf(const DiscTrack &track)
    {
        QByteArray flags;
        if (track.copyState == CopyState::CopyrightFree)
            flags += " DCP";
        if (track.hasFourChannels)
            flags += " 4CH";
        if (track.hasPreEmphasis)
            flags += " PRE";
        if (track.copyState == CopyState::ProtectedCopy)
            flags += " SCMS";
        return flags;
    }

    void noteWhichTextsAreLost()
    {
        if (hasFurtherLanguages(m_contents.cdText))
            lose(QStringLiteral("CD-TEXT in further languages"));
        if (hasFurtherKinds(m_contents.cdText))
            lose(QStringLiteral("CD-TEXT other than titles, names and messages"));
    }

    const TableOfContents &m_contents;
    QByteArray m_text;
    QStringList m_lost;
    std::uint64_t m_frame = 0; ///< in the file
};

} // namespace

bool needsCDTextFile(const TableOfContents &contents)
{
    return hasFurtherLanguages(contents.cdText) || hasFurtherKinds(contents.cdText);
}

Result<CueSheetText> cueSheetForImage(const TableOfContents &contents, const QByteArray &imageName,
                                      const QByteArray &cdTextFileName)
{
    SheetMaker maker(contents);
    if (NSError error = maker.make(imageName, cdTextFileName))
        return error;
    return maker.take();
}

} // namespace Tessaron
