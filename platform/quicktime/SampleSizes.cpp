#include "platform/quicktime/SampleSizes.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/quicktime/SampleDescriptions.h"

#include <algorithm>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t stsz = fourCharacterCode("stsz"), stz2 = fourCharacterCode("stz2"),
                        mvex = fourCharacterCode("mvex"), trex = fourCharacterCode("trex"),
                        moof = fourCharacterCode("moof"), traf = fourCharacterCode("traf"),
                        tfhd = fourCharacterCode("tfhd"), trun = fourCharacterCode("trun");

constexpr std::int64_t sizeOfVersion = 4; ///< and of the flags behind it
constexpr std::uint32_t flagsMask = 0xffffff;

// Fields of the tables of sizes, from the begin of their content.
constexpr std::int64_t sizeOfAllAt = 4, countAt = 8, entriesAt = 12;

std::optional<std::uint64_t> sumOfTable(AtomSource &source, const Atom &table, std::uint64_t count)
{
    std::uint64_t sum = 0;
    const auto take = [&sum](const std::uint8_t *entry) { sum += loadBigEndian<std::uint32_t>(entry); };
    const bool isWhole = forEachEntry(source, table.content + entriesAt, table.end, count, 4, take);
    return isWhole ? std::optional(sum) : std::nullopt;
}

/// Sizes of 4, 8 or 16 bits each.
std::optional<std::uint64_t> sumOfCompactTable(AtomSource &source, const Atom &table, std::uint64_t count)
{
    std::uint64_t sum = 0;
    const std::int64_t begin = table.content + entriesAt;
    const std::uint32_t bits = source.numberAt(table.content + sizeOfAllAt) & 0xff;
    bool isWhole = false;
    if (bits == 16) {
        isWhole = forEachEntry(source, begin, table.end, count, 2,
                               [&sum](const std::uint8_t *entry) { sum += loadBigEndian<std::uint16_t>(entry); });
    } else if (bits == 8) {
        isWhole =
            forEachEntry(source, begin, table.end, count, 1, [&sum](const std::uint8_t *entry) { sum += *entry; });
    } else if (bits == 4) {
        // The first of two lies in the upper half; an odd one at the end leaves the lower half of its byte unused.
        std::uint64_t left = count;
        isWhole = forEachEntry(source, begin, table.end, (count + 1) / 2, 1, [&](const std::uint8_t *entry) {
            sum += std::uint64_t(*entry >> 4) + (left > 1 ? *entry & 0xf : 0);
            left -= std::min<std::uint64_t>(left, 2);
        });
    }
    return isWhole ? std::optional(sum) : std::nullopt;
}

/// What samples of a fragment have that do not say otherwise.
struct SampleDefaults {
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
};

std::map<std::uint32_t, SampleDefaults> defaultsOfTracks(AtomSource &source, const Atom &movie)
{
    std::map<std::uint32_t, SampleDefaults> defaults;
    const std::optional<Atom> extends = atomOnWay(source, movie, {mvex});
    if (!extends)
        return defaults;
    AtomWalk walk(source, *extends);
    while (const std::optional<Atom> atom = walk.next()) {
        // Identifier, number of the description, duration, size.
        const std::int64_t fields = atom->content + sizeOfVersion;
        if (atom->type == trex)
            defaults[source.numberAt(fields)] = {source.numberAt(fields + 8), source.numberAt(fields + 12)};
    }
    return defaults;
}

/// Goes through the fragments of a file and adds up.
class FragmentReader
{
public:
    FragmentReader(AtomSource &file, std::map<std::uint32_t, SampleDefaults> defaults)
        : m_file(file)
        , m_defaults(std::move(defaults))
    {
    }

    [[nodiscard]] bool readFragment(const Atom &fragment);

    std::map<std::uint32_t, FragmentSums> sums;

private:
    [[nodiscard]] bool readRun(const Atom &run, const SampleDefaults &defaults, FragmentSums *sum);

    AtomSource &m_file;
    const std::map<std::uint32_t, SampleDefaults> m_defaults;
};

