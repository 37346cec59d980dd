#include "platform/quicktime/MovieAtoms.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/quicktime/CompressedMovie.h"

#include <QList>

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::int64_t longestHeader = 4096; ///< of the atoms with a few fixed fields
constexpr std::int64_t longestDescription = 64 << 10;
constexpr std::size_t mostTracks = 1000;
constexpr std::uint64_t mostEdits = 1000;

// Atoms with a version and flags in their first four bytes.
constexpr std::int64_t sizeOfVersion = 4;
constexpr qsizetype tableHead = 8; ///< and behind these the number of entries

constexpr std::uint32_t edts = fourCharacterCode("edts"), elst = fourCharacterCode("elst"),
                        hdlr = fourCharacterCode("hdlr"), ilst = fourCharacterCode("ilst"),
                        mdhd = fourCharacterCode("mdhd"), mdia = fourCharacterCode("mdia"),
                        meta = fourCharacterCode("meta"), minf = fourCharacterCode("minf"),
                        moov = fourCharacterCode("moov"), mvex = fourCharacterCode("mvex"),
                        mvhd = fourCharacterCode("mvhd"), stbl = fourCharacterCode("stbl"),
                        stsd = fourCharacterCode("stsd"), stts = fourCharacterCode("stts"),
                        tkhd = fourCharacterCode("tkhd"), trak = fourCharacterCode("trak"),
                        udta = fourCharacterCode("udta");

template <typename Integer>
Integer bigEndian(const QByteArray &bytes, qsizetype at)
{
    return loadBigEndian<Integer>(reinterpret_cast<const std::uint8_t *>(bytes.constData()) + at);
}

QByteArray contentOf(AtomSource &source, const Atom &parent, std::initializer_list<std::uint32_t> way)
{
    const std::optional<Atom> atom = atomOnWay(source, parent, way);
    return atom ? contentOfAtom(source, *atom, longestHeader) : QByteArray();
}

/// A duration of all ones stands for one that was not known.
std::uint64_t knownDuration(std::uint64_t duration, bool isLong)
{
    return duration == (isLong ? UINT64_MAX : UINT32_MAX) ? 0 : duration;
}

/// The time scale and the duration of "mvhd" and "mdhd", which begin alike: version and flags, two times, these.
template <typename Target>
void readTimes(const QByteArray &header, std::uint32_t Target::*scale, std::uint64_t Target::*duration, Target *target)
{
    if (header.size() >= 32 && header[0] == 1) {
        target->*scale = bigEndian<std::uint32_t>(header, 20);
        target->*duration = knownDuration(bigEndian<std::uint64_t>(header, 24), true);
    } else if (header.size() >= 20) {
        target->*scale = bigEndian<std::uint32_t>(header, 12);
        target->*duration = knownDuration(bigEndian<std::uint32_t>(header, 16), false);
    }
}

/// Identifier and duration of "tkhd": version and flags, two times, these, with a reserved number between.
void readTrackHeader(const QByteArray &header, MovieTrackAtoms *track)
{
    if (header.size() >= 36 && header[0] == 1) {
        track->id = bigEndian<std::uint32_t>(header, 20);
        track->duration = knownDuration(bigEndian<std::uint64_t>(header, 28), true);
    } else if (header.size() >= 24 && header[0] != 1) {
        track->id = bigEndian<std::uint32_t>(header, 12);
        track->duration = knownDuration(bigEndian<std::uint32_t>(header, 20), false);
    }
}

std::vector<MovieEdit> editsOf(AtomSource &source, const Atom &table)
{
    std::vector<MovieEdit> edits;
    const bool isLong = source.numberAt(table.content) >> 24 == 1;
    const std::int64_t entrySize = isLong ? 20 : 12, begin = table.content + tableHead;
    const std::int64_t room = std::max<std::int64_t>(table.end - begin, 0) / entrySize;
    const std::uint64_t count =
        std::min({std::uint64_t(source.numberAt(table.content + sizeOfVersion)), std::uint64_t(room), mostEdits});
    const auto take = [&](const std::uint8_t *entry) {
        if (isLong)
            edits.push_back({std::int64_t(loadBigEndian<std::uint64_t>(entry)),
                             std::int64_t(loadBigEndian<std::uint64_t>(entry + 8))});
        else
            edits.push_back(
                {loadBigEndian<std::uint32_t>(entry), std::int32_t(loadBigEndian<std::uint32_t>(entry + 4))});
    };
    // What a cut table still has counts.
    static_cast<void>(forEachEntry(source, begin, table.end, count, entrySize, take));
    return edits;
}

/// The sum of the durations of all samples ("stts"); no value when the table is cut or makes no sense.
std::optional<std::uint64_t> sumOfDurations(AtomSource &source, const Atom &table)
{
    std::uint64_t sum = 0;
    const std::uint64_t count = source.numberAt(table.content + sizeOfVersion);
    const auto take = [&sum](const std::uint8_t *entry) {
        sum += std::uint64_t(loadBigEndian<std::uint32_t>(entry)) * loadBigEndian<std::uint32_t>(entry + 4);
    };
    if (table.end - table.content < tableHead
        || !forEachEntry(source, table.content + tableHead, table.end, count, 8, take))
        return {};
    return sum;
}

void readSampleDescription(AtomSource &source, const Atom &sampleTable, MovieTrackAtoms *track)
{
    const std::optional<Atom> descriptions = atomOnWay(source, sampleTable, {stsd});
    if (!descriptions)
        return;
    AtomWalk walk(source, descriptions->content + tableHead, descriptions->end);
    const std::optional<Atom> first = walk.next();
    if (!first)
        return;
    track->sizeOfDescription = first->end - first->begin;
    const Atom withHeader{first->type, first->begin, first->begin, first->end};
    track->sampleDescription = contentOfAtom(source, withHeader, longestDescription);
}

