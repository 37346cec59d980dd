#pragma once

#include "platform/dvdplayback/PlayerMessageReader.h"
#include "platform/dvdplayback/player/DiscFiles.h"
#include "platform/dvdplayback/player/DiscPlayer.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <memory>

namespace Tessaron
{

/// The helper's side of the connection: takes requests and answers them, one after the other, and lets the disc play in
/// between. One thread. Serves one disc, since the process shuts itself off from all others before it touches that.
class PlayerServer
{
public:
    /// Without frames it describes, but does not play; without memory for sound it plays in silence.
    PlayerServer(UniqueDescriptor socket, std::unique_ptr<SharedFrames> frames, std::unique_ptr<SharedSound> sound);

    /// Returns when the session has closed the connection, or makes no sense.
    void run();

private:
    [[nodiscard]] bool takeRequests();
    [[nodiscard]] PlayerReply answer(const PlayerMessage &request);
    [[nodiscard]] PlayerReply describe(const QByteArray &path);
    /// Finds the disc, shuts the process off, opens it.
    [[nodiscard]] NSError openDisc(const QByteArray &path);
    [[nodiscard]] PlayerReply answerPlaying(const PlayerMessage &request);
    [[nodiscard]] PlayerReply open(const QByteArray &path);
    void send(PlayerMessageKind kind, std::uint32_t sequence, const QByteArray &payload);

    const UniqueDescriptor m_socket;
    PlayerMessageReader m_requests;
    bool m_isConnected = true;
    bool m_isShutOff = false;
    const std::unique_ptr<SharedFrames> m_frames; ///< may be null
    const std::unique_ptr<SharedSound> m_sound; ///< may be null
    std::unique_ptr<DiscFiles> m_disc;
    std::unique_ptr<DiscPlayer> m_player; ///< behind what it plays
};

} // namespace Tessaron
