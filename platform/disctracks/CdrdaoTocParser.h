#pragma once

#include "platform/disctracks/CdrdaoTexts.h"
#include "platform/disctracks/CdrdaoWords.h"
#include "platform/disctracks/CueSheetReader.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace Tessaron
{

/// A run of blocks of a track, of a file or of silence.
struct CdrdaoPiece {
    std::optional<CueRun> run; ///< absent for silence
    std::uint64_t blocks = 0;
    std::uint32_t line = 0;
};

/// A track while its words are read.
struct CdrdaoTrack {
    DiscTrack track;
    std::uint32_t line = 0;
    std::vector<CdrdaoPiece> pieces;
    std::optional<std::uint64_t> start; ///< blocks from the first piece to index 1
    std::vector<std::pair<std::uint64_t, std::uint32_t>> indexes; ///< blocks from index 1, and line
    bool isLengthKnown = true;
    std::uint32_t restBytes = 0; ///< see CueTrackPlace
};

/// Reads the words of a .toc file, and places the tracks.
class CdrdaoTocParser
{
public:
    CdrdaoTocParser(CueSheet *sheet, const CueSheetFiles &files, std::vector<CdrdaoWord> words);

    /// Takes all words and fills in the sheet. An error names its line.
    [[nodiscard]] NSError parse();

private:
    using Handler = NSError (CdrdaoTocParser::*)(const CdrdaoWord &);

    void note(std::uint32_t line, const QString &text) { m_sheet.notes.push_back({line, text}); }

    [[nodiscard]] NSError takeCommand(const CdrdaoWord &command);
    [[nodiscard]] NSError takeTrack(const CdrdaoWord &command);
    [[nodiscard]] NSError takeCatalog(const CdrdaoWord &command);
    [[nodiscard]] NSError takeIsrc(const CdrdaoWord &command);
    [[nodiscard]] NSError takeNo(const CdrdaoWord &command);
    [[nodiscard]] NSError takeFlag(const CdrdaoWord &command);
    [[nodiscard]] NSError takeFile(const CdrdaoWord &command);
    [[nodiscard]] NSError takeDataFile(const CdrdaoWord &command);
    [[nodiscard]] NSError takeFifo(const CdrdaoWord &command);
    [[nodiscard]] NSError takeSilence(const CdrdaoWord &command);
    [[nodiscard]] NSError takePregap(const CdrdaoWord &command);
    [[nodiscard]] NSError takeStart(const CdrdaoWord &command);
    [[nodiscard]] NSError takeIndex(const CdrdaoWord &command);
    [[nodiscard]] NSError takeTexts(const CdrdaoWord &command);

    /// The bytes that a time, or a number of samples or bytes, means in the file of a track.
    [[nodiscard]] Result<std::uint64_t> takeBytes(const CdrdaoTrack &open);
    [[nodiscard]] Result<std::uint64_t> takeBlocks();
    /// Whether the next word is a length and not the next command.
    [[nodiscard]] bool isLengthNext() const;
    /// Where a file was named first; a new one when it was not.
    [[nodiscard]] std::size_t fileNamed(const QString &name, CueFileType type);
    struct Range {
        std::uint64_t offset = 0; ///< bytes
        std::optional<std::uint64_t> length; ///< bytes; absent for all the rest
    };
    [[nodiscard]] NSError takeOffset(Range *range);
    [[nodiscard]] NSError addPiece(std::size_t file, const Range &range, std::uint32_t line);
    [[nodiscard]] Result<std::optional<std::uint64_t>> lengthOf(std::size_t file, std::uint32_t line);

    [[nodiscard]] NSError finishTrack();
    [[nodiscard]] NSError takeGaps(std::uint64_t *lead, std::uint64_t *tail);
    [[nodiscard]] NSError placePieces(std::uint64_t lead, std::uint64_t tail, CueTrackPlace *place);

    CueSheet &m_sheet;
    const CueSheetFiles &m_files;
    CdrdaoWordReader m_words;
    CdrdaoTexts m_texts; ///< reads m_words, too
    std::optional<CdrdaoTrack> m_open;
    std::vector<DiscTrack> m_tracks;
    std::map<std::size_t, std::optional<std::uint64_t>> m_lengths; ///< of the files that were measured
};

} // namespace Tessaron
