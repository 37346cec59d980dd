#pragma once

#include "platform/dvdplayback/PlayerProtocol.h"
#include "platform/dvdplayback/player/DiscFiles.h"
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
    explicit PlayerServer(UniqueDescriptor socket);

    /// Returns when the session has closed the connection, or makes no sense.
    void run();

private:
    [[nodiscard]] bool takeRequests();
    [[nodiscard]] PlayerReply answer(const PlayerMessage &request);
    [[nodiscard]] PlayerReply describe(const QByteArray &path);
    /// Finds the disc, shuts the process off, opens it.
    [[nodiscard]] NSError openDisc(const QByteArray &path);
    void send(PlayerMessageKind kind, std::uint32_t sequence, const QByteArray &payload);

    const UniqueDescriptor m_socket;
    QByteArray m_stream;
    bool m_isConnected = true;
    bool m_isShutOff = false;
    std::unique_ptr<DiscFiles> m_disc;
};

} // namespace Tessaron
