#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Tessaron
{

/// A file open for reading or for writing. Used by one thread at a time; the destructor closes without a report.
///
/// Reading keeps a buffer, so that many small reads are few system calls; offsets are always those of what was asked
/// for, never of what was read ahead. From a pipe nothing is read ahead.
class TESSARON_EXPORT NSFileHandle
{
public:
    /// Opens an existing file for writing at its start, without truncating it; null when it cannot be opened (for
    /// example because it does not exist).
    [[nodiscard]] static std::shared_ptr<NSFileHandle> fileHandleForWritingAtPath(const QString &path);

    /// Opens an existing file for reading at its start; null when it cannot be opened. Opening never waits: a fifo that
    /// no one writes to is at its end at once.
    [[nodiscard]] static std::shared_ptr<NSFileHandle> fileHandleForReadingAtPath(const QString &path);

    /// The next bytes: fewer than asked for at the file's end or when reading fails, which cannot be told apart here.
    [[nodiscard]] QByteArray readDataOfLength(std::size_t length);
    /// The same into a buffer; returns how many bytes were read.
    [[nodiscard]] std::size_t readInto(void *buffer, std::size_t length);
    /// One read(2) of the descriptor at the current offset: the bytes read, 0 at the end, -1 on an error.
    [[nodiscard]] std::ptrdiff_t readOnce(void *buffer, std::size_t length);

    /// Bytes from the file's start to the next one that is read; of a pipe, how many were read.
    [[nodiscard]] std::uint64_t offsetInFile() const { return m_offset; }
    /// Goes there, also behind the end. Does nothing in a pipe.
    void seekToFileOffset(std::uint64_t offset);

    /// Writes all bytes at the current position; a null error when they were written. Interrupted and short writes are
    /// continued.
    [[nodiscard]] NSError writeData(const void *bytes, std::size_t length);

    /// Closes and returns the error that the system reports, if any. A closed handle may be closed again.
    [[nodiscard]] NSError closeFile();

    [[nodiscard]] int fileDescriptor() const { return m_descriptor.get(); }
    [[nodiscard]] QString path() const { return m_path; }

private:
    NSFileHandle(UniqueDescriptor descriptor, const QString &path);

    [[nodiscard]] std::size_t takeBuffered(char *to, std::size_t length);
    [[nodiscard]] std::size_t readAtOffset(char *to, std::size_t length);

    UniqueDescriptor m_descriptor;
    QString m_path;
    // For reading.
    bool m_isSeekable = false;
    std::uint64_t m_offset = 0;
    QByteArray m_buffer; ///< bytes of the file from m_bufferOffset on
    std::uint64_t m_bufferOffset = 0;
};

} // namespace Tessaron
