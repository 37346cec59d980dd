#pragma once

#include <cstdint>

namespace Tessaron::Testing
{

/// While it lives, one allocation by `operator new` fails: the `call`-th (from 0) of those that threads other than the
/// one that made this do. A test program that uses it must list FailingAllocations.cpp among its sources.
class FailingAllocation
{
public:
    explicit FailingAllocation(std::int64_t call);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation &) = delete;
    FailingAllocation &operator=(const FailingAllocation &) = delete;

    /// False when there were not so many allocations.
    [[nodiscard]] bool hasFailed() const;
};

} // namespace Tessaron::Testing
