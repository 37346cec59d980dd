#pragma once

#include "platform/dvdplayback/DVDDescription.h"
#include "platform/foundation/OSStatus.h"

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace Tessaron
{

// What a session and its helper process say to each other through a stream of messages: 12 bytes of a head, then what
// the kind needs. Neither trusts the other: bytes that make no sense end the connection.

/// A change to any message is a new number; both sides come from one build.
inline constexpr std::uint32_t playerProtocolVersion = 4;

inline constexpr std::size_t playerMessageHeadSize = 12;
inline constexpr std::size_t longestPlayerMessage = 4 << 20;

/// The descriptors that the helper is started with.
inline constexpr int playerSocketDescriptor = 3;
inline constexpr int playerFramesDescriptor = 4;
inline constexpr int playerSoundDescriptor = 5;

enum class PlayerMessageKind : std::uint32_t {
    // From the session; the helper answers each with a Reply of the same sequence number.
    Describe = 1, ///< path
    Open, ///< path
    Play,
    Pause,
    Stop,
    Scan, ///< i16 rate, i8 direction
    SetChapter, ///< u16 title, u16 chapter
    PreviousChapter,
    NextChapter,
    SetAngle, ///< u16
    GoToMenu, ///< u32
    ReturnToTitle,
    Navigate, ///< u32
    PointAt, ///< i32 x, i32 y in the picture of 720 samples, bool activates; answered with the button, i32
    GoToPlace, ///< a PlayerPlace
    SetTimeRate, ///< u32 milliseconds
    PlaySlowly, ///< i16 times
    StepFrame,
    GoToTime, ///< u32 milliseconds
    SetSoundStream, ///< u16, from 1
    SetSubtitleStream, ///< u16, from 1; 0 for none
    Sleep, ///< a pause, which no disc can forbid

    // From the helper.
    Hello = 100, ///< u32 protocol version; the first message
    Reply, ///< i32 status, text, bytes
    State, ///< a PlayerState
    TitleTime, ///< u32 elapsed, u32 length, milliseconds
    NewFrame, ///< u32 sequence number of the frame in the shared memory
    Failure, ///< i32 status, text: playing cannot go on
};

struct PlayerMessage {
    PlayerMessageKind kind = PlayerMessageKind::Hello;
    std::uint32_t sequence = 0;
    QByteArray payload;
};

/// A place on the disc that can be returned to.
struct PlayerPlace {
    std::uint16_t title = 0; ///< 0: none
    std::uint16_t chapter = 0;
    std::uint16_t programChain = 0;
    std::uint16_t program = 0;
    std::uint32_t sector = 0; ///< of the video unit, in the title set's own count
    std::uint32_t sectorInTitle = 0;
    std::uint32_t elapsed = 0; ///< milliseconds
    std::uint8_t angle = 1;

    friend bool operator==(const PlayerPlace &, const PlayerPlace &) = default;
};

/// All that the session mirrors of the helper's player, sent whenever it has changed.
struct PlayerState {
    std::uint32_t playback = 6; ///< a DVDState
    bool isOnMenu = false;
    std::uint16_t title = 0;
    std::uint16_t chapter = 0;
    std::uint16_t angle = 1;
    std::uint16_t angles = 1;
    std::uint32_t elapsed = 0; ///< milliseconds
    std::uint32_t length = 0; ///< milliseconds
    std::int16_t aspect = 0; ///< a DVDAspectRatio
    std::int16_t format = 0; ///< a DVDFormat
    std::uint16_t width = 720;
    std::uint16_t height = 480;
    std::uint8_t buttons = 0; ///< of the menu
    std::uint8_t selectedButton = 0; ///< from 1; 0 for none
    std::uint8_t sound = 0; ///< a SoundDevice
    std::uint8_t soundStreams = 0; ///< of the title
    std::uint8_t soundStream = 0; ///< from 1; 0 for none
    std::uint8_t subtitleStreams = 0;
    std::uint8_t subtitleStream = 0; ///< likewise
    PlayerPlace place;

    friend bool operator==(const PlayerState &, const PlayerState &) = default;
};

struct PlayerReply {
    OSStatus status = noErr;
    QString text; ///< what is wrong, in words; empty after success
    QByteArray payload;
};

[[nodiscard]] QByteArray encodedMessage(const PlayerMessage &message);

/// What stands at the begin of a stream of messages.
enum class StreamBegin : std::uint8_t {
    Message, ///< one was taken off
    Incomplete, ///< more bytes are needed
    Nonsense, ///< no message begins like this
};
[[nodiscard]] StreamBegin takeMessage(QByteArray *stream, PlayerMessage *message);

[[nodiscard]] QByteArray encodedReply(const PlayerReply &reply);
[[nodiscard]] std::optional<PlayerReply> decodedReply(const QByteArray &bytes);
[[nodiscard]] QByteArray encodedPlace(const PlayerPlace &place);
[[nodiscard]] std::optional<PlayerPlace> decodedPlace(const QByteArray &bytes);
[[nodiscard]] QByteArray encodedState(const PlayerState &state);
[[nodiscard]] std::optional<PlayerState> decodedState(const QByteArray &bytes);
[[nodiscard]] QByteArray encodedDescription(const DVDDescription &description);
/// Absent for what no helper can have sent; else within the limits of the format: 99 titles, 999 chapters, 8 streams of
/// sound, 32 of subtitles, 9 angles.
[[nodiscard]] std::optional<DVDDescription> decodedDescription(const QByteArray &bytes);

} // namespace Tessaron
