#include "platform/dvdplayback/player/PlayerServer.h"

#include "platform/dvdplayback/DVDErrors.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/MessageBytes.h"
#include "platform/dvdplayback/player/DiscDescriber.h"
#include "platform/dvdplayback/player/Sandbox.h"

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

PlayerServer::PlayerServer(UniqueDescriptor socket, std::unique_ptr<SharedFrames> frames,
                           std::unique_ptr<SharedSound> sound)
    : m_socket(std::move(socket))
    , m_frames(std::move(frames))
    , m_sound(std::move(sound))
{
}

void PlayerServer::run()
{
    MessageWriter hello;
    hello.add(playerProtocolVersion);
    send(PlayerMessageKind::Hello, 0, hello.bytes());
    while (m_isConnected) {
        const std::optional<std::chrono::milliseconds> wait = m_player ? m_player->advance() : std::nullopt;
        struct pollfd socket = {m_socket.get(), POLLIN, 0};
        if (::poll(&socket, 1, wait ? int(wait->count()) : -1) < 0 && errno != EINTR)
            return;
        if (m_isShutOff)
            showProgress();
        if (socket.revents != 0 && !takeRequests())
            return;
    }
}

bool PlayerServer::takeRequests()
{
    if (!m_requests.read(m_socket.get()))
        return false;
    while (const std::optional<PlayerMessage> request = m_requests.next())
        send(PlayerMessageKind::Reply, request->sequence, encodedReply(answer(*request)));
    return m_requests.makesSense();
}

PlayerReply PlayerServer::answer(const PlayerMessage &request)
{
    switch (request.kind) {
    case PlayerMessageKind::Describe:
        return describe(request.payload);
    case PlayerMessageKind::Open:
        return open(request.payload);
    default:
        return m_player ? answerPlaying(request) : PlayerReply{kDVDErrorNoValidMedia, {}, {}};
    }
}

PlayerReply PlayerServer::answerPlaying(const PlayerMessage &request)
{
    MessageReader reader(request.payload);
    switch (request.kind) {
    case PlayerMessageKind::Play:
        return {m_player->play(), {}, {}};
    case PlayerMessageKind::Pause:
        return {m_player->pause(), {}, {}};
    case PlayerMessageKind::Stop:
        return {m_player->stop(), {}, {}};
    case PlayerMessageKind::Scan: {
        const auto rate = reader.take<std::int16_t>();
        return {m_player->scan(rate, reader.take<std::int8_t>() != 0), {}, {}};
    }
    case PlayerMessageKind::SetChapter: {
        const auto title = reader.take<std::uint16_t>();
        return {m_player->playChapter(title, reader.take<std::uint16_t>()), {}, {}};
    }
    case PlayerMessageKind::PreviousChapter:
        return {m_player->stepChapter(-1), {}, {}};
    case PlayerMessageKind::NextChapter:
        return {m_player->stepChapter(1), {}, {}};
    case PlayerMessageKind::SetAngle:
        return {m_player->setAngle(reader.take<std::uint16_t>()), {}, {}};
    case PlayerMessageKind::GoToMenu:
        return {m_player->goToMenu(reader.take<std::uint32_t>()), {}, {}};
    case PlayerMessageKind::ReturnToTitle:
        return {m_player->returnToTitle(), {}, {}};
    case PlayerMessageKind::Navigate:
        return {m_player->navigate(reader.take<std::uint32_t>()), {}, {}};
    case PlayerMessageKind::PointAt: {
        const auto x = reader.take<std::int32_t>();
        const auto y = reader.take<std::int32_t>();
        std::int32_t button = -1;
        const OSStatus status = m_player->pointAt(x, y, reader.takeBool(), &button);
        MessageWriter answer;
        answer.add(button);
        return {status, {}, answer.bytes()};
    }
    case PlayerMessageKind::GoToPlace: {
        const std::optional<PlayerPlace> place = decodedPlace(request.payload);
        return {place ? m_player->goToPlace(*place) : kDVDErrorWrongParam, {}, {}};
    }
    case PlayerMessageKind::PlaySlowly:
        return {m_player->playSlowly(reader.take<std::int16_t>()), {}, {}};
    case PlayerMessageKind::StepFrame:
        return {m_player->stepPicture(), {}, {}};
    case PlayerMessageKind::GoToTime:
        return {m_player->goToTime(reader.take<std::uint32_t>()), {}, {}};
    case PlayerMessageKind::SetSoundStream:
        return {m_player->setSoundStream(reader.take<std::uint16_t>()), {}, {}};
    case PlayerMessageKind::SetSubtitleStream:
        return {m_player->setSubtitleStream(reader.take<std::uint16_t>()), {}, {}};
    case PlayerMessageKind::Sleep:
        m_player->sleep();
        return {};
    case PlayerMessageKind::SetTimeRate:
        m_player->setTimeRate(std::chrono::milliseconds(std::max<std::uint32_t>(reader.take<std::uint32_t>(), 1)));
        return {};
    default:
        return {kDVDErrorWrongParam, {}, {}};
    }
}

PlayerReply PlayerServer::open(const QByteArray &path)
{
    PlayerReply reply = describe(path);
    std::optional<DVDDescription> description =
        reply.status == noErr ? decodedDescription(reply.payload) : std::nullopt;
    if (!description || !m_frames)
        return reply;
    DiscPlayer::Hearers hearers;
    hearers.state = [this](const PlayerState &state) { send(PlayerMessageKind::State, 0, encodedState(state)); };
    hearers.titleTime = [this](std::uint32_t elapsed, std::uint32_t length) {
        MessageWriter time;
        time.add(elapsed);
        time.add(length);
        send(PlayerMessageKind::TitleTime, 0, time.bytes());
    };
    hearers.frame = [this](std::uint32_t number) {
        MessageWriter frame;
        frame.add(number);
        send(PlayerMessageKind::NewFrame, 0, frame.bytes());
    };
    hearers.failure = [this](const QString &why) {
        MessageWriter failure;
        failure.add(kDVDErrorDamagedMedia);
        failure.add(why);
        send(PlayerMessageKind::Failure, 0, failure.bytes());
    };
    m_player = std::make_unique<DiscPlayer>(m_disc.get(), *std::move(description), m_frames.get(), m_sound.get(),
                                            std::move(hearers));
    m_player->tellFirstState();
    return reply;
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
