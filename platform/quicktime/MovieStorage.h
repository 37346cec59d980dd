#pragma once

#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/QTMovie.h"
#include "platform/quicktime/decoding/FFmpegHandles.h"

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

/// The file of a new movie as the output of FFmpeg's libraries. One thread at a time.
class MovieStorage
{
public:
    [[nodiscard]] static Result<MovieStorageHandle> create(const QByteArray &path);

    MovieStorage(const MovieStorage &) = delete;
    MovieStorage &operator=(const MovieStorage &) = delete;
    ~MovieStorage() = default;

    [[nodiscard]] AVIOContext *context() const { return m_context.get(); }
    [[nodiscard]] const QByteArray &path() const { return m_path; }
    /// Why the system did not write; the null error while it has written everything.
    [[nodiscard]] NSError failure() const;
    [[nodiscard]] NSError close();

private:
    MovieStorage(QByteArray path, UniqueDescriptor descriptor);
    static int write(void *self, std::uint8_t *bytes, int size);
    static std::int64_t seek(void *self, std::int64_t offset, int whence);

    const QByteArray m_path;
    UniqueDescriptor m_descriptor;
    int m_failure = 0; ///< `errno`
    IOContext m_context;
};

} // namespace Tessaron
