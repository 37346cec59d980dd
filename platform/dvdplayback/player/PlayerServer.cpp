#include "platform/dvdplayback/player/PlayerServer.h"

#include "platform/dvdplayback/DVDErrors.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/MessageBytes.h"
#include "platform/dvdplayback/player/DiscDescriber.h"
#include "platform/dvdplayback/player/Sandbox.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace Tessaron
{

namespace
{

PlayerReply replyOf(const NSError &error)
{
    const bool isOurs = error.domain() == DVDErrorDomain;
    const QString reason = error.localizedFailureReason();
    return {isOurs ? OSStatus(error.code()) : kDVDErrorUnknown,
            reason.isEmpty() ? error.localizedDescription() : reason,
            {}};
}

} // namespace

PlayerServer::PlayerServer(UniqueDescriptor socket)
    : m_socket(std::move(socket))
{
}

void PlayerServer::run()
{
    MessageWriter hello;
    hello.add(playerProtocolVersion);
    send(PlayerMessageKind::Hello, 0, hello.bytes());
    while (m_isConnected) {
        struct pollfd socket = {m_socket.get(), POLLIN, 0};
        if (::poll(&socket, 1, -1) < 0 && errno != EINTR)
            return;
        if (m_isShutOff)
            showProgress();
        if (socket.revents != 0 && !takeRequests())
            return;
    }
}

bool PlayerServer::takeRequests()
{
    std::array<char, 4096> buffer;
    const ssize_t count = ::recv(m_socket.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0)
        return errno == EINTR || errno == EAGAIN;
    if (count == 0)
        return false;
    m_stream.append(buffer.data(), count);
    for (;;) {
        PlayerMessage request;
        const StreamBegin begin = takeMessage(&m_stream, &request);
        if (begin != StreamBegin::Message)
            return begin == StreamBegin::Incomplete;
        send(PlayerMessageKind::Reply, request.sequence, encodedReply(answer(request)));
    }
}

PlayerReply PlayerServer::answer(const PlayerMessage &request)
{
    switch (request.kind) {
    case PlayerMessageKind::Describe:
    case PlayerMessageKind::Open:
        return describe(request.payload);
    case PlayerMessageKind::SetTimeRate:
        return {};
    default:
        return {m_disc ? kDVDErrorUserActionNoOp : kDVDErrorNoValidMedia, {}, {}};
    }
}

PlayerReply PlayerServer::describe(const QByteArray &path)
{
    if (const NSError error = openDisc(path))
        return replyOf(error);
    const Result<DVDDescription> description = describeDisc(m_disc.get());
    if (!description)
        return replyOf(description.error());
    return {noErr, {}, encodedDescription(*description)};
}

NSError PlayerServer::openDisc(const QByteArray &path)
{
    if (m_isShutOff)
        return dvdError(kDVDErrorUnknown, path, QStringLiteral("the program that reads discs serves one disc only"));
    const Result<DiscPlace> place = findDisc(path);
    if (!place)
        return place.error();
    SandboxFacts facts;
    if (const NSError error = shutOffAllBut(*place, &facts))
        return dvdError(kDVDErrorPlaybackOpen, path,
                        QStringLiteral("the program that reads discs cannot be shut off from the system (%1)")
                            .arg(error.localizedFailureReason()));
    m_isShutOff = true;
    Result<std::unique_ptr<DiscFiles>> disc = DiscFiles::open(*place);
    if (!disc)
        return disc.error();
    m_disc = *std::move(disc);
    return {};
}

void PlayerServer::send(PlayerMessageKind kind, std::uint32_t sequence, const QByteArray &payload)
{
    const QByteArray bytes = encodedMessage({kind, sequence, payload});
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            ::send(m_socket.get(), bytes.constData() + sent, std::size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            m_isConnected = false;
            return;
        }
        sent += std::max<ssize_t>(count, 0);
    }
}

} // namespace Tessaron
