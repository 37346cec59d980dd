#include "platform/dvdplayback/DVDDescription.h"

#include "platform/dvdplayback/DVDErrors.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/PlayerConnection.h"

namespace Tessaron
{

const QString DVDErrorDomain = QStringLiteral("DVDErrorDomain");

namespace
{

/// A drive tries a bad sector for a while; a disc has a hundred tables at most.
constexpr std::chrono::minutes patience(3);

} // namespace

Result<DVDDescription> describeDVD(const QByteArray &path, const std::stop_token &stop)
{
    Result<std::unique_ptr<PlayerConnection>> connection = PlayerConnection::start({}, {});
    if (!connection)
        return connection.error();
    const std::stop_callback ending(stop, [&] { (*connection)->kill(); });
    const PlayerReply reply = (*connection)->request(PlayerMessageKind::Describe, path, patience);
    if (reply.status != noErr)
        return dvdError(reply.status, path, reply.text);
    const std::optional<DVDDescription> description = decodedDescription(reply.payload);
    if (!description)
        return dvdError(kDVDErrorUnknown, path, QStringLiteral("the program that reads the disc writes nonsense"));
    return *description;
}

} // namespace Tessaron
