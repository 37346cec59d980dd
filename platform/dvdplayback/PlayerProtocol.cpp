#include "platform/dvdplayback/PlayerProtocol.h"

#include "platform/dvdplayback/MessageBytes.h"
#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

constexpr std::size_t longestText = 4096;
constexpr std::size_t mostTitles = 99;
constexpr std::size_t mostChapters = 999;
constexpr std::size_t mostAudioStreams = 8;
constexpr std::size_t mostSubtitleStreams = 32;
constexpr std::uint8_t mostAngles = 9;
constexpr std::size_t mostMenus = 20'000;
constexpr std::size_t mostNotes = 1000;
constexpr std::size_t identitySize = 8;
constexpr std::size_t longestLanguage = 2;

/// Bytes of a message's head: kind, sequence number, length of what follows.
namespace HeadField
{
constexpr std::size_t kind = 0;
constexpr std::size_t sequence = 4;
constexpr std::size_t length = 8;
} // namespace HeadField

bool isKind(std::uint32_t value)
{
    const auto kind = static_cast<PlayerMessageKind>(value);
    return (kind >= PlayerMessageKind::Describe && kind <= PlayerMessageKind::Sleep)
        || (kind >= PlayerMessageKind::Hello && kind <= PlayerMessageKind::Failure);
}

void add(MessageWriter *writer, const PlayerPlace &place)
{
    writer->add(place.title);
    writer->add(place.chapter);
    writer->add(place.programChain);
    writer->add(place.program);
    writer->add(place.sector);
    writer->add(place.sectorInTitle);
    writer->add(place.elapsed);
    writer->add(place.angle);
}

PlayerPlace takePlace(MessageReader *reader)
{
    PlayerPlace place;
    place.title = reader->take<std::uint16_t>();
    place.chapter = reader->take<std::uint16_t>();
    place.programChain = reader->take<std::uint16_t>();
    place.program = reader->take<std::uint16_t>();
    place.sector = reader->take<std::uint32_t>();
    place.sectorInTitle = reader->take<std::uint32_t>();
    place.elapsed = reader->take<std::uint32_t>();
    place.angle = reader->take<std::uint8_t>();
    return place;
}

void add(MessageWriter *writer, const DVDVideoFacts &video)
{
    writer->add(std::uint8_t(video.standard));
    writer->add(video.isWide);
    writer->add(video.width);
    writer->add(video.height);
    writer->add(video.mayLetterbox);
    writer->add(video.mayPanAndScan);
}

DVDVideoFacts takeVideo(MessageReader *reader)
{
    DVDVideoFacts video;
    video.standard = reader->takeEnumeration(DVDVideoStandard::PAL);
    video.isWide = reader->takeBool();
    video.width = reader->take<std::uint16_t>();
    video.height = reader->take<std::uint16_t>();
    video.mayLetterbox = reader->takeBool();
    video.mayPanAndScan = reader->takeBool();
    return video;
}

void add(MessageWriter *writer, const DVDAudioStream &stream)
{
    writer->add(std::uint8_t(stream.format));
    writer->add(stream.channels);
    writer->add(stream.sampleRate);
    writer->add(stream.bitsPerSample);
    writer->add(stream.language);
    writer->add(std::uint8_t(stream.purpose));
}

DVDAudioStream takeAudioStream(MessageReader *reader)
{
    DVDAudioStream stream;
    stream.format = reader->takeEnumeration(DVDAudioFormat::Unknown);
    stream.channels = reader->take<std::uint8_t>();
    stream.sampleRate = reader->take<std::uint32_t>();
    stream.bitsPerSample = reader->take<std::uint8_t>();
    stream.language = reader->takeBytes(longestLanguage);
    stream.purpose = reader->takeEnumeration(DVDStreamPurpose::Forced);
    return stream;
}

void add(MessageWriter *writer, const DVDTitle &title)
{
    writer->add(title.number);
    writer->add(title.titleSet);
    writer->add(title.numberInSet);
    writer->add(std::int64_t(title.length.count()));
    writer->add(title.angles);
    add(writer, title.video);
    writer->add(std::uint32_t(title.chapters.size()));
    for (const DVDChapter &chapter : title.chapters) {
        writer->add(std::int64_t(chapter.start.count()));
        writer->add(std::int64_t(chapter.length.count()));
    }
    writer->add(std::uint32_t(title.audio.size()));
    for (const DVDAudioStream &stream : title.audio)
        add(writer, stream);
    writer->add(std::uint32_t(title.subtitles.size()));
    for (const DVDSubtitleStream &stream : title.subtitles) {
        writer->add(stream.language);
        writer->add(std::uint8_t(stream.purpose));
    }
    writer->add(title.damage);
}

