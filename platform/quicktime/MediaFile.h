#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// A regular file that may hold sound or a movie, open for reading. Any thread may read at any place.
class MediaFile
{
public:
    /// Opens without waiting: folders, devices, sockets and pipes are refused.
    [[nodiscard]] static Result<MediaFile> open(const QByteArray &path);

    [[nodiscard]] const QByteArray &path() const { return m_path; }
    /// In bytes, when it was opened.
    [[nodiscard]] std::int64_t length() const { return m_length; }

    /// Reads from a place up to the length at most: a file that grows as fast as it is read would have no end. 0 or the
    /// `errno` value; `*got` says how much was read, also after a failure.
    [[nodiscard]] int read(std::int64_t offset, void *buffer, std::size_t length, std::size_t *got) const;
    /// Bytes at a place; fewer at the end or after a failure.
    [[nodiscard]] QByteArray bytesAt(std::int64_t offset, std::int64_t length) const;

    /// Tells the system that all of it will be read from begin to end.
    void willBeReadInOrder() const;

private:
    MediaFile(QByteArray path, UniqueDescriptor descriptor, std::int64_t length);

    QByteArray m_path;
    UniqueDescriptor m_descriptor;
    std::int64_t m_length;
};

/// The error of a file that cannot be opened.
[[nodiscard]] NSError mediaOpenError(int errnoValue, const QByteArray &path);

} // namespace Tessaron
