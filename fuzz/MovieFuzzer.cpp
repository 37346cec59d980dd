#include "fuzz/FuzzTarget.h"

#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/MediaModule.h"
#include "platform/quicktime/MovieDescription.h"
#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "platform/quicktime/decoding/DecodingService.h"

#include <array>
#include <sys/mman.h>

namespace
{

using namespace Tessaron;

constexpr std::uint64_t mostSamples = std::uint64_t(44100) * 20;
constexpr qsizetype longestText = 64 << 10;

/// The bytes as a file without a name in any folder.
UniqueDescriptor fileOf(const std::uint8_t *bytes, std::size_t size)
{
    UniqueDescriptor file(::memfd_create("movie", MFD_CLOEXEC));
    require(file.isValid() && ::write(file.get(), bytes, size) == ssize_t(size), "there is memory for a file");
    return file;
}

void checkError(const NSError &error)
{
    require(!error.localizedFailureReason().isEmpty() && !error.localizedRecoverySuggestion().isEmpty(),
            "an error says what is wrong and what to do");
}

void checkMovie(const QTMovie &movie)
{
    require(movie.duration().timeScale > 0 && movie.duration().timeValue >= 0, "a duration makes sense");
    for (const QTTrack &track : movie.tracks())
        require(track.sound.has_value() == (track.mediaType == "soun"), "sound is described as sound");
    const auto copy = QTMovie::newMovie();
    if (const NSError error = InsertMovieSegment(movie, *copy, movie.duration().timeValue / 2, INT64_MAX))
        checkError(error);
}

void checkDescription(const QByteArray &path)
{
    const Result<MovieDescription> movie = describeMovie(path);
    if (!movie)
        return checkError(movie.error());
    require(movie->duration.timeScale > 0 && movie->duration.timeValue >= 0, "a described duration makes sense");
    for (const QTTrack &track : movie->tracks) {
        require(track.duration >= 0, "a track is not shorter than nothing");
        require(!track.sound || track.mediaType == "soun", "sound is described as sound");
    }
    for (const MovieMetadataItem &item : movie->metadata)
        require(item.value.size() <= longestText, "texts have an end");
    if (!movie->cover)
        return;
    const Result<QByteArray> picture = pictureOfCover(path, *movie->cover);
    if (!picture)
        checkError(picture.error());
    else
        require(picture->size() == movie->cover->length, "a cover is as long as was said");
}

void checkSound(CDAudioDecoder &decoder)
{
    const CDAudioLength length = decoder.length();
    std::array<char, 40000> buffer;
    std::uint64_t samples = 0;
    while (samples < mostSamples) {
        const Result<std::size_t> got = decoder.read(buffer.data(), buffer.size() / 4);
        if (!got)
            return checkError(got.error());
        require(*got <= buffer.size() / 4, "no more comes than was asked for");
        samples += *got;
        require(decoder.progress() >= 0 && decoder.progress() <= 1, "progress is a fraction");
        if (*got == 0) {
            require(!length.isExact || samples <= length.samples + 1 || !decoder.damage().isEmpty(),
                    "no more comes than was announced");
            return;
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    // Linked in, the decoders are watched by the fuzzing engine; those of a module would not be.
    useMediaService(decodingService());
    const UniqueDescriptor file = fileOf(bytes, size);
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(file.get());
    NSError error;
    if (const auto movie = QTMovie::movieByOpeningFileSync(path, &error))
        checkMovie(*movie);
    else
        checkError(error);
    checkDescription(path);
    const auto decoder = CDAudioDecoder::openFile(path);
    if (decoder)
        checkSound(**decoder);
    else
        checkError(decoder.error());
    return 0;
}
