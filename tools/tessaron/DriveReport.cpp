#include "tools/tessaron/DriveReport.h"

namespace Tessaron::Tool
{

QString discText(const DiscDescription &disc)
{
    return disc.profileName.isEmpty() ? QStringLiteral("a disc") : QStringLiteral("a %1").arg(disc.profileName);
}

QString nameOfDiscState(DiscState state)
{
    switch (state) {
    case DiscState::NoDisc:
        return QStringLiteral("no-disc");
    case DiscState::Blank:
        return QStringLiteral("blank");
    case DiscState::Appendable:
        return QStringLiteral("appendable");
    case DiscState::Closed:
        return QStringLiteral("closed");
    case DiscState::Unsuitable:
        return QStringLiteral("unsuitable");
    case DiscState::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

void writeDiscObject(JsonWriter &writer, const DiscDescription &disc)
{
    writer.beginObject();
    writer.member("state", nameOfDiscState(disc.state));
    writer.member("profile", disc.profile);
    writer.member("profileName", disc.profileName);
    writer.member("erasable", disc.isErasable);
    writer.member("simulates", disc.canSimulate);
    writer.member("appends", disc.canAppendLater);
    writer.member("freeBlocks", disc.freeBlocks);
    writer.member("freeBytes", disc.freeBlocks * 2048);
    writer.member("readableBlocks", disc.readableBlocks);
    writer.member("sessions", disc.sessions);
    if (disc.lastSession)
        writer.member("lastSession", *disc.lastSession);
    if (disc.nextBlock)
        writer.member("nextBlock", *disc.nextBlock);
    writer.key("tracks");
    writer.beginArray();
    for (const RecordedTrackDescription &track : disc.tracks) {
        writer.beginObject();
        writer.member("session", track.session);
        writer.member("number", track.number);
        writer.member("firstBlock", track.firstBlock);
        writer.member("blocks", track.blocks);
        writer.member("audio", track.isAudio);
        writer.endObject();
    }
    writer.endArray();
    writer.key("speeds");
    writer.beginArray();
    for (const std::uint32_t speed : disc.writeSpeeds)
        writer.value(std::uint64_t(speed));
    writer.endArray();
    writer.member("maker", disc.makerCode);
    writer.endObject();
}

} // namespace Tessaron::Tool
