#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QString>

#include <cstddef>
#include <memory>

namespace Tessaron
{

/// A file open for writing. Used by one thread at a time; the destructor closes without a report.
class TESSARON_EXPORT NSFileHandle
{
public:
    /// Opens an existing file for writing at its start, without truncating it; null when it cannot be opened (for
    /// example because it does not exist).
    [[nodiscard]] static std::shared_ptr<NSFileHandle> fileHandleForWritingAtPath(const QString &path);

    /// Writes all bytes at the current position; a null error when they were written. Interrupted and short writes are
    /// continued.
    [[nodiscard]] NSError writeData(const void *bytes, std::size_t length);

    /// Closes and returns the error that the system reports, if any. A closed handle may be closed again.
    [[nodiscard]] NSError closeFile();

    [[nodiscard]] int fileDescriptor() const { return m_descriptor.get(); }
    [[nodiscard]] QString path() const { return m_path; }

private:
    NSFileHandle(UniqueDescriptor descriptor, const QString &path);

    UniqueDescriptor m_descriptor;
    QString m_path;
};

} // namespace Tessaron
