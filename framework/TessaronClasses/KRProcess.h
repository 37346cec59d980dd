#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Tessaron
{

/// What the kernel tells of a process.
struct kinfo_proc {
    std::int32_t p_pid = 0;
    std::int8_t p_nice = 0; ///< from -20 to 19
    QByteArray p_comm; ///< the command's name: on Linux the first 15 bytes of it, or what the process calls itself
    std::int32_t e_ppid = 0; ///< the parent's; 0 where that is in no view of ours
};

/// A process of this machine as it was when it was looked at. Any thread.
class TESSARON_EXPORT KRProcess
{
public:
    /// All processes, in the order in which the kernel lists them. No value when it does not.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<KRProcess>>> processList();
    /// The first process in that list of exactly this name; null for a name that no process has, and for a null one.
    [[nodiscard]] static std::shared_ptr<KRProcess> processWithName(const QString &name);
    /// Null for a null record.
    [[nodiscard]] static std::shared_ptr<KRProcess> initWithKinfo_proc(const kinfo_proc *record);

    [[nodiscard]] std::int32_t PID() const { return m_kinfo.p_pid; }
    [[nodiscard]] std::int32_t parentPID() const { return m_kinfo.e_ppid; }
    [[nodiscard]] std::int8_t niceValue() const { return m_kinfo.p_nice; }
    /// A name that is not UTF-8 is text as FileSystemRepresentation.h says.
    [[nodiscard]] QString name() const;

    /// Waits for nothing: what waitpid(2) returns with WNOHANG. The identifier once when a child of this process has
    /// ended, whose status is taken by that; 0 while it runs; -1 when it is not a child of this process.
    int waitUntilExit() const;

private:
    explicit KRProcess(kinfo_proc record);

    const kinfo_proc m_kinfo;
};

} // namespace Tessaron
