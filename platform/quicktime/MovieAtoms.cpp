#include "platform/quicktime/MovieAtoms.h"

#include "platform/foundation/ByteOrder.h"

#include <QList>

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr int mostAtoms = 4096; ///< in one atom
constexpr std::int64_t mostBytesOfTable = 64 << 20;

std::uint32_t bigEndian32(const char *bytes)
{
    return loadBigEndian<std::uint32_t>(reinterpret_cast<const std::uint8_t *>(bytes));
}

std::uint64_t bigEndian64(const char *bytes)
{
    return loadBigEndian<std::uint64_t>(reinterpret_cast<const std::uint8_t *>(bytes));
}

struct Atom {
    QByteArray type;
    std::int64_t content = 0; ///< where its content begins
    std::int64_t end = 0;
};

/// The atoms between two places; those that reach past the end are cut there.
std::vector<Atom> atomsBetween(const MediaFile &file, std::int64_t begin, std::int64_t end)
{
    std::vector<Atom> atoms;
    while (begin + 8 <= end && atoms.size() < mostAtoms) {
        const QByteArray head = file.bytesAt(begin, 16);
        if (head.size() < 8)
            break;
        std::uint64_t size = bigEndian32(head.constData());
        std::int64_t headSize = 8;
        if (size == 1 && head.size() == 16) {
            size = bigEndian64(head.constData() + 8);
            headSize = 16;
        } else if (size == 0) {
            size = std::uint64_t(end - begin);
        }
        if (size < std::uint64_t(headSize))
            break;
        const std::int64_t next = size > std::uint64_t(end - begin) ? end : begin + std::int64_t(size);
        atoms.push_back({head.sliced(4, 4), begin + headSize, next});
        begin = next;
    }
    return atoms;
}

std::optional<Atom> firstAtom(const MediaFile &file, std::optional<Atom> parent, const QList<QByteArray> &way)
{
    for (const QByteArray &type : way) {
        if (!parent)
            return {};
        const std::vector<Atom> atoms = atomsBetween(file, parent->content, parent->end);
        const auto found = std::find_if(atoms.begin(), atoms.end(), [&](const Atom &one) { return one.type == type; });
        parent = found == atoms.end() ? std::nullopt : std::optional(*found);
    }
    return parent;
}

/// The content of the first atom on a way, cut at a limit; empty when no atom lies there.
QByteArray contentOf(const MediaFile &file, const Atom &parent, const QList<QByteArray> &way,
                     std::int64_t most = 4096)
{
    const std::optional<Atom> atom = firstAtom(file, parent, way);
    return atom ? file.bytesAt(atom->content, std::min(atom->end - atom->content, most)) : QByteArray();
}

/// The time scale and the duration of "mvhd" and "mdhd", which begin alike: version and flags, two times, these.
template <typename Target>
void readTimes(const QByteArray &header, std::uint32_t Target::*scale, std::uint64_t Target::*duration, Target *target)
{
    if (header.size() >= 32 && header[0] == 1) {
        target->*scale = bigEndian32(header.constData() + 20);
        target->*duration = bigEndian64(header.constData() + 24);
    } else if (header.size() >= 20) {
        target->*scale = bigEndian32(header.constData() + 12);
        target->*duration = bigEndian32(header.constData() + 16);
    }
}

std::vector<MovieEdit> editsOf(const QByteArray &table)
{
    std::vector<MovieEdit> edits;
    if (table.size() < 8)
        return edits;
    const bool isLong = table[0] == 1;
    const qsizetype entrySize = isLong ? 20 : 12;
    const std::uint64_t count =
        std::min<std::uint64_t>(bigEndian32(table.constData() + 4), std::uint64_t((table.size() - 8) / entrySize));
    for (std::uint64_t index = 0; index < count; ++index) {
        const char *const entry = table.constData() + 8 + qsizetype(index) * entrySize;
        if (isLong)
            edits.push_back({std::int64_t(bigEndian64(entry)), std::int64_t(bigEndian64(entry + 8))});
        else
            edits.push_back({bigEndian32(entry), std::int32_t(bigEndian32(entry + 4))});
    }
    return edits;
}

