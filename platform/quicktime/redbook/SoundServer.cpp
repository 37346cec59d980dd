#include "platform/quicktime/redbook/SoundServer.h"

#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/SoundRecords.h"
#include "platform/quicktime/decoding/CDAudioDecoder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

using namespace SoundProtocol;

namespace
{

/// Ends the process once the other side has gone away: decoding what will not be read any more may take long.
void endWithOtherSide(int socket)
{
    std::thread([socket] {
        struct pollfd end = {socket, POLLRDHUP, 0};
        while (::poll(&end, 1, -1) < 0 && errno == EINTR) { }
        ::_exit(0);
    }).detach();
}

} // namespace

SoundServer::SoundServer(int socket, char *memory)
    : m_socket(socket)
    , m_memory(memory)
{
}

SoundServer::~SoundServer() = default;

void SoundServer::run()
{
    Message request;
    for (;;) {
        const ssize_t got = ::recv(m_socket, &request, sizeof request, 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got != ssize_t(sizeof request) || !answer(request))
            return;
    }
}

bool SoundServer::answer(const Message &request)
{
    switch (request.kind) {
    case Kind::Open:
        return open(QByteArray(m_memory + recordsOffset, qsizetype(recordsSize)));
    case Kind::Fill:
        return m_decoder && request.slot < slotCount && fill(request.slot);
    case Kind::TellDamage:
        return m_decoder && tellDamage();
    case Kind::Done:
    case Kind::Failed:
        break;
    }
    return false;
}

bool SoundServer::send(const Message &message) const
{
    ssize_t sent = -1;
    do
        sent = ::send(m_socket, &message, sizeof message, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == ssize_t(sizeof message);
}

bool SoundServer::sendRecord(Kind kind, const QByteArray &record)
{
    const std::size_t size = std::min(std::size_t(record.size()), recordsSize);
    std::memcpy(m_memory + recordsOffset, record.constData(), size);
    return send({kind, 0, size});
}

bool SoundServer::open(const QByteArray &record)
{
    OpenRequest request;
    if (!readRequest(record, &request))
        return false;
    m_decoder.reset();
    const CDAudioDecoderOptions options{request.form, request.gain};
    Result<std::unique_ptr<CDAudioDecoder>> decoder = CDAudioDecoder::openFile(request.path, {}, options);
    if (!decoder)
        return sendRecord(Kind::Failed, recordOfError(decoder.error()));
    OpenedSound opened{(*decoder)->length(), (*decoder)->tags()};
    if (request.needsExactLength && !opened.length.isExact) {
        const Result<std::uint64_t> counted = CDAudioDecoder::countSamples(request.path);
        if (!counted)
            return sendRecord(Kind::Failed, recordOfError(counted.error()));
        opened.length = {*counted, true};
    }
    m_decoder = *std::move(decoder);
    return sendRecord(Kind::Done, recordOfOpened(opened));
}

bool SoundServer::fill(std::uint32_t slot)
{
    const std::size_t size = m_decoder->sizeOfSample();
    const Result<std::size_t> samples = m_decoder->read(m_memory + slot * slotSize, slotSize / size);
    if (!samples)
        return sendRecord(Kind::Failed, recordOfError(samples.error()));
    return send({Kind::Done, slot, *samples * size, m_decoder->damage().count});
}

bool SoundServer::tellDamage()
{
    return sendRecord(Kind::Done, recordOfDamage(m_decoder->damage()));
}

bool serveSound()
{
    struct stat memory;
    if (::fstat(STDOUT_FILENO, &memory) != 0 || memory.st_size != off_t(memorySize))
        return false;
    void *const mapped = ::mmap(nullptr, memorySize, PROT_READ | PROT_WRITE, MAP_SHARED, STDOUT_FILENO, 0);
    if (mapped == MAP_FAILED)
        return false;
    endWithOtherSide(STDIN_FILENO);
    SoundServer(STDIN_FILENO, static_cast<char *>(mapped)).run();
    return true;
}

} // namespace Tessaron
