#pragma once

#include "tools/tessaron/Arguments.h"
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/TransferRate.h>

#include <cstdint>
#include <memory>

namespace Tessaron::Tool
{

/// How far a command has come.
struct ProgressState {
    using Phase = DiscJobPhase;

    Phase phase = Phase::Scanning;
    std::uint64_t files = 0; ///< found so far
    std::uint64_t folders = 0;
    std::uint64_t bytesWritten = 0; ///< or compared
    std::uint64_t bytesTotal = 0; ///< 0 until it is known

    /// 0 to 100 from the bytes written, in tenths, rounded down; 100 only when all is done.
    [[nodiscard]] double percent() const;
    /// The phases in which bytes are counted.
    [[nodiscard]] bool countsBytes() const
    {
        return phase == Phase::Writing || phase == Phase::Comparing || phase == Phase::Finishing;
    }
};

/// What a job tells.
[[nodiscard]] ProgressState stateOf(const DiscJobProgress &progress);

/// Shows progress on standard error. Fed a few times a second and at each change of phase; it never shows less than it
/// has shown before. Call clear() before printing anything else.
class ProgressDisplay
{
public:
    /// The display for the mode. An output that is not a terminal gets nothing in mode Auto, and no control sequences
    /// in any mode.
    [[nodiscard]] static std::unique_ptr<ProgressDisplay> create(ProgressMode mode, Verbosity verbosity);
    virtual ~ProgressDisplay() = default;
    ProgressDisplay(const ProgressDisplay &) = delete;
    ProgressDisplay &operator=(const ProgressDisplay &) = delete;

    /// Shows the state; cheap when called too often.
    void update(const ProgressState &state);
    /// Takes the bar away, if there is one.
    virtual void clear() { }

protected:
    ProgressDisplay() = default;

    /// Told a state that has passed the limit of ten a second.
    virtual void show(const ProgressState &state) = 0;

    [[nodiscard]] const TransferRate &rate() const { return m_rate; }
    [[nodiscard]] double shownPercent() const { return m_percent; }

private:
    TransferRate m_rate;
    TransferRate::Time m_lastShown;
    ProgressState::Phase m_lastPhase = ProgressState::Phase::Scanning;
    bool m_hasShown = false;
    double m_percent = 0;
};

} // namespace Tessaron::Tool