std::chrono::milliseconds takeTime(MessageReader *reader)
{
    const auto time = reader->take<std::int64_t>();
    if (time < 0)
        reader->fail();
    return std::chrono::milliseconds(time);
}

DVDTitle takeTitle(MessageReader *reader)
{
    DVDTitle title;
    title.number = reader->take<std::uint16_t>();
    title.titleSet = reader->take<std::uint8_t>();
    title.numberInSet = reader->take<std::uint8_t>();
    title.length = takeTime(reader);
    title.angles = reader->take<std::uint8_t>();
    if (title.number == 0 || title.number > mostTitles || title.angles == 0 || title.angles > mostAngles)
        reader->fail();
    title.video = takeVideo(reader);
    for (std::size_t left = reader->takeCount(mostChapters); left > 0 && reader->isGood(); --left) {
        const std::chrono::milliseconds start = takeTime(reader);
        title.chapters.push_back({start, takeTime(reader)});
    }
    for (std::size_t left = reader->takeCount(mostAudioStreams); left > 0 && reader->isGood(); --left)
        title.audio.push_back(takeAudioStream(reader));
    for (std::size_t left = reader->takeCount(mostSubtitleStreams); left > 0 && reader->isGood(); --left) {
        const QByteArray language = reader->takeBytes(longestLanguage);
        title.subtitles.push_back({language, reader->takeEnumeration(DVDStreamPurpose::Forced)});
    }
    title.damage = reader->takeText(longestText);
    return title;
}

void addHead(MessageWriter *writer, const DVDDescription &description)
{
    writer->add(description.identity);
    writer->add(description.volumeName);
    writer->add(description.provider);
    writer->add(description.prohibitedRegions);
    writer->add(description.drive.has_value());
    const DVDDriveRegion drive = description.drive.value_or(DVDDriveRegion());
    writer->add(drive.prohibited);
    writer->add(drive.changesLeft);
    writer->add(description.isEncrypted);
}

void takeHead(MessageReader *reader, DVDDescription *description)
{
    description->identity = reader->takeBytes(identitySize);
    if (description->identity.size() != qsizetype(identitySize))
        reader->fail();
    description->volumeName = reader->takeText(longestText);
    description->provider = reader->takeText(longestText);
    description->prohibitedRegions = reader->take<std::uint8_t>();
    const bool hasDrive = reader->takeBool();
    DVDDriveRegion drive;
    drive.prohibited = reader->take<std::uint8_t>();
    drive.changesLeft = reader->take<std::int16_t>();
    if (hasDrive)
        description->drive = drive;
    description->isEncrypted = reader->takeBool();
}

} // namespace

QByteArray encodedMessage(const PlayerMessage &message)
{
    QByteArray bytes(qsizetype(playerMessageHeadSize), '\0');
    auto *const head = reinterpret_cast<std::uint8_t *>(bytes.data());
    storeLittleEndian<std::uint32_t>(head + HeadField::kind, std::uint32_t(message.kind));
    storeLittleEndian<std::uint32_t>(head + HeadField::sequence, message.sequence);
    storeLittleEndian<std::uint32_t>(head + HeadField::length, std::uint32_t(message.payload.size()));
    return bytes + message.payload;
}

StreamBegin takeMessage(QByteArray *stream, PlayerMessage *message)
{
    if (std::size_t(stream->size()) < playerMessageHeadSize)
        return StreamBegin::Incomplete;
    const auto *const head = reinterpret_cast<const std::uint8_t *>(stream->constData());
    const auto kind = loadLittleEndian<std::uint32_t>(head + HeadField::kind);
    const std::size_t length = loadLittleEndian<std::uint32_t>(head + HeadField::length);
    if (!isKind(kind) || length > longestPlayerMessage)
        return StreamBegin::Nonsense;
    const std::size_t whole = playerMessageHeadSize + length;
    if (std::size_t(stream->size()) < whole)
        return StreamBegin::Incomplete;
    message->kind = static_cast<PlayerMessageKind>(kind);
    message->sequence = loadLittleEndian<std::uint32_t>(head + HeadField::sequence);
    message->payload = stream->sliced(qsizetype(playerMessageHeadSize), qsizetype(length));
    stream->remove(0, qsizetype(whole));
    return StreamBegin::Message;
}

QByteArray encodedReply(const PlayerReply &reply)
{
    MessageWriter writer;
    writer.add(reply.status);
    writer.add(reply.text.left(qsizetype(longestText / 4)));
    writer.add(reply.payload);
    return writer.bytes();
}

