#include "fuzz/FuzzTarget.h"

#include "platform/disctracks/CueSheetReader.h"
#include "platform/disctracks/CueSheetWriter.h"

namespace
{

using namespace Tessaron;

constexpr std::uint64_t fileLength = std::uint64_t(80) * 60 * 75 * 2352;

std::uint64_t blocksOf(const std::vector<CueRun> &runs, std::uint32_t blockSize)
{
    std::uint64_t blocks = 0;
    for (const CueRun &run : runs) {
        require(run.offset <= fileLength && run.blocks <= (fileLength - run.offset) / blockSize,
                "a run lies within its file");
        blocks += run.blocks;
    }
    return blocks;
}

void checkSheet(const CueSheet &sheet)
{
    require(!sheet.contents.check(), "the table makes sense");
    const std::vector<const DiscTrack *> tracks = sheet.contents.tracks();
    require(tracks.size() == sheet.places.size(), "each track has a place");
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        const DiscTrack &track = *tracks[index];
        const CueTrackPlace &place = sheet.places[index];
        const std::uint64_t blocks = blocksOf(place.pregap, track.blockSize) + blocksOf(place.data, track.blockSize);
        require(blocks == track.storedBlocks(), "a track's runs are its blocks");
    }
    const Result<CueSheetText> written = cueSheetForImage(sheet.contents, "disc.bin");
    require(written || !written.error().localizedFailureReason().isEmpty(), "a sheet or a reason");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    CueSheetFiles files;
    files.measure = [](CueFile *) -> Result<std::optional<std::uint64_t>> { return std::optional(fileLength); };
    files.cdText = [](const QByteArray &name) -> Result<QByteArray> { return name; };
    const QByteArray text(reinterpret_cast<const char *>(bytes), qsizetype(size));
    const Result<CueSheet> sheet = cueSheetOfText(text, files);
    if (sheet) {
        checkSheet(*sheet);
    } else {
        require(!sheet.error().localizedFailureReason().isEmpty()
                    && !sheet.error().localizedRecoverySuggestion().isEmpty(),
                "an error says what is wrong and what to do");
    }
    return 0;
}
