#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

namespace Tessaron::Testing
{

/// A FUSE file system whose program reads no request, as a network mount whose server is gone: each process that asks
/// for a file in it waits until answer() is called, which makes all its files fail. Seen by this thread, and those that
/// it starts from then on, alone, so that no other one runs into it.
class SilentMount
{
public:
    explicit SilentMount(QByteArray folder)
        : m_folder(std::move(folder))
    {
    }
    ~SilentMount()
    {
        answer();
        if (m_isMounted)
            ::umount2(m_folder.constData(), MNT_DETACH);
    }
    SilentMount(const SilentMount &) = delete;
    SilentMount &operator=(const SilentMount &) = delete;

    /// False where this user, or this system, may not mount.
    [[nodiscard]] bool mount()
    {
        m_device = UniqueDescriptor(::open("/dev/fuse", O_RDWR | O_CLOEXEC));
        if (!m_device || ::unshare(CLONE_NEWNS) != 0
            || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return false;
        const QByteArray options = "fd=" + QByteArray::number(m_device.get()) + ",rootmode=40000,user_id=0,group_id=0";
        m_isMounted = ::mount("silent", m_folder.constData(), "fuse", 0, options.constData()) == 0;
        return m_isMounted;
    }
    void answer() { m_device.reset(); }

private:
    const QByteArray m_folder;
    UniqueDescriptor m_device;
    bool m_isMounted = false;
};

} // namespace Tessaron::Testing
