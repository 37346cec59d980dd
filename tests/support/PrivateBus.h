#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <memory>

class QProcess;

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
    std::unique_ptr<QProcess> m_daemon;
};

/// Takes every trace of a session bus out of the environment.
void leaveSessionBus();

} // namespace Tessaron::Testing