MovieTrackAtoms trackOf(AtomSource &source, const Atom &atom)
{
    MovieTrackAtoms track;
    readTrackHeader(contentOf(source, atom, {tkhd}), &track);
    if (const std::optional<Atom> edits = atomOnWay(source, atom, {edts, elst}))
        track.edits = editsOf(source, *edits);
    const std::optional<Atom> media = atomOnWay(source, atom, {mdia});
    if (!media)
        return track;
    readTimes(contentOf(source, *media, {mdhd}), &MovieTrackAtoms::mediaTimeScale, &MovieTrackAtoms::mediaDuration,
              &track);
    track.mediaType = contentOf(source, *media, {hdlr}).mid(8, 4);
    track.sampleTable = atomOnWay(source, *media, {minf, stbl});
    if (!track.sampleTable)
        return track;
    readSampleDescription(source, *track.sampleTable, &track);
    if (const std::optional<Atom> durations = atomOnWay(source, *track.sampleTable, {stts}))
        track.mediaDuration = sumOfDurations(source, *durations).value_or(track.mediaDuration);
    return track;
}

/// " 00000000 00000840 000001CA 00000000003F31F6 …": a reserved number, the delay, the padding, the length.
std::optional<GaplessInformation> gaplessOfText(const QByteArray &text)
{
    const QList<QByteArray> numbers = text.simplified().split(' ');
    if (numbers.size() < 4)
        return {};
    bool isDelay = false, isLength = false;
    const qlonglong delay = numbers[1].toLongLong(&isDelay, 16);
    const qlonglong length = numbers[3].toLongLong(&isLength, 16);
    if (!isDelay || !isLength || delay < 0 || delay > 1 << 16 || length <= 0)
        return {};
    return GaplessInformation{delay, length};
}

/// Items of free names: "----" with the atoms "mean", "name" and "data".
std::optional<GaplessInformation> gaplessOf(AtomSource &source, const Atom &movie)
{
    const std::optional<Atom> list = itemListOf(source, movie);
    if (!list)
        return {};
    AtomWalk items(source, *list);
    while (const std::optional<Atom> item = items.next()) {
        if (item->type == fourCharacterCode("----")
            && contentOf(source, *item, {fourCharacterCode("name")}).mid(4) == "iTunSMPB")
            return gaplessOfText(contentOf(source, *item, {fourCharacterCode("data")}).mid(8));
    }
    return {};
}

} // namespace

const MovieTrackAtoms *MovieAtoms::trackWithID(int id) const
{
    const auto found =
        std::find_if(tracks.begin(), tracks.end(), [id](const MovieTrackAtoms &one) { return int(one.id) == id; });
    return found == tracks.end() ? nullptr : &*found;
}

std::optional<Atom> itemListOf(AtomSource &source, const Atom &parent)
{
    const std::optional<Atom> user = atomOnWay(source, parent, {udta, meta});
    if (!user)
        return {};
    // In MP4 files, version and flags come before the atoms inside of "meta"; in QuickTime files they do not.
    for (const std::int64_t skipped : {sizeOfVersion, std::int64_t(0)}) {
        const Atom inside{meta, user->begin, user->content + skipped, user->end};
        if (const std::optional<Atom> list = atomOnWay(source, inside, {ilst}))
            return list;
    }
    return {};
}

std::optional<MovieTree> movieTreeOf(AtomSource &file)
{
    const std::optional<Atom> movie = atomOnWay(file, Atom{0, 0, 0, file.length()}, {moov});
    if (!movie)
        return {};
    const std::optional<Atom> compressed = atomOnWay(file, *movie, {compressedMovieType});
    if (!compressed)
        return MovieTree{&file, *movie, nullptr};
    const std::optional<QByteArray> bytes = inflatedMovie(file, *compressed);
    if (!bytes)
        return {};
    auto inflated = std::make_unique<AtomSource>(*bytes);
    const std::optional<Atom> inside = atomOnWay(*inflated, Atom{0, 0, 0, inflated->length()}, {moov});
    AtomSource *const source = inflated.get();
    return inside ? std::optional(MovieTree{source, *inside, std::move(inflated)}) : std::nullopt;
}

std::optional<MovieAtoms> movieAtomsOf(const MovieTree &tree)
{
    MovieAtoms movie;
    AtomWalk children(*tree.source, tree.movie);
    while (const std::optional<Atom> child = children.next()) {
        if (child->type == mvhd)
            readTimes(contentOfAtom(*tree.source, *child, longestHeader), &MovieAtoms::timeScale, &MovieAtoms::duration,
                      &movie);
        else if (child->type == trak && movie.tracks.size() < mostTracks)
            movie.tracks.push_back(trackOf(*tree.source, *child));
        else if (child->type == mvex)
            movie.isFragmented = true;
    }
    movie.gapless = gaplessOf(*tree.source, tree.movie);
    return movie.timeScale == 0 || movie.tracks.empty() ? std::nullopt : std::optional(std::move(movie));
}

std::optional<MovieAtoms> movieAtomsOf(const MediaFile &file)
{
    AtomSource source(file);
    const std::optional<MovieTree> tree = movieTreeOf(source);
    return tree ? movieAtomsOf(*tree) : std::nullopt;
}

} // namespace Tessaron
