#pragma once

#include <chrono>
#include <new>
#include <thread>

namespace Tessaron
{

/// For what a worker must not leave undone, such as saying that it has ended: tries until there is memory for it. The
/// operation must be such that it can be repeated.
template <typename Operation>
void whenThereIsMemory(const Operation &operation)
{
    for (;;) {
        try {
            operation();
            return;
        } catch (const std::bad_alloc &) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
}

} // namespace Tessaron
