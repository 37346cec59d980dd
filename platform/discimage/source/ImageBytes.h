#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// The bytes of an image that lies neither in a file nor in memory, such as those of a disc in a drive.
class TESSARON_EXPORT ImageBytes
{
public:
    ImageBytes() = default;
    ImageBytes(const ImageBytes &) = delete;
    ImageBytes &operator=(const ImageBytes &) = delete;
    virtual ~ImageBytes();

    /// How many there are; does not change.
    [[nodiscard]] virtual std::uint64_t length() const = 0;
    /// Reads exactly `length` bytes; the caller keeps the run within length(). Thread-safe.
    [[nodiscard]] virtual NSError read(std::uint64_t offset, void *buffer, std::size_t length) const = 0;
};

} // namespace Tessaron
