#include "fuzz/FuzzTarget.h"

#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/QuickTimeDescription.h"

#include <sys/mman.h>

using namespace Tessaron;

namespace
{

void checkTrack(const QTTrack &track)
{
    require(track.mediaType.size() <= 4, "a kind of media has four characters");
    require(track.duration >= 0, "a duration is not negative");
    require(!track.sound || track.mediaType == "soun", "sound is described as sound");
    require(!track.image || track.mediaType == "vide", "pictures are described as pictures");
    require(!track.sound || track.sound->descSize >= 36, "a description is as long as its fields");
}

void checkMovie(const MovieDescription &movie, std::int64_t size)
{
    require(movie.duration.timeScale > 0 && movie.duration.timeValue >= 0, "a duration makes sense");
    require(!movie.tracks.empty() && movie.tracks.size() <= 1000, "there are tracks, and not without an end");
    for (const QTTrack &track : movie.tracks)
        checkTrack(track);
    qsizetype bytes = 0;
    for (const MovieMetadataItem &item : movie.metadata)
        bytes += item.key.size() + item.value.size();
    require(bytes <= 1 << 20 && movie.metadata.size() <= 1000, "texts take no more than a megabyte");
    if (movie.cover)
        require(movie.cover->offset > 0 && movie.cover->length > 0 && movie.cover->offset + movie.cover->length <= size,
                "a cover lies in the file");
}

} // namespace

/// The atoms of a QuickTime or MP4 file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const UniqueDescriptor memory(::memfd_create("movie", MFD_CLOEXEC));
    require(memory.isValid() && ::write(memory.get(), bytes, size) == ssize_t(size), "there is memory for a file");
    const Result<MediaFile> file = MediaFile::open("/proc/self/fd/" + QByteArray::number(memory.get()));
    require(file.hasValue(), "a file in memory can be opened");
    const Result<std::optional<MovieDescription>> movie = quickTimeDescription(*file, {});
    if (!movie)
        require(!movie.error().localizedFailureReason().isEmpty()
                    && !movie.error().localizedRecoverySuggestion().isEmpty(),
                "an error says what is wrong and what to do");
    else if (*movie)
        checkMovie(**movie, std::int64_t(size));
    return 0;
}
