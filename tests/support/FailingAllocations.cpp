#include "tests/support/FailingAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

thread_local bool isSpared = false;
std::atomic<bool> isArmed = false;
std::atomic<std::int64_t> callsLeft = 0;

bool isToFail()
{
    return isArmed.load(std::memory_order_relaxed) && !isSpared && callsLeft.fetch_sub(1) == 0;
}

} // namespace

void *operator new(std::size_t size)
{
    void *const memory = isToFail() ? nullptr : std::malloc(size > 0 ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void *operator new(std::size_t size, const std::nothrow_t & /*tag*/) noexcept
{
    return isToFail() ? nullptr : std::malloc(size > 0 ? size : 1);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace Tessaron::Testing
{

FailingAllocation::FailingAllocation(std::int64_t call)
{
    isSpared = true;
    callsLeft = call;
    isArmed = true;
}

FailingAllocation::~FailingAllocation()
{
    isArmed = false;
    isSpared = false;
}

bool FailingAllocation::hasFailed() const
{
    return callsLeft < 0;
}

} // namespace Tessaron::Testing
