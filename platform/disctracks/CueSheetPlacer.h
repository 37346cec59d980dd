#pragma once

#include "platform/disctracks/CueSheetParser.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// Gives each track that was parsed its blocks of the files, and puts the tracks into the sheet.
class CueSheetPlacer
{
public:
    CueSheetPlacer(CueSheet *sheet, std::vector<SpokenTrack> &tracks, const std::vector<std::uint32_t> &fileLines,
                   const CueSheetFiles &files);

    /// Asks `files` for the length of each file, in order. An error names its line.
    [[nodiscard]] NSError place();

private:
    struct CuePoint {
        std::size_t track;
        CueIndex index;
    };

    [[nodiscard]] QString nameOf(std::size_t file) const { return QString::fromUtf8(m_sheet.files[file].name); }

    /// Comes to an index: what lies in front of it belongs to the index before.
    [[nodiscard]] NSError begin(const CuePoint &point, const CuePoint *before);

    [[nodiscard]] NSError openFile(std::size_t file);

    /// Gives the track the next blocks of the current file.
    [[nodiscard]] NSError takeBlocks(std::uint64_t blocks, std::size_t owner, bool isPregap, const CueIndex &upTo);

    /// Gives the track of the file's last index what is left of the file.
    [[nodiscard]] NSError takeRest(const CuePoint &point);

    void reportUnusedFiles(const std::vector<CuePoint> &points);

    [[nodiscard]] NSError finishTracks();

    CueSheet &m_sheet;
    std::vector<SpokenTrack> &m_tracks;
    const std::vector<std::uint32_t> &m_fileLines;
    const CueSheetFiles &m_files;
    std::uint64_t m_offset = 0; ///< in the current file, bytes
    std::uint64_t m_frame = 0; ///< at m_offset
    std::optional<std::uint64_t> m_length; ///< of the current file, bytes
};

} // namespace Tessaron
