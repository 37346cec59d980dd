#include "imaging/verification/CueSheet.h"

#include <QList>

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

constexpr std::size_t maximumTracks = 99;
constexpr std::int64_t framesPerSecond = 75;

struct CueMode {
    const char *name;
    std::uint32_t blockSize;
    bool isData;
    std::uint32_t dataOffset;
};
constexpr std::array modes = {
    CueMode{"AUDIO", 2352, false, 0},      CueMode{"CDG", 2448, false, 0},       CueMode{"MODE1/2048", 2048, true, 0},
    CueMode{"MODE1/2352", 2352, true, 16}, CueMode{"MODE2/2048", 2048, true, 0}, CueMode{"MODE2/2336", 2336, true, 8},
    CueMode{"MODE2/2352", 2352, true, 24}, CueMode{"CDI/2336", 2336, true, 8},   CueMode{"CDI/2352", 2352, true, 24},
};

/// "minutes:seconds:frames" in frames; -1 when it is none.
std::int64_t framesOf(const QByteArray &text)
{
    const QList<QByteArray> parts = text.split(':');
    std::array<std::int64_t, 3> numbers{};
    if (parts.size() != 3)
        return -1;
    for (qsizetype index = 0; index < 3; ++index) {
        bool isNumber = false;
        numbers[std::size_t(index)] = parts[index].toUShort(&isNumber);
        if (!isNumber)
            return -1;
    }
    return (numbers[0] * 60 + numbers[1]) * framesPerSecond + numbers[2];
}

/// The file's name: between quotes, or the word behind FILE.
QByteArray fileNameIn(const QByteArray &line)
{
    const qsizetype first = line.indexOf('"');
    const qsizetype last = line.lastIndexOf('"');
    if (first >= 0 && last > first)
        return line.mid(first + 1, last - first - 1);
    return line.simplified().split(' ').value(1);
}

CueTrack newTrack(const QList<QByteArray> &words, const QByteArray &fileName)
{
    CueTrack track;
    track.number = words.value(1).toUInt();
    track.mode = words.value(2).toUpper();
    track.fileName = fileName;
    const auto *const known =
        std::find_if(modes.begin(), modes.end(), [&](const CueMode &mode) { return track.mode == mode.name; });
    if (known != modes.end()) {
        track.blockSize = known->blockSize;
        track.isData = known->isData;
        track.dataOffset = known->dataOffset;
    }
    return track;
}

} // namespace

std::vector<CueTrack> tracksOfCueSheet(const QByteArray &text)
{
    std::vector<CueTrack> tracks;
    QByteArray fileName;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        const QByteArray command = words.first().toUpper();
        if (command == "FILE") {
            fileName = fileNameIn(line);
        } else if (command == "TRACK" && tracks.size() < maximumTracks) {
            tracks.push_back(newTrack(words, fileName));
        } else if (command == "PREGAP" && !tracks.empty()) {
            tracks.back().pregap = std::uint32_t(std::max<std::int64_t>(framesOf(words.value(1)), 0));
        } else if (command == "INDEX" && !tracks.empty()) {
            const std::int64_t frame = framesOf(words.value(2));
            const unsigned int index = words.value(1).toUInt();
            CueTrack &track = tracks.back();
            if (track.firstFrame < 0)
                track.firstFrame = frame;
            if (index == 1)
                track.startFrame = frame;
        }
    }
    return tracks;
}

} // namespace Tessaron
