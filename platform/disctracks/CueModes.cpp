#include "platform/disctracks/CueModes.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

constexpr std::int32_t interactiveSession = 16; // CD-I

struct CueMode {
    const char *word;
    TrackKind kind;
    std::uint32_t blockSize;
    bool isInteractive = false;
};
constexpr std::array modes = {
    CueMode{"AUDIO", TrackKind::Audio, 2352},
    CueMode{"CDG", TrackKind::Audio, 2448},
    CueMode{"MODE1/2048", TrackKind::Mode1, 2048},
    CueMode{"MODE1/2352", TrackKind::Mode1, 2352},
    CueMode{"MODE1/2448", TrackKind::Mode1, 2448},
    CueMode{"MODE2/2048", TrackKind::Mode2Form1, 2048},
    CueMode{"MODE2/2324", TrackKind::Mode2Form2, 2324},
    CueMode{"MODE2/2332", TrackKind::Mode2Mixed, 2332},
    CueMode{"MODE2/2336", TrackKind::Mode2Mixed, 2336},
    CueMode{"MODE2/2352", TrackKind::Mode2Mixed, 2352},
    CueMode{"MODE2/2448", TrackKind::Mode2Mixed, 2448},
    CueMode{"CDI/2336", TrackKind::Mode2Mixed, 2336, true},
    CueMode{"CDI/2352", TrackKind::Mode2Mixed, 2352, true},
};

bool isMode2(TrackKind kind)
{
    return kind == TrackKind::Mode2Formless || kind == TrackKind::Mode2Form1 || kind == TrackKind::Mode2Form2
        || kind == TrackKind::Mode2Mixed;
}

} // namespace

bool setCueMode(const QByteArray &word, DiscTrack *track)
{
    const auto *const mode = std::ranges::find_if(modes, [&](const CueMode &known) { return word == known.word; });
    if (mode == modes.end())
        return false;
    track->kind = mode->kind;
    track->blockSize = mode->blockSize;
    if (mode->isInteractive) {
        track->recording = recordingNumbers(*track);
        track->recording.sessionFormat = interactiveSession;
    }
    return true;
}

QByteArray cueModeOf(const DiscTrack &track)
{
    const bool isInteractive = track.recording.sessionFormat == interactiveSession && track.blockSize != 2048;
    const auto fits = [&](const CueMode &mode) {
        const bool isOfKind = mode.kind == track.kind || (isMode2(mode.kind) && isMode2(track.kind));
        return isOfKind && mode.blockSize == track.blockSize && mode.isInteractive == isInteractive;
    };
    const auto *const mode = std::ranges::find_if(modes, fits);
    return mode == modes.end() ? QByteArray() : QByteArray(mode->word);
}

QByteArray knownCueModes()
{
    QByteArray all;
    for (const CueMode &mode : modes)
        all += (all.isEmpty() ? QByteArray() : QByteArray(", ")) + mode.word;
    return all;
}

} // namespace Tessaron
