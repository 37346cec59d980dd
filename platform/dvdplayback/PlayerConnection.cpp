#include "platform/dvdplayback/PlayerConnection.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/MessageBytes.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>

namespace Tessaron
{

namespace
{

constexpr qsizetype lengthOfErrorsKept = 2000;
/// Above all numbers that the helper gets its descriptors under.
constexpr int firstSpareDescriptor = 16;

NSError startError(const QString &reason, const QString &suggestion)
{
    return NSError(DVDErrorDomain, kDVDErrorPlaybackOpen,
                   {{NSLocalizedDescriptionKey, QStringLiteral("DVDs cannot be read: %1").arg(reason)},
                    {NSLocalizedFailureReasonErrorKey, reason},
                    {NSLocalizedRecoverySuggestionErrorKey, suggestion}});
}

NSError systemError(const QString &what, int errnoValue)
{
    return startError(
        QStringLiteral("%1: %2").arg(what, NSError::errorWithErrno(errnoValue, {}).localizedFailureReason()),
        isLackOfDescriptors(errnoValue) ? adviceOnDescriptors()
                                        : QStringLiteral("Close other programs and try again."));
}

/// The attributes and actions of a start, freed at its end.
class SpawnSettings
{
public:
    SpawnSettings()
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawnattr_init(&m_attributes);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        sigset_t none, usual;
        sigemptyset(&none);
        sigfillset(&usual);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &usual);
        // A process group of its own: an interrupt at the terminal is for the session's process, which ends the helper.
        posix_spawnattr_setpgroup(&m_attributes, 0);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;

    void pass(int descriptor, int as) { posix_spawn_file_actions_adddup2(&m_actions, descriptor, as); }

    [[nodiscard]] int spawn(pid_t *process, const QByteArray &program)
    {
        QByteArray name = program;
        std::array<char *, 2> arguments = {name.data(), nullptr};
        return ::posix_spawn(process, program.constData(), &m_actions, &m_attributes, arguments.data(), environ);
    }

private:
    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

UniqueDescriptor spareCopy(int descriptor)
{
    UniqueDescriptor copy(::fcntl(descriptor, F_DUPFD_CLOEXEC, firstSpareDescriptor));
    if (!copy && errno == EINVAL) // The first one that is spare is above the limit.
        errno = EMFILE;
    return copy;
}

} // namespace

Result<std::unique_ptr<PlayerConnection>> PlayerConnection::start(const Memory &memory, Hearers hearers)
{
    const QByteArray program =
        fileSystemRepresentation(NSBundle::mainBundle()->pathForResource(QStringLiteral("TessaronDVDPlayer")));
    if (program.isEmpty())
        return startError(
            QStringLiteral("the program of TessaronClasses that reads them, TessaronDVDPlayer, is not "
                           "installed"),
            QStringLiteral("Install TessaronClasses with it: a build with TESSARON_BUILD_MEDIA=ON has it."));
    std::array<int, 2> sockets, errors;
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0)
        return systemError(QStringLiteral("no connection can be made"), errno);
    UniqueDescriptor ours(sockets[0]);
    const UniqueDescriptor theirs = spareCopy(UniqueDescriptor(sockets[1]).get());
    if (!theirs || ::pipe2(errors.data(), O_CLOEXEC) != 0)
        return systemError(QStringLiteral("no connection can be made"), errno);
    UniqueDescriptor errorsRead(errors[0]);
    const UniqueDescriptor errorsWrite = spareCopy(UniqueDescriptor(errors[1]).get());
    const UniqueDescriptor frames = spareCopy(memory.frames >= 0 ? memory.frames : theirs.get());
    const UniqueDescriptor sound = spareCopy(memory.sound >= 0 ? memory.sound : theirs.get());
    if (!errorsWrite || !frames || !sound)
        return systemError(QStringLiteral("no connection can be made"), errno);
    SpawnSettings settings;
    settings.pass(errorsWrite.get(), STDERR_FILENO);
    settings.pass(theirs.get(), playerSocketDescriptor);
    if (memory.frames >= 0)
        settings.pass(frames.get(), playerFramesDescriptor);
    if (memory.sound >= 0)
        settings.pass(sound.get(), playerSoundDescriptor);
    pid_t process = -1;
    if (const int failure = settings.spawn(&process, program); failure != 0)
        return systemError(QStringLiteral("the program that reads them cannot be started"), failure);
    try {
        return std::unique_ptr<PlayerConnection>(
            new PlayerConnection(process, std::move(ours), std::move(errorsRead), std::move(hearers)));
    } catch (const std::system_error &) {
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
        return systemError(QStringLiteral("no thread can be started"), EAGAIN);
    }
}

PlayerConnection::PlayerConnection(pid_t process, UniqueDescriptor socket, UniqueDescriptor errors, Hearers hearers)
    : m_process(process)
    , m_socket(std::move(socket))
    , m_errors(std::move(errors))
    , m_hearers(std::move(hearers))
    , m_thread([this] { hear(); })
{
}

PlayerConnection::~PlayerConnection()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isClosing = true;
    }
    kill();
    m_thread.join();
}

void PlayerConnection::kill()
{
    const std::lock_guard lock(m_mutex);
    if (!m_isProcessGone)
        ::kill(m_process, SIGKILL);
}

