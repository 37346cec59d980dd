#pragma once

#include "platform/foundation/NSError.h"
#include "platform/quicktime/AudioDamage.h"

#include <QString>

namespace Tessaron
{

/// How the programs that decode end, where a program has no other reason. Their starters go by these.
namespace ToolStatus
{
inline constexpr int written = 0;
inline constexpr int failed = 1;
inline constexpr int wrongArguments = 2;
inline constexpr int writtenWithDamage = 3; ///< something in the source was broken, and is silent in what was written
} // namespace ToolStatus

/// What a program that decodes tells its starter: lines on standard error, each behind its name.
class ToolMessages
{
public:
    explicit constexpr ToolMessages(const char *program)
        : m_program(program)
    {
    }

    void say(const QString &text) const;
    /// Says the error; ToolStatus::failed.
    [[nodiscard]] int statusAfter(const NSError &error) const;
    /// Says each place; a status that fits.
    [[nodiscard]] int statusAfter(const AudioDamageReport &damage) const;

private:
    const char *m_program;
};

/// Ends the process without taking the rest of it down: a thread that still waits for a bus must not keep it, or be
/// there meanwhile.
[[noreturn]] void endTool(int status);

} // namespace Tessaron
