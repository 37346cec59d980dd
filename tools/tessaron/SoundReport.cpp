#include "tools/tessaron/SoundReport.h"

#include "tools/tessaron/StandardStreams.h"

#include <optional>

namespace Tessaron::Tool
{

namespace
{

void writeDecibels(JsonWriter &writer, const char *name, const std::optional<double> &value)
{
    if (!value)
        return;
    writer.key(name);
    writer.value(*value, 2);
}

void writeTrack(JsonWriter &writer, const AudioImageTrack &track)
{
    writer.beginObject();
    writer.member("track", std::uint64_t(track.number));
    writer.pathMember("source", track.source);
    writer.member("samples", track.samples);
    writer.member("pregapFrames", track.pregap);
    writer.member("firstFrame", track.firstFrame);
    writer.member("frames", track.frames);
    writer.member("title", track.title);
    writer.member("performer", track.performer);
    writer.member("isrc", QString::fromLatin1(track.isrc));
    writer.member("tooShort", track.isTooShort);
    writeDecibels(writer, "loudness", track.loudness);
    writeDecibels(writer, "truePeak", track.truePeak);
    writeDecibels(writer, "gain", track.gain);
    writer.member("damagedPlaces", track.damage.count);
    writer.key("damage");
    writer.beginArray();
    for (const AudioDamage &place : track.damage.places) {
        writer.beginObject();
        writer.key("seconds");
        writer.value(place.seconds, 3);
        writer.member("message", place.what);
        writer.endObject();
    }
    writer.endArray();
    writer.endObject();
}

} // namespace

void printShortTracks(const std::vector<AudioImageTrack> &tracks)
{
    for (const AudioImageTrack &track : tracks) {
        if (track.isTooShort)
            printDiagnostic(
                QStringLiteral("track %1 is shorter than four seconds, which many recorders refuse").arg(track.number));
    }
}

void writeSoundTracks(JsonWriter &writer, const char *name, const std::vector<AudioImageTrack> &tracks)
{
    writer.key(name);
    writer.beginArray();
    for (const AudioImageTrack &track : tracks)
        writeTrack(writer, track);
    writer.endArray();
}

} // namespace Tessaron::Tool
