#include "platform/quicktime/SoundHelper.h"

#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/NSBundle.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/QTMovie.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Tessaron
{

using namespace SoundProtocol;

namespace
{

constexpr std::chrono::milliseconds timeToEnd(2000);
constexpr int firstSignalStatus = 128;
constexpr int wrongArguments = 2; // of DummyRedbook

NSError startError(const QByteArray &path, int errnoValue)
{
    return mediaError(
        statusForErrno(errnoValue), path,
        QStringLiteral("the program that decodes it, DummyRedbook, cannot be started: %1").arg(systemText(errnoValue)),
        isLackOfDescriptors(errnoValue) ? adviceOnDescriptors()
                                        : QStringLiteral("Install TessaronClasses again, or end other programs."));
}

/// Memory of a fixed size that both processes map. Sealed, so that the other one cannot take it away.
UniqueDescriptor sharedMemory()
{
    UniqueDescriptor memory(::memfd_create("TessaronSound", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const bool isMade = memory && ::ftruncate(memory.get(), off_t(memorySize)) == 0
        && ::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0;
    return isMade ? std::move(memory) : UniqueDescriptor();
}

QString nameOfSignal(int number)
{
    const char *const text = ::sigdescr_np(number);
    return text ? QString::fromLatin1(text) : QStringLiteral("signal %1").arg(number);
}

} // namespace

SoundHelper::SoundHelper(std::unique_ptr<HelperProcess> process, UniqueDescriptor socket, char *memory)
    : m_process(std::move(process))
    , m_socket(std::move(socket))
    , m_memory(memory)
{
}

Result<std::unique_ptr<SoundHelper>> SoundHelper::start(const QByteArray &path)
{
    // One that a program has put into its own bundle is for its own tracks.
    const QString program = NSBundle::frameworkBundle()->pathForResource(QStringLiteral("DummyRedbook"));
    if (program.isEmpty())
        return mediaError(noMediaModule, path,
                          QStringLiteral("the program of TessaronClasses that decodes sound, DummyRedbook, is not "
                                         "installed"),
                          QStringLiteral("Install TessaronClasses with its media module: a build with "
                                         "TESSARON_BUILD_MEDIA=ON and FFmpeg's libraries has it."));
    const UniqueDescriptor memory = sharedMemory();
    std::array<int, 2> ends{-1, -1};
    if (!memory || ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return startError(path, errno);
    UniqueDescriptor own(ends[0]);
    const UniqueDescriptor other(ends[1]);
    void *const mapped = ::mmap(nullptr, memorySize, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
    if (mapped == MAP_FAILED)
        return startError(path, errno);
    int failure = 0;
    std::unique_ptr<HelperProcess> process = HelperProcess::start(
        fileSystemRepresentation(program), {serveOption, version}, &failure, {other.get(), memory.get(), true});
    if (!process) {
        ::munmap(mapped, memorySize);
        return startError(path, failure);
    }
    return std::unique_ptr<SoundHelper>(
        new SoundHelper(std::move(process), std::move(own), static_cast<char *>(mapped)));
}

SoundHelper::~SoundHelper()
{
    m_process->kill(); // it has nothing to lose
    m_process->waitForEnd(timeToEnd);
    ::munmap(m_memory, memorySize);
}

void SoundHelper::interrupt()
{
    m_isUsable = false;
    ::shutdown(m_socket.get(), SHUT_RDWR);
}

bool SoundHelper::send(const Message &message)
{
    ssize_t sent = -1;
    do
        sent = ::send(m_socket.get(), &message, sizeof message, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    const bool isSent = sent == ssize_t(sizeof message);
    m_isUsable = m_isUsable && isSent;
    return isSent;
}

std::optional<Message> SoundHelper::receive()
{
    Message message;
    ssize_t got = -1;
    do
        got = ::recv(m_socket.get(), &message, sizeof message, 0);
    while (got < 0 && errno == EINTR);
    if (got == ssize_t(sizeof message))
        return message;
    m_isUsable = false;
    return std::nullopt;
}

bool SoundHelper::putRecord(const QByteArray &record)
{
    if (std::size_t(record.size()) > recordsSize)
        return false;
    std::memcpy(m_memory + recordsOffset, record.constData(), std::size_t(record.size()));
    return true;
}

QByteArray SoundHelper::record(const Message &answer) const
{
    return QByteArray(m_memory + recordsOffset, qsizetype(std::min<std::uint64_t>(answer.value, recordsSize)));
}

std::span<const char> SoundHelper::sound(const Message &answer) const
{
    const std::size_t slot = std::min<std::size_t>(answer.slot, slotCount - 1);
    return {m_memory + slot * slotSize, std::size_t(std::min<std::uint64_t>(answer.value, slotSize))};
}

NSError SoundHelper::howItEnded(const QByteArray &path)
{
    m_isUsable = false;
    const QString leaveItOut = QStringLiteral("Convert the file with another program, or leave it out.");
    if (!m_process->waitForEnd(timeToEnd))
        return mediaError(decoderHasEnded, path,
                          QStringLiteral("the program that decodes it, DummyRedbook, does not answer"), leaveItOut);
    const int status = m_process->exitStatus().value_or(0);
    if (status == wrongArguments)
        return mediaError(decoderHasEnded, path,
                          QStringLiteral("the program that decodes it, DummyRedbook, belongs to another version of "
                                         "TessaronClasses"),
                          QStringLiteral("Install the library and its helper programs from the same build."));
    if (status == firstSignalStatus + SIGKILL)
        return mediaError(decoderHasEnded, path,
                          QStringLiteral("the program that decodes it, DummyRedbook, was killed, as the system does "
                                         "when memory runs out"),
                          QStringLiteral("End other programs, and try again."));
    if (status > firstSignalStatus)
        return mediaError(decoderHasEnded, path,
                          QStringLiteral("the program that decodes it, DummyRedbook, has crashed (%1)")
                              .arg(nameOfSignal(status - firstSignalStatus)),
                          leaveItOut);
    return mediaError(decoderHasEnded, path,
                      QStringLiteral("the program that decodes it, DummyRedbook, has ended with status %1").arg(status),
                      leaveItOut);
}

} // namespace Tessaron
