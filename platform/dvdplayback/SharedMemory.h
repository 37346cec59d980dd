#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <cstddef>

namespace Tessaron
{

/// Memory that processes share through a descriptor. Its size is sealed, so that none of them can make another one fail
/// by cutting it. Unmapped at the object's end.
class SharedMemory
{
public:
    /// Zeroed memory; the name is for people who look at the process.
    [[nodiscard]] static Result<SharedMemory> create(const char *name, std::size_t size);
    /// Memory that another process has created; an error for any other size.
    [[nodiscard]] static Result<SharedMemory> attach(UniqueDescriptor descriptor, std::size_t size);
    SharedMemory(SharedMemory &&other) noexcept;
    SharedMemory &operator=(SharedMemory &&other) = delete;
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;
    ~SharedMemory();

    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }
    [[nodiscard]] void *begin() const { return m_begin; }

private:
    SharedMemory(UniqueDescriptor descriptor, void *begin, std::size_t size);

    UniqueDescriptor m_descriptor;
    void *m_begin;
    std::size_t m_size;
};

} // namespace Tessaron
