#include "platform/dvdplayback/PlayerMessageReader.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>

namespace Tessaron
{

bool PlayerMessageReader::read(int socket)
{
    std::array<char, 65536> buffer;
    const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0)
        return errno == EINTR || errno == EAGAIN;
    m_stream.append(buffer.data(), count);
    return count > 0;
}

std::optional<PlayerMessage> PlayerMessageReader::next()
{
    PlayerMessage message;
    const StreamBegin begin = m_makesSense ? takeMessage(&m_stream, &message) : StreamBegin::Nonsense;
    m_makesSense = begin != StreamBegin::Nonsense;
    return begin == StreamBegin::Message ? std::optional(message) : std::nullopt;
}

} // namespace Tessaron
