#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <sys/types.h>

namespace Tessaron::Testing
{

/// A D-Bus session bus of the test's own, named in the environment while it lives. The bus of the user is never
/// touched.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    [[nodiscard]] QByteArray address() const;

private:
    QTemporaryDir m_folder;
    pid_t m_daemon = -1;
};

/// Takes every trace of a session bus out of the environment.
void leaveSessionBus();

} // namespace Tessaron::Testing
