#pragma once

#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/QTMovie.h"

#include <QByteArray>

#include <cstddef>

namespace Tessaron
{

/// The file of a new movie, or of a sound. One thread at a time.
class MovieStorage
{
public:
    [[nodiscard]] static Result<MovieStorageHandle> create(const QByteArray &path);
    /// Writes into a file that the caller has open, and that stays open for it, from where it stands.
    [[nodiscard]] static Result<MovieStorageHandle> ofOpenFile(int descriptor, const QByteArray &path);

    MovieStorage(const MovieStorage &) = delete;
    MovieStorage &operator=(const MovieStorage &) = delete;
    ~MovieStorage() = default;

    [[nodiscard]] const QByteArray &path() const { return m_path; }
    /// Open for reading and writing; where it stands is where write() goes on.
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }
    /// 0 or an `errno` value. The first failure stays: what follows it would only leave a hole.
    [[nodiscard]] int write(const void *bytes, std::size_t length);
    /// Why the system did not write; the null error while it has written everything.
    [[nodiscard]] NSError failure() const;
    [[nodiscard]] NSError close();

private:
    MovieStorage(QByteArray path, UniqueDescriptor descriptor);

    const QByteArray m_path;
    UniqueDescriptor m_descriptor;
    int m_failure = 0; ///< `errno`
};

} // namespace Tessaron
