#include "fuzz/Fields.h"
#include "fuzz/FuzzTarget.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueSheetReader.h"
#include "platform/disctracks/CueSheetWriter.h"
#include "platform/disctracks/TrackSubchannel.h"
#include "platform/disctracks/vant/VANTReader.h"
#include "platform/disctracks/vant/VANTTrailer.h"

#include <algorithm>
#include <limits>

// A table of contents with any numbers, as images of other programs claim them: what check() lets pass can be counted,
// written and read back.

namespace
{

using namespace Tessaron;

/// Mostly numbers that discs have, and now and then any.
std::uint64_t nextLength(Fields &fields)
{
    const auto shape = fields.next<std::uint8_t>();
    if (shape == 0xFF)
        return fields.next<std::uint64_t>();
    return shape >= 0x80 ? fields.next<std::uint32_t>() : fields.next<std::uint16_t>();
}

DiscTrack nextTrack(Fields &fields)
{
    constexpr std::uint32_t sizes[] = {2048, 2324, 2332, 2336, 2352, 2448};
    DiscTrack track;
    track.kind = TrackKind(fields.next<std::uint8_t>() % 7);
    const auto size = fields.next<std::uint8_t>();
    track.blockSize = size < 0xF0 ? sizes[size % std::size(sizes)] : fields.next<std::uint32_t>();
    track.length = nextLength(fields);
    const auto flags = fields.next<std::uint8_t>();
    track.pregap = {(flags & 1) != 0 ? nextLength(fields) : 0, (flags & 2) != 0};
    track.postgap = {(flags & 4) != 0 ? nextLength(fields) : 0, (flags & 8) != 0};
    for (int points = flags >> 6; points > 0; --points)
        track.indexPoints.push_back(nextLength(fields));
    track.hasPreEmphasis = (flags & 16) != 0;
    track.copyState = CopyState(flags >> 4 & 3);
    return track;
}

TableOfContents nextTable(Fields &fields)
{
    TableOfContents contents;
    const bool areNumbered = fields.next<std::uint8_t>() < 0xF0;
    while (!fields.isEmpty() && contents.trackCount() < 110) {
        if (contents.sessions.empty() || fields.next<std::uint8_t>() > 0xC0)
            contents.sessions.emplace_back();
        contents.sessions.back().tracks.push_back(nextTrack(fields));
    }
    if (areNumbered)
        contents.numberTracks();
    contents.joinSessions();
    return contents;
}

void count(const TableOfContents &contents)
{
    constexpr auto most = std::uint64_t(std::numeric_limits<std::int64_t>::max());
    require(contents.storedBytes() <= most, "sums stay within 63 bits");
    BlockAddress end(std::numeric_limits<std::int64_t>::min());
    for (const DiscTrack *const track : contents.tracks()) {
        const BlockAddress start = contents.firstBlockOfTrack(track->number);
        require(start - std::int64_t(track->pregap.length) >= end || track->number == 1, "tracks do not overlap");
        end = start + std::int64_t(track->length);
        require(contents.track(track->number) == track, "a track is found by its number");
        const TrackSubchannel subchannel(*track, start);
        static_cast<void>(subchannel.bytesAt(start));
        static_cast<void>(subchannel.bytesAt(end + -1));
    }
}

/// A sheet that says all is read as the same blocks, as far as its times reach.
void writeSheet(const TableOfContents &contents)
{
    const Result<CueSheetText> sheet = cueSheetForImage(contents, "disc.bin");
    if (!sheet) {
        require(!sheet.error().localizedFailureReason().isEmpty(), "a sheet or a reason");
        return;
    }
    constexpr std::uint64_t blocksOfLongestDisc = 450000;
    const std::uint64_t bytes = contents.storedBytes();
    const auto isUsual = [](const DiscTrack *track) {
        return track->length > (track->postgap.isStored ? 0 : track->postgap.length)
            && track->blocksOnDisc() < blocksOfLongestDisc;
    };
    if (!sheet->lost.isEmpty() || !std::ranges::all_of(contents.tracks(), isUsual))
        return;
    CueSheetFiles files;
    files.measure = [bytes](CueFile *) -> Result<std::optional<std::uint64_t>> { return std::optional(bytes); };
    const Result<CueSheet> read = cueSheetOfText(sheet->text, files);
    require(read || contents.sessions.front().firstBlock.number() < 0, "a sheet that was written is read");
    require(!read || read->contents.trackCount() == contents.trackCount(), "it has as many tracks");
    require(!read || read->contents.storedBytes() == bytes, "and all bytes of the image");
}

/// Texts in two languages come back from the sheet's file of CD-TEXT.
void writeSheetWithTexts(TableOfContents contents)
{
    CDTextBlock block;
    block.texts[CDTextKind::Title] = {QStringLiteral("Disc")};
    for (std::size_t track = 1; track <= contents.trackCount(); ++track)
        block.texts[CDTextKind::Title].push_back(QString::number(track));
    contents.cdText.blocks = {block, block};
    contents.cdText.blocks.back().language = 0x08;
    const Result<QByteArray> packs = cdTextPacks(contents.cdText, std::uint32_t(contents.trackCount()));
    const Result<CueSheetText> sheet = cueSheetForImage(contents, "disc.bin", "disc.cdt");
    if (!packs || !sheet)
        return;
    CueSheetFiles files;
    files.cdText = [&packs](const QByteArray &) -> Result<QByteArray> { return *packs; };
    const Result<CueSheet> read = cueSheetOfText(sheet->text, files);
    require(!read || read->contents.cdText == contents.cdText, "all texts come back");
}

void writeVant(const TableOfContents &contents)
{
    const Result<QByteArray> trailer = vantTrailer(contents);
    if (!trailer) {
        require(!trailer.error().localizedFailureReason().isEmpty(), "a trailer or a reason");
        return;
    }
    constexpr std::uint64_t mostBytes = 1 << 20;
    if (contents.storedBytes() > mostBytes)
        return;
    const QByteArray file = QByteArray(qsizetype(contents.storedBytes()), 'x') + *trailer;
    const VANTReadResult read = VANTReader::imageFromBytes(file);
    require(read.image.has_value(), "an image that was written is read");
    const TableOfContents again = tableOfContentsOfVANT(*read.image);
    require(again.trackCount() == contents.trackCount() && again.storedBytes() == contents.storedBytes(),
            "it has the same tracks");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    Fields fields(bytes, size);
    const TableOfContents contents = nextTable(fields);
    if (const NSError error = contents.check()) {
        require(!error.localizedFailureReason().isEmpty(), "an error says what is wrong");
        return 0;
    }
    count(contents);
    writeSheet(contents);
    writeSheetWithTexts(contents);
    writeVant(contents);
    return 0;
}
