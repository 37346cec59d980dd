#include "imaging/jobs/AudioAlbum.h"

#include "platform/disctracks/DescribedFiles.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/CDSound.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t samplesPerFrame = CDSound::samplesPerFrame;

/// Adds the tracks of one cue sheet to an album.
class SheetTaker
{
public:
    SheetTaker(const AudioSources &sources, const AudioSource &source, const std::vector<std::uint64_t> &lengths,
               AudioAlbum *album)
        : m_sources(sources)
        , m_source(source)
        , m_lengths(lengths)
        , m_album(*album)
        , m_firstTrack(album->tracks.size())
    {
    }

    [[nodiscard]] NSError take()
    {
        const Result<CueSheet> sheet = cueSheetOfText(m_source.sheet, measuredFiles());
        if (!sheet)
            return sheetError(sheet.error().localizedFailureReason(), sheet.error().localizedRecoverySuggestion());
        numberFiles(sheet->files);
        const std::vector<const DiscTrack *> tracks = sheet->contents.tracks();
        for (std::size_t number = 0; number < tracks.size(); ++number) {
            if (!tracks[number]->isAudio())
                return sheetError(QStringLiteral("its track %1 holds data, not sound").arg(tracks[number]->number),
                                  QStringLiteral("Remove the track from the sheet; --data makes one of a folder."));
            addTrack(*tracks[number], sheet->places[number]);
        }
        findOwnFiles();
        takeTexts(sheet->contents.cdText);
        takeWhatIsSaidOfTheDisc(*sheet);
        return {};
    }

private:
    [[nodiscard]] NSError sheetError(const QString &reason, const QString &suggestion) const
    {
        return discJobError(
            DiscJobErrorCode::Source,
            QStringLiteral("the cue sheet %1 cannot be used: %2").arg(quoted(m_source.sheetPath), reason), suggestion,
            m_source.sheetPath);
    }

    /// The reader asks for the files in the order in which they were found. Each counts as a number of whole blocks, so
    /// that its last track gets what fills no block, too.
    [[nodiscard]] CueSheetFiles measuredFiles()
    {
        CueSheetFiles files = filesBeside(m_source.sheetPath);
        files.measure = [this,
                         next = m_source.firstFile](CueFile *file) mutable -> Result<std::optional<std::uint64_t>> {
            const std::size_t number = next++;
            file->path = m_sources.files[qsizetype(number)];
            const std::uint64_t blocks = (m_lengths[number] + samplesPerFrame - 1) / samplesPerFrame;
            return std::optional(blocks * CDSound::bytesPerFrame);
        };
        return files;
    }

    /// Files in which no track lies were never asked for.
    void numberFiles(const std::vector<CueFile> &files)
    {
        std::size_t next = m_source.firstFile;
        for (const CueFile &file : files)
            m_numbers.push_back(file.path.isEmpty() ? 0 : next++);
    }

    [[nodiscard]] std::vector<SoundRun> runsOf(const std::vector<CueRun> &runs) const
    {
        std::vector<SoundRun> result;
        for (const CueRun &run : runs) {
            const std::size_t file = m_numbers[run.file];
            const std::uint64_t first = run.offset / CDSound::bytesPerSample;
            const std::uint64_t end = std::min(first + run.blocks * samplesPerFrame, m_lengths[file]);
            if (end > first)
                result.push_back({file, first, end - first});
        }
        return result;
    }

    void addTrack(const DiscTrack &described, const CueTrackPlace &place)
    {
        AlbumTrack track;
        track.source = m_source.sheetPath;
        track.silence = described.pregap.isStored ? 0 : described.pregap.length;
        track.pregap = runsOf(place.pregap);
        track.sound = runsOf(place.data);
        for (const std::uint64_t point : described.indexPoints)
            track.indexPoints.push_back(point * samplesPerFrame);
        track.postgap = described.postgap.length;
        track.marks = described;
        m_album.tracks.push_back(std::move(track));
    }

    /// A file that one track alone lies in has the tags of that track.
    void findOwnFiles()
    {
        const std::size_t end = m_source.firstFile + m_source.fileCount;
        for (std::size_t file = m_source.firstFile; file < end; ++file) {
            const auto liesInFile = [file](const AlbumTrack &track) {
                return std::any_of(track.sound.begin(), track.sound.end(),
                                   [file](const SoundRun &run) { return run.file == file; });
            };
            const auto first =
                std::find_if(m_album.tracks.begin() + std::ptrdiff_t(m_firstTrack), m_album.tracks.end(), liesInFile);
            if (first != m_album.tracks.end()
                && std::find_if(first + 1, m_album.tracks.end(), liesInFile) == m_album.tracks.end())
                first->ownFile = file;
        }
    }

    void takeTexts(const CDText &text)
    {
        for (const CDTextBlock &block : text.blocks) {
            for (const auto &[kind, texts] : block.texts) {
                for (std::size_t place = 0; place < texts.size(); ++place)
                    takeText(block, kind, place, texts[place]);
            }
        }
    }

    void takeText(const CDTextBlock &block, CDTextKind kind, std::size_t place, const QString &text)
    {
        const std::size_t track = m_firstTrack + place + block.firstTrack - 2; // the first text is that of the disc
        if (text.isEmpty())
            return;
        if (place == 0)
            m_album.texts[block.language].try_emplace(kind, text);
        else if (track < m_album.tracks.size())
            m_album.tracks[track].texts[block.language][kind] = text;
    }

    void takeWhatIsSaidOfTheDisc(const CueSheet &sheet)
    {
        const QByteArray &number = sheet.contents.mediaCatalogNumber;
        if (m_album.mediaCatalogNumber.isEmpty())
            m_album.mediaCatalogNumber = number;
        else if (!number.isEmpty() && number != m_album.mediaCatalogNumber)
            m_album.notes << QStringLiteral(
                                 "the catalogue number %1 of the cue sheet %2 gives way to that of another one")
                                 .arg(QString::fromLatin1(number), quoted(m_source.sheetPath));
        for (const CueNote &note : sheet.notes) {
            const QString place = note.line > 0 ? QStringLiteral(", line %1").arg(note.line) : QString();
            m_album.notes << QStringLiteral("%1%2: %3").arg(quoted(m_source.sheetPath), place, note.text);
        }
    }

    const AudioSources &m_sources;
    const AudioSource &m_source;
    const std::vector<std::uint64_t> &m_lengths;
    AudioAlbum &m_album;
    const std::size_t m_firstTrack;
    std::vector<std::size_t> m_numbers; ///< of the sheet's files, in m_sources
};

void addFile(const AudioSources &sources, std::size_t file, std::uint64_t length, AudioAlbum *album)
{
    AlbumTrack track;
    track.source = sources.files[qsizetype(file)];
    track.ownFile = file;
    track.sound = {{file, 0, length}};
    album->tracks.push_back(std::move(track));
}

} // namespace

Result<AudioAlbum> audioAlbumOf(const AudioSources &sources, const std::vector<std::uint64_t> &lengths,
                                std::uint32_t gap)
{
    AudioAlbum album;
    for (const AudioSource &source : sources.sources) {
        const std::size_t firstTrack = album.tracks.size();
        if (source.sheetPath.isEmpty())
            addFile(sources, source.firstFile, lengths[source.firstFile], &album);
        else if (NSError error = SheetTaker(sources, source, lengths, &album).take())
            return error;
        if (firstTrack > 0)
            album.tracks[firstTrack].silence += gap;
    }
    if (sources.sources.size() > 1)
        album.texts.clear(); // a sheet tells only of a part of the disc then
    return album;
}

} // namespace Tessaron