PlayerReply PlayerConnection::request(PlayerMessageKind kind, const QByteArray &payload,
                                      std::chrono::milliseconds patience)
{
    std::unique_lock lock(m_mutex);
    if (m_end)
        return {kDVDErrorDamagedMedia, *m_end, {}};
    const std::uint32_t sequence = ++m_lastSequence;
    m_replies.emplace(sequence, std::nullopt);
    lock.unlock();
    {
        const std::lock_guard writing(m_writing);
        // A failure shows as the end of the process.
        const QByteArray bytes = encodedMessage({kind, sequence, payload});
        qsizetype sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count =
                ::send(m_socket.get(), bytes.constData() + sent, std::size_t(bytes.size() - sent), MSG_NOSIGNAL);
            if (count < 0 && errno != EINTR)
                break;
            sent += std::max<ssize_t>(count, 0);
        }
    }
    lock.lock();
    const auto isOver = [&] { return m_end || m_replies[sequence]; };
    if (!m_changed.wait_for(lock, patience, isOver)) {
        m_timeOut = QStringLiteral("the disc did not answer within %1 s").arg(patience.count() / 1000);
        if (!m_isProcessGone)
            ::kill(m_process, SIGKILL);
        m_changed.wait(lock, isOver);
    }
    const std::optional<PlayerReply> reply = m_replies[sequence];
    m_replies.erase(sequence);
    return reply ? *reply : PlayerReply{kDVDErrorDamagedMedia, m_end.value_or(QString()), {}};
}

void PlayerConnection::hear()
{
    std::array<struct pollfd, 2> ends = {{{m_socket.get(), POLLIN, 0}, {m_errors.get(), POLLIN, 0}}};
    bool isConnected = true;
    while (isConnected) {
        if (::poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR)
            break;
        if (ends[1].revents != 0) {
            hearErrors();
            ends[1].fd = m_errors.get(); // -1 once it has ended, which poll() passes over
        }
        if (ends[0].revents != 0)
            isConnected = hearMessages();
    }
    finish();
}

bool PlayerConnection::hearMessages()
{
    if (!m_messages.read(m_socket.get()))
        return false;
    while (m_nonsense.isEmpty()) {
        const std::optional<PlayerMessage> message = m_messages.next();
        if (!message)
            break;
        take(*message);
    }
    if (!m_messages.makesSense())
        m_nonsense = QStringLiteral("the program that reads the disc writes nonsense");
    return m_nonsense.isEmpty();
}

void PlayerConnection::hearErrors()
{
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(m_errors.get(), buffer.data(), buffer.size());
    if (count > 0)
        m_lastErrors = (m_lastErrors + QByteArray(buffer.data(), count)).right(lengthOfErrorsKept);
    else if (count == 0 || errno != EINTR)
        m_errors.reset();
}

void PlayerConnection::take(const PlayerMessage &message)
{
    if (!m_isGreeted) {
        MessageReader reader(message.payload);
        if (message.kind != PlayerMessageKind::Hello || reader.take<std::uint32_t>() != playerProtocolVersion)
            m_nonsense =
                QStringLiteral("the program that reads the disc belongs to another version of TessaronClasses");
        m_isGreeted = true;
        return;
    }
    if (message.kind != PlayerMessageKind::Reply) {
        if (m_hearers.message)
            m_hearers.message(message);
        return;
    }
    const std::optional<PlayerReply> reply = decodedReply(message.payload);
    if (!reply) {
        m_nonsense = QStringLiteral("the program that reads the disc writes nonsense");
        return;
    }
    const std::lock_guard lock(m_mutex);
    if (const auto waiting = m_replies.find(message.sequence); waiting != m_replies.end())
        waiting->second = reply;
    m_changed.notify_all();
}

QString PlayerConnection::howItEnded()
{
    int status = 0;
    pid_t got = -1;
    do
        got = ::waitpid(m_process, &status, 0);
    while (got < 0 && errno == EINTR);
    QString last = QString::fromUtf8(m_lastErrors).trimmed();
    last = last.section(u'\n', -1);
    {
        const std::lock_guard lock(m_mutex);
        m_isProcessGone = true;
        if (!m_timeOut.isEmpty())
            return m_timeOut;
    }
    if (!m_nonsense.isEmpty())
        return m_nonsense;
    QString text = QStringLiteral("the program that reads the disc has ended");
    // Without a status where the program around this library takes all its children off itself.
    if (got == m_process && WIFSIGNALED(status))
        text += WTERMSIG(status) == SIGPROF
            ? QStringLiteral(" since the disc made it run in circles")
            : QStringLiteral(" over the disc (%1)").arg(QString::fromLatin1(::strsignal(WTERMSIG(status))));
    else if (got == m_process && WIFEXITED(status))
        text += QStringLiteral(" with status %1").arg(WEXITSTATUS(status));
    return last.isEmpty() ? text : text + QStringLiteral(": ") + last;
}

void PlayerConnection::finish()
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isProcessGone)
            ::kill(m_process, SIGKILL);
    }
    while (m_errors)
        hearErrors();
    const QString why = howItEnded();
    bool isClosing = false;
    {
        const std::lock_guard lock(m_mutex);
        m_end = why;
        isClosing = m_isClosing;
        m_changed.notify_all();
    }
    if (!isClosing && m_hearers.ended)
        m_hearers.ended(why);
}

} // namespace Tessaron
