#pragma once

#include "platform/discimage/source/DiscImageSource.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// What the volume recognition sequence (ECMA-167 2/8) says. Its descriptors stand one every 2048 bytes, or one in each
/// block where blocks are larger.
struct UdfRecognition {
    std::optional<std::uint64_t> begin; ///< offset of BEA01 in the image
    std::optional<std::uint64_t> identifier; ///< of NSR02 or NSR03
    std::optional<std::uint64_t> end; ///< of TEA01
    std::uint64_t step = 2048; ///< bytes from one descriptor to the next

    [[nodiscard]] bool isUdf() const { return identifier.has_value(); }
};

[[nodiscard]] UdfRecognition readUdfRecognition(const DiscImageSource &source);

} // namespace Tessaron
