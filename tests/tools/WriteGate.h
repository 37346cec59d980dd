#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

namespace Tessaron::Testing
{

/// A file that nobody can open while the gate is closed: whoever tries waits. It stops a program at the place where it
/// begins to read that file, without any guess about time (a lease, fcntl(2) F_SETLEASE, made exactly for knowing when
/// somebody comes).
class WriteGate
{
public:
    /// Closes the gate on an existing file that nobody has open.
    explicit WriteGate(const QByteArray &path);
    ~WriteGate() { open(); }

    /// False where the filesystem knows no leases; the test is to be skipped then.
    [[nodiscard]] bool isClosed() const { return m_file.isValid(); }
    /// True while somebody waits. The system lets them through after 45 s.
    [[nodiscard]] bool somebodyWaits() const;
    /// Lets them through.
    void open() { m_file.reset(); }

private:
    UniqueDescriptor m_file;
};

} // namespace Tessaron::Testing
