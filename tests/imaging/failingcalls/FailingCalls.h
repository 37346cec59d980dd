#pragma once

#include <QByteArray>

namespace Tessaron::Testing
{

/// While it lives, one system call of this process fails: the one with the given number among those that open a regular
/// file below a folder for writing, write it, move its position, change its length, bring it to the disk or close it.
/// A call that fails does nothing, but for close(2), which closes nevertheless. Calls of all threads count. One object
/// at a time.
class FailingCall
{
public:
    /// Whether calls that open a folder or bring it to the disk count as well.
    enum class Folders { DoNotCount, Count };

    /// The call with number `number`, counted from 1, fails with `errnoValue`; with 0 none does.
    FailingCall(const QByteArray &folder, int number, int errnoValue, Folders folders);
    ~FailingCall();
    FailingCall(const FailingCall &) = delete;
    FailingCall &operator=(const FailingCall &) = delete;

    /// The name of the call that failed; empty when there were fewer calls.
    [[nodiscard]] QByteArray failed() const;
};

} // namespace Tessaron::Testing
