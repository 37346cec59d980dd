#pragma once

#include "imaging/jobs/DiscJobWork.h"
#include <TessaronClasses/DiscJobErrors.h>

namespace Tessaron
{

/// Work that is one piece in the background. An outcome is a struct with a member `error`.
template <typename Outcome>
class OneStepWork : public DiscJobWork
{
public:
    void begin() final
    {
        runInBackground(
            [this](const std::stop_token &stop) {
                NSError error = run(stop);
                return stop.stop_requested() ? discJobCancellation() : error;
            },
            [this](const NSError &error) {
                result.error = error;
                end(error);
            });
    }

    [[nodiscard]] DiscJobProgress progress() const override { return {}; }

    Outcome result; ///< the worker's until the job has ended

private:
    /// On the worker: fills the result, but for its error, which is returned.
    [[nodiscard]] virtual NSError run(const std::stop_token &stop) = 0;
};

} // namespace Tessaron
