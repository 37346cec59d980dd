#pragma once

#include "platform/dvdplayback/PlayerProtocol.h"

#include <QByteArray>

#include <optional>

namespace Tessaron
{

/// Takes messages off one end of the connection between a session and its helper. One thread.
class PlayerMessageReader
{
public:
    /// Reads what has come, without waiting for more; false when the other side has closed.
    [[nodiscard]] bool read(int socket);
    /// The next message that is whole.
    [[nodiscard]] std::optional<PlayerMessage> next();
    /// False once something came that no message begins like.
    [[nodiscard]] bool makesSense() const { return m_makesSense; }

private:
    QByteArray m_stream;
    bool m_makesSense = true;
};

} // namespace Tessaron
