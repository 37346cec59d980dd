#include "tests/tools/WriteGate.h"

#include <csignal>
#include <fcntl.h>

namespace Tessaron::Testing
{

WriteGate::WriteGate(const QByteArray &path)
    : m_file(::open(path.constData(), O_RDWR | O_CLOEXEC))
{
    std::signal(SIGIO, SIG_IGN); // how the system tells the lease's holder; polling is enough here
    if (::fcntl(m_file.get(), F_SETLEASE, F_WRLCK) != 0)
        m_file.reset();
}

bool WriteGate::somebodyWaits() const
{
    return m_file.isValid() && ::fcntl(m_file.get(), F_GETLEASE) != F_WRLCK;
}

} // namespace Tessaron::Testing