bool FragmentReader::readFragment(const Atom &fragment)
{
    AtomWalk tracks(m_file, fragment);
    while (const std::optional<Atom> track = tracks.next()) {
        if (track->type != traf)
            continue;
        const std::optional<Atom> header = atomOnWay(m_file, *track, {tfhd});
        if (!header)
            return false;
        const std::uint32_t flags = m_file.numberAt(header->content) & flagsMask;
        const std::uint32_t id = m_file.numberAt(header->content + 4);
        const auto known = m_defaults.find(id);
        if (known == m_defaults.end())
            return false;
        SampleDefaults defaults = known->second;
        std::int64_t at = header->content + 8 + (flags & 0x01 ? 8 : 0) + (flags & 0x02 ? 4 : 0);
        if (flags & 0x08)
            defaults.duration = m_file.numberAt(std::exchange(at, at + 4));
        if (flags & 0x10)
            defaults.size = m_file.numberAt(at);
        AtomWalk runs(m_file, *track);
        while (const std::optional<Atom> run = runs.next()) {
            if (run->type == trun && !readRun(*run, defaults, &sums[id]))
                return false;
        }
    }
    return true;
}

bool FragmentReader::readRun(const Atom &run, const SampleDefaults &defaults, FragmentSums *sum)
{
    const std::uint32_t flags = m_file.numberAt(run.content) & flagsMask;
    const std::uint64_t count = m_file.numberAt(run.content + 4);
    const std::int64_t begin = run.content + 8 + (flags & 0x01 ? 4 : 0) + (flags & 0x04 ? 4 : 0);
    const bool hasDuration = flags & 0x100, hasSize = flags & 0x200;
    const int fields = int(hasDuration) + int(hasSize) + (flags & 0x400 ? 1 : 0) + (flags & 0x800 ? 1 : 0);
    if (!hasDuration)
        sum->ticks += count * defaults.duration;
    if (!hasSize)
        sum->bytes += count * defaults.size;
    if (!hasDuration && !hasSize)
        return true;
    return forEachEntry(m_file, begin, run.end, count, std::int64_t(fields) * 4, [&](const std::uint8_t *entry) {
        if (hasDuration)
            sum->ticks += loadBigEndian<std::uint32_t>(entry);
        if (hasSize)
            sum->bytes += loadBigEndian<std::uint32_t>(entry + (hasDuration ? 4 : 0));
    });
}

} // namespace

std::optional<std::uint64_t> bytesOfSamples(AtomSource &source, const MovieTrackAtoms &track)
{
    if (!track.sampleTable)
        return {};
    if (const std::optional<Atom> table = atomOnWay(source, *track.sampleTable, {stsz})) {
        const std::uint64_t sizeOfAll = source.numberAt(table->content + sizeOfAllAt);
        const std::uint64_t count = source.numberAt(table->content + countAt);
        if (table->end - table->content < entriesAt)
            return {};
        if (sizeOfAll == 0)
            return sumOfTable(source, *table, count);
        const bool countsSamplesOfSound = sizeOfAll == 1 && track.mediaType == "soun";
        const std::optional<std::uint64_t> bytes =
            countsSamplesOfSound ? bytesOfSoundSamples(track.sampleDescription, count) : std::nullopt;
        return bytes.value_or(sizeOfAll * count);
    }
    if (const std::optional<Atom> table = atomOnWay(source, *track.sampleTable, {stz2}))
        return sumOfCompactTable(source, *table, source.numberAt(table->content + countAt));
    return {};
}

std::optional<std::map<std::uint32_t, FragmentSums>> sumsOfFragments(AtomSource &file, const MovieTree &tree)
{
    FragmentReader reader(file, defaultsOfTracks(*tree.source, tree.movie));
    AtomWalk walk(file, 0, file.length());
    while (const std::optional<Atom> atom = walk.next()) {
        if (atom->type == moof && !reader.readFragment(*atom))
            return {};
    }
    if (file.failure() != 0 || file.isLimitReached() || file.isCancelled())
        return {};
    return std::move(reader.sums);
}

} // namespace Tessaron