std::optional<PlayerReply> decodedReply(const QByteArray &bytes)
{
    MessageReader reader(bytes);
    PlayerReply reply;
    reply.status = reader.take<std::int32_t>();
    reply.text = reader.takeText(longestText);
    reply.payload = reader.takeBytes(longestPlayerMessage);
    return reader.isAtEnd() ? std::optional(reply) : std::nullopt;
}

QByteArray encodedPlace(const PlayerPlace &place)
{
    MessageWriter writer;
    add(&writer, place);
    return writer.bytes();
}

std::optional<PlayerPlace> decodedPlace(const QByteArray &bytes)
{
    MessageReader reader(bytes);
    const PlayerPlace place = takePlace(&reader);
    return reader.isAtEnd() ? std::optional(place) : std::nullopt;
}

QByteArray encodedState(const PlayerState &state)
{
    MessageWriter writer;
    writer.add(state.playback);
    writer.add(state.isOnMenu);
    writer.add(state.title);
    writer.add(state.chapter);
    writer.add(state.angle);
    writer.add(state.angles);
    writer.add(state.elapsed);
    writer.add(state.length);
    writer.add(state.aspect);
    writer.add(state.format);
    writer.add(state.width);
    writer.add(state.height);
    writer.add(state.buttons);
    writer.add(state.selectedButton);
    writer.add(state.sound);
    writer.add(state.soundStreams);
    writer.add(state.soundStream);
    writer.add(state.subtitleStreams);
    writer.add(state.subtitleStream);
    add(&writer, state.place);
    return writer.bytes();
}

std::optional<PlayerState> decodedState(const QByteArray &bytes)
{
    MessageReader reader(bytes);
    PlayerState state;
    state.playback = reader.take<std::uint32_t>();
    state.isOnMenu = reader.takeBool();
    state.title = reader.take<std::uint16_t>();
    state.chapter = reader.take<std::uint16_t>();
    state.angle = reader.take<std::uint16_t>();
    state.angles = reader.take<std::uint16_t>();
    state.elapsed = reader.take<std::uint32_t>();
    state.length = reader.take<std::uint32_t>();
    state.aspect = reader.take<std::int16_t>();
    state.format = reader.take<std::int16_t>();
    state.width = reader.take<std::uint16_t>();
    state.height = reader.take<std::uint16_t>();
    state.buttons = reader.take<std::uint8_t>();
    state.selectedButton = reader.take<std::uint8_t>();
    state.sound = reader.take<std::uint8_t>();
    state.soundStreams = reader.take<std::uint8_t>();
    state.soundStream = reader.take<std::uint8_t>();
    state.subtitleStreams = reader.take<std::uint8_t>();
    state.subtitleStream = reader.take<std::uint8_t>();
    state.place = takePlace(&reader);
    return reader.isAtEnd() ? std::optional(state) : std::nullopt;
}

QByteArray encodedDescription(const DVDDescription &description)
{
    MessageWriter writer;
    addHead(&writer, description);
    writer.add(std::uint32_t(description.titles.size()));
    for (const DVDTitle &title : description.titles)
        add(&writer, title);
    writer.add(std::uint32_t(description.menus.size()));
    for (const DVDMenu &menu : description.menus) {
        writer.add(std::uint8_t(menu.kind));
        writer.add(menu.titleSet);
        writer.add(menu.language);
    }
    writer.add(std::uint32_t(description.notes.size()));
    for (const QString &note : description.notes)
        writer.add(note);
    return writer.bytes();
}

std::optional<DVDDescription> decodedDescription(const QByteArray &bytes)
{
    MessageReader reader(bytes);
    DVDDescription description;
    takeHead(&reader, &description);
    for (std::size_t left = reader.takeCount(mostTitles); left > 0 && reader.isGood(); --left)
        description.titles.push_back(takeTitle(&reader));
    for (std::size_t left = reader.takeCount(mostMenus); left > 0 && reader.isGood(); --left) {
        DVDMenu menu;
        menu.kind = reader.takeEnumeration(DVDMenuKind::Chapter);
        menu.titleSet = reader.take<std::uint8_t>();
        menu.language = reader.takeBytes(longestLanguage);
        description.menus.push_back(menu);
    }
    for (std::size_t left = reader.takeCount(mostNotes); left > 0 && reader.isGood(); --left)
        description.notes.append(reader.takeText(longestText));
    return reader.isAtEnd() ? std::optional(description) : std::nullopt;
}

} // namespace Tessaron
