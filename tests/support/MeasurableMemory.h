#pragma once

namespace Tessaron::Testing
{

/// False under a sanitizer, which adds memory of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool memoryIsMeasurable = false;
#else
inline constexpr bool memoryIsMeasurable = true;
#endif

} // namespace Tessaron::Testing
