#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

namespace Tessaron::Testing
{

/// A file that cannot be opened while the gate is closed: a process that tries waits. It stops a program at the place
/// where it begins to read that file, without any guess about time (a lease, fcntl(2) F_SETLEASE, made exactly for
/// knowing when somebody comes).
class WriteGate
{
public:
    /// Closes the gate on an existing file that no process has open.
    explicit WriteGate(const QByteArray &path);
    ~WriteGate() { open(); }

    /// False where the filesystem knows no leases; the test is to be skipped then.
    [[nodiscard]] bool isClosed() const { return m_file.isValid(); }
    /// True while a process waits. The system lets them through after 45 s.
    [[nodiscard]] bool somebodyWaits() const;
    /// Lets them through.
    void open() { m_file.reset(); }

private:
    UniqueDescriptor m_file;
};

} // namespace Tessaron::Testing
