#pragma once

#include "platform/quicktime/MovieStorage.h"
#include "platform/quicktime/decoding/FFmpegHandles.h"

#include <cstdint>

namespace Tessaron
{

/// The file of a new movie as the output of FFmpeg's libraries, as long as both live. One thread at a time.
class MovieOutput
{
public:
    explicit MovieOutput(MovieStorage &storage);

    /// Null when there was no memory.
    [[nodiscard]] AVIOContext *context() const { return m_context.get(); }

private:
    static int write(void *storage, std::uint8_t *bytes, int size);
    static std::int64_t seek(void *storage, std::int64_t offset, int whence);

    IOContext m_context;
};

} // namespace Tessaron