/// The sum of the durations of all samples ("stts"); no value when the table is cut or makes no sense.
std::optional<std::uint64_t> sumOfDurations(const QByteArray &table)
{
    if (table.size() < 8)
        return {};
    const std::uint64_t count = bigEndian32(table.constData() + 4);
    if (count > std::uint64_t((table.size() - 8) / 8))
        return {};
    std::uint64_t sum = 0;
    for (std::uint64_t index = 0; index < count; ++index) {
        const char *const entry = table.constData() + 8 + qsizetype(index) * 8;
        sum += std::uint64_t(bigEndian32(entry)) * bigEndian32(entry + 4);
    }
    return sum;
}

MovieTrackAtoms trackOf(const MediaFile &file, const Atom &atom)
{
    MovieTrackAtoms track;
    const QByteArray header = contentOf(file, atom, {"tkhd"});
    const qsizetype idAt = !header.isEmpty() && header[0] == 1 ? 20 : 12;
    if (header.size() >= idAt + 4)
        track.id = bigEndian32(header.constData() + idAt);
    readTimes(contentOf(file, atom, {"mdia", "mdhd"}), &MovieTrackAtoms::mediaTimeScale,
              &MovieTrackAtoms::mediaDuration, &track);
    track.mediaType = contentOf(file, atom, {"mdia", "hdlr"}).mid(8, 4);
    track.edits = editsOf(contentOf(file, atom, {"edts", "elst"}, mostBytesOfTable));
    track.mediaDuration = sumOfDurations(contentOf(file, atom, {"mdia", "minf", "stbl", "stts"}, mostBytesOfTable))
                              .value_or(track.mediaDuration);
    const QByteArray descriptions = contentOf(file, atom, {"mdia", "minf", "stbl", "stsd"}, 1 << 20);
    if (descriptions.size() >= 16) {
        const std::uint32_t size = bigEndian32(descriptions.constData() + 8);
        track.sampleDescription = descriptions.mid(8, qsizetype(std::min<std::uint32_t>(size, 1 << 20)));
    }
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
std::optional<GaplessInformation> gaplessOf(const MediaFile &file, const Atom &movie)
{
    const std::optional<Atom> user = firstAtom(file, movie, {"udta", "meta"});
    if (!user)
        return {};
    // In MP4 files, version and flags come before the atoms inside of "meta"; in QuickTime files they do not.
    for (const std::int64_t skipped : {4, 0}) {
        const std::optional<Atom> list =
            firstAtom(file, Atom{user->type, user->content + skipped, user->end}, {"ilst"});
        if (!list)
            continue;
        for (const Atom &item : atomsBetween(file, list->content, list->end)) {
            if (item.type == "----" && contentOf(file, item, {"name"}).mid(4) == "iTunSMPB")
                return gaplessOfText(contentOf(file, item, {"data"}).mid(8));
        }
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

std::optional<MovieAtoms> movieAtomsOf(const MediaFile &file)
{
    const std::optional<Atom> atom = firstAtom(file, Atom{{}, 0, file.length()}, {"moov"});
    if (!atom)
        return {};
    MovieAtoms movie;
    readTimes(contentOf(file, *atom, {"mvhd"}), &MovieAtoms::timeScale, &MovieAtoms::duration, &movie);
    for (const Atom &child : atomsBetween(file, atom->content, atom->end)) {
        if (child.type == "trak")
            movie.tracks.push_back(trackOf(file, child));
        else if (child.type == "mvex")
            movie.isFragmented = true;
    }
    movie.gapless = gaplessOf(file, *atom);
    return movie.timeScale == 0 || movie.tracks.empty() ? std::nullopt : std::optional(movie);
}

} // namespace Tessaron
