#include "media/TaskStream.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t pieceSize = std::size_t(64) * 1024; ///< what a pipe holds

} // namespace

TaskStream::TaskStream(UniqueDescriptor descriptor, std::function<void(const QByteArray &)> received)
    : m_descriptor(std::move(descriptor))
    , m_received(std::move(received))
    , m_notifier(new QSocketNotifier(m_descriptor.get(), QSocketNotifier::Read))
{
    // Of this end alone: the writers have a description of their own.
    ::fcntl(m_descriptor.get(), F_SETFL, O_NONBLOCK);
    QObject::connect(m_notifier, &QSocketNotifier::activated, m_notifier, [this] { read(); });
}

TaskStream::~TaskStream()
{
    stop();
}

void TaskStream::stop()
{
    if (!m_notifier)
        return;
    m_notifier->setEnabled(false);
    m_notifier->disconnect();
    m_notifier->deleteLater();
    m_notifier = nullptr;
    m_descriptor.reset();
}

void TaskStream::read()
{
    std::array<char, pieceSize> buffer;
    const ssize_t got = ::read(m_descriptor.get(), buffer.data(), buffer.size());
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (got <= 0) // A pipe that cannot be read has nothing more to give, either.
        stop();
    // A copy, since the call may destroy this object.
    const std::function<void(const QByteArray &)> received = m_received;
    received(QByteArray(buffer.data(), std::max<ssize_t>(got, 0)));
}

void TaskStream::readWhatIsThere()
{
    QByteArray bytes(qsizetype(pieceSize), Qt::Uninitialized);
    const ssize_t got = m_descriptor ? ::read(m_descriptor.get(), bytes.data(), pieceSize) : 0;
    if (got <= 0)
        return;
    bytes.truncate(got);
    const std::function<void(const QByteArray &)> received = m_received;
    received(bytes);
}

} // namespace Tessaron
