#pragma once

#include "platform/quicktime/SoundProtocol.h"

#include <QByteArray>

#include <memory>

namespace Tessaron
{

class CDAudioDecoder;

/// The serving side of SoundProtocol.h: decodes for another process, one file at a time.
class SoundServer
{
public:
    /// The socket and the memory of the protocol; they stay the caller's.
    SoundServer(int socket, char *memory);
    ~SoundServer();

    /// Answers requests until the other side has gone away, or sends something that is not a request.
    void run();

private:
    [[nodiscard]] bool answer(const SoundProtocol::Message &request);
    [[nodiscard]] bool open(const QByteArray &record);
    [[nodiscard]] bool fill(std::uint32_t slot);
    [[nodiscard]] bool tellDamage();
    [[nodiscard]] bool sendRecord(SoundProtocol::Kind kind, const QByteArray &record);
    [[nodiscard]] bool send(const SoundProtocol::Message &message) const;

    const int m_socket;
    char *const m_memory;
    std::unique_ptr<CDAudioDecoder> m_decoder; ///< null until a file is open
};

/// What DummyRedbook does after --serve: a server of the socket at standard input and the memory at standard output.
/// False when they are none.
[[nodiscard]] bool serveSound();

} // namespace Tessaron
