#pragma once

#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/burn/DRNotificationCenter.h"
#include "platform/foundation/NSError.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace Tessaron
{

/// Status and amounts of one burn, and the posting of its changes. Changed by the burn thread, read by any.
///
/// Observers see the states in their order: while they are called, status() answers what was true when their
/// notification was posted. Progress is posted at most 25 times a second and never piles up: as long as the last
/// notification has not been delivered, further progress of the same state goes into it.
class BurnStatus : public std::enable_shared_from_this<BurnStatus>
{
public:
    enum class Posting { Coalesced, Always };

    BurnStatus(std::shared_ptr<DRNotificationCenter> center, std::weak_ptr<DRBurn> burn);

    /// Enters a state with nothing of it done, and posts that.
    void enterState(const QString &state);
    /// How much of the current state is done, 0 to 1.
    void setPercentComplete(double percent, Posting posting = Posting::Coalesced);
    /// Enters the final state: failed when there is an error. Ignored when the burn has ended already.
    void finish(const NSError &error);

    /// The record of the status; see the keys in DRBurn.h.
    [[nodiscard]] QVariantMap status() const;

    /// Of the final state.
    [[nodiscard]] NSError error() const;

    void setTotals(std::uint64_t bytes, std::uint32_t files, std::uint32_t folders);
    /// Counts what the device has consumed.
    void addBytesWritten(std::uint64_t bytes);
    [[nodiscard]] DRBurnAmounts amounts() const;

private:
    /// What the burn does or how it ended.
    struct Facts {
        QString state; ///< null before the start
        double percent = 0; ///< of the state, 0 to 1
        NSError error; ///< of a burn that failed
    };
    /// What one notification tells.
    struct Snapshot {
        std::uint64_t serial = 0;
        Facts facts;
        bool isDelivered = false;
    };

    [[nodiscard]] static QVariantMap recordOf(const Facts &facts);
    void post();
    void deliver(const std::shared_ptr<Snapshot> &snapshot, const std::function<void()> &callObservers);

    const std::shared_ptr<DRNotificationCenter> m_center;
    const std::weak_ptr<DRBurn> m_burn;

    mutable std::mutex m_mutex; ///< guards the members down to the empty line
    Facts m_facts;
    bool m_isFinal = false;
    std::shared_ptr<Snapshot> m_lastPosted;
    std::chrono::steady_clock::time_point m_lastPostTime;
    std::shared_ptr<const Snapshot> m_shown; ///< while observers are called
    std::thread::id m_showingThread;
    int m_showingDepth = 0; ///< an observer may run an event loop and be called again within

    std::atomic<std::uint64_t> m_bytesWritten = 0;
    std::atomic<std::uint64_t> m_bytesTotal = 0;
    std::atomic<std::uint32_t> m_filesTotal = 0;
    std::atomic<std::uint32_t> m_foldersTotal = 0;
};

} // namespace Tessaron
