#include "platform/quicktime/QuickTimeDescription.h"

#include "platform/quicktime/CompressedMovie.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/MovieAtoms.h"
#include "platform/quicktime/MovieMetadata.h"
#include "platform/quicktime/MovieTimes.h"
#include "platform/quicktime/SampleDescriptions.h"
#include "platform/quicktime/SampleSizes.h"

#include <algorithm>
#include <map>

namespace Tessaron
{

namespace
{

using SumsOfTracks = std::map<std::uint32_t, FragmentSums>;

std::int64_t signedTime(std::uint64_t time)
{
    return std::int64_t(std::min(time, std::uint64_t(INT64_MAX)));
}

/// What the header of the file says that it is.
QString nameOfContainer(AtomSource &file)
{
    AtomWalk walk(file, 0, file.length());
    const std::optional<Atom> first = walk.next();
    const bool hasBrand = first && first->type == fourCharacterCode("ftyp");
    const std::uint32_t brand = hasBrand ? file.numberAt(first->content) : fourCharacterCode("qt  ");
    if (brand == fourCharacterCode("qt  "))
        return QStringLiteral("QuickTime");
    const bool isOfPhones = brand >> 16 == fourCharacterCode("3g\0\0") >> 16;
    return isOfPhones ? QStringLiteral("3GPP") : QStringLiteral("MP4");
}

class QuickTimeReader
{
public:
    QuickTimeReader(AtomSource &file, const MovieTree &tree, MovieAtoms atoms)
        : m_file(file)
        , m_tree(tree)
        , m_atoms(std::move(atoms))
    {
    }

    [[nodiscard]] MovieDescription describe();

private:
    [[nodiscard]] QTTrack trackOf(const MovieTrackAtoms &atoms);
    [[nodiscard]] std::int64_t durationOf(const MovieTrackAtoms &atoms, const FragmentSums &added) const;

    AtomSource &m_file;
    const MovieTree &m_tree;
    const MovieAtoms m_atoms;
    std::optional<SumsOfTracks> m_fragments;
};

std::int64_t QuickTimeReader::durationOf(const MovieTrackAtoms &atoms, const FragmentSums &added) const
{
    const bool isInHeader = atoms.duration > 0 && !m_atoms.isFragmented;
    if (isInHeader || atoms.mediaTimeScale == 0)
        return signedTime(atoms.duration);
    std::uint64_t ticks = 0;
    if (__builtin_add_overflow(atoms.mediaDuration, added.ticks, &ticks))
        ticks = UINT64_MAX;
    return rescaledTime(signedTime(ticks), m_atoms.timeScale, atoms.mediaTimeScale);
}

QTTrack QuickTimeReader::trackOf(const MovieTrackAtoms &atoms)
{
    QTTrack track;
    track.mediaType = atoms.mediaType;
    FragmentSums added;
    if (m_fragments) {
        const auto found = m_fragments->find(atoms.id);
        added = found == m_fragments->end() ? added : found->second;
    }
    track.duration = durationOf(atoms, added);
    const std::optional<std::uint64_t> listed = bytesOfSamples(*m_tree.source, atoms);
    const bool isKnown = listed && (m_fragments || !m_atoms.isFragmented);
    std::uint64_t size = 0;
    if (isKnown && !__builtin_add_overflow(*listed, added.bytes, &size))
        track.dataSize = size;
    if (atoms.mediaType == "soun")
        track.sound = soundDescription(atoms.sampleDescription, atoms.sizeOfDescription, atoms.mediaTimeScale);
    else if (atoms.mediaType == "vide")
        track.image = imageDescription(atoms.sampleDescription);
    return track;
}

MovieDescription QuickTimeReader::describe()
{
    MovieDescription movie;
    movie.container = nameOfContainer(m_file);
    if (m_atoms.isFragmented)
        m_fragments = sumsOfFragments(m_file, m_tree);
    movie.duration = {m_atoms.isFragmented ? 0 : signedTime(m_atoms.duration), m_atoms.timeScale};
    std::int64_t longest = 0;
    for (const MovieTrackAtoms &atoms : m_atoms.tracks) {
        movie.tracks.push_back(trackOf(atoms));
        longest = std::max(longest, movie.tracks.back().duration);
    }
    if (movie.duration.timeValue == 0)
        movie.duration.timeValue = longest;
    MovieMetadata metadata = metadataOfMovie(m_tree);
    movie.metadata = std::move(metadata.items);
    movie.cover = std::move(metadata.cover);
    return movie;
}

/// The error that made reading end early; the null error without one.
NSError errorOf(const AtomSource &source, const QByteArray &path)
{
    if (source.isCancelled())
        return mediaCancelledError(path);
    if (source.failure() != 0)
        return mediaOpenError(source.failure(), path);
    if (source.isLimitReached())
        return mediaError(invalidMovie, path, QStringLiteral("its tables have no end"),
                          QStringLiteral("The file is damaged; get it again from where it came from."));
    return {};
}

} // namespace

Result<std::optional<MovieDescription>> quickTimeDescription(const MediaFile &file, const std::stop_token &stop)
{
    AtomSource source(file, stop);
    const std::optional<MovieTree> tree = movieTreeOf(source);
    std::optional<MovieAtoms> atoms = tree ? movieAtomsOf(*tree) : std::nullopt;
    std::optional<MovieDescription> movie;
    if (atoms)
        movie = QuickTimeReader(source, *tree, *std::move(atoms)).describe();
    if (const NSError error = errorOf(source, file.path()))
        return error;
    if (!tree && atomOnWay(source, Atom{0, 0, 0, source.length()}, {fourCharacterCode("moov"), compressedMovieType}))
        return mediaError(invalidMovie, file.path(),
                          QStringLiteral("its tables are compressed, and damaged or in a form that is not known"),
                          QStringLiteral("Save it again, without compressed tables, with the program that made it."));
    if (!movie)
        return movie;
    const bool holdsSomething = std::any_of(movie->tracks.begin(), movie->tracks.end(), [](const QTTrack &track) {
        return track.mediaType == "soun" || track.mediaType == "vide";
    });
    if (!holdsSomething)
        return mediaError(noMovieFound, file.path(), QStringLiteral("it holds neither sound nor pictures that move"),
                          QStringLiteral("Choose an audio or movie file."));
    return movie;
}

} // namespace Tessaron
