#include "platform/quicktime/decoding/HeardRun.h"

#include "platform/quicktime/decoding/FFmpegHandles.h"

#include <algorithm>

namespace Tessaron
{

std::optional<MediaRun> heardRun(const MovieAtoms &movie, const MovieTrackAtoms &track)
{
    if (movie.isFragmented || track.mediaTimeScale == 0 || track.mediaDuration > INT64_MAX / 2)
        return {};
    const std::int64_t duration = std::int64_t(track.mediaDuration);
    const bool hasEdits = !track.edits.empty();
    if (track.edits.size() > 1 || (hasEdits && (track.edits[0].mediaTime < 0 || track.edits[0].duration < 0)))
        return {};
    MediaRun run{0, duration};
    if (hasEdits) {
        const MovieEdit &edit = track.edits[0];
        run.begin = std::min(edit.mediaTime, duration);
        const std::int64_t length = av_rescale(edit.duration, track.mediaTimeScale, movie.timeScale);
        const std::int64_t movieTick = track.mediaTimeScale / movie.timeScale + 1;
        // The movie's ticks are coarser than samples: an end within one of them of the media's is the media's end.
        // No duration says the same.
        const bool endsWithMedia = length == 0 || length >= duration - run.begin - movieTick;
        run.end = endsWithMedia ? duration : run.begin + length;
    }
    if (!movie.gapless || movie.gapless->length > duration)
        return run;
    const std::int64_t delay = movie.gapless->delay;
    const bool agrees = !hasEdits || run.begin == delay;
    if (agrees && movie.gapless->length <= run.end - delay)
        run = {delay, delay + movie.gapless->length};
    return run;
}

} // namespace Tessaron
