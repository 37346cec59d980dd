#pragma once

#include "platform/foundation/Result.h"
#include "platform/quicktime/SoundHelper.h"

#include <QByteArray>

#include <memory>
#include <mutex>
#include <vector>

namespace Tessaron
{

/// Programs that decode sound (SoundHelper), kept for the next file: starting one takes a tenth of a second. There are
/// as many as were ever in use at the same time; they end with this object. Thread-safe.
class SoundHelpers
{
public:
    /// One that is not in use, or a new one. `path` is what an error is about.
    [[nodiscard]] Result<std::unique_ptr<SoundHelper>> take(const QByteArray &path);
    /// One that cannot be used any more is ended.
    void giveBack(std::unique_ptr<SoundHelper> helper);
    /// Ends those that are not in use.
    void endIdle();

private:
    std::mutex m_mutex; ///< guards the member below
    std::vector<std::unique_ptr<SoundHelper>> m_idle;
};

} // namespace Tessaron
