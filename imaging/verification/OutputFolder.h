#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron
{

/// Why something cannot be written to the output of an order.
[[nodiscard]] NSError outputError(const QByteArray &path, int errnoValue);
/// An error of code Space if fewer bytes than these are free where the descriptor is open, and that can be known
/// (FreeSpace.h). `path` is the output of the order, which the error names.
[[nodiscard]] NSError checkRoomForOutput(int descriptor, std::uint64_t bytes, const QByteArray &path);

/// A folder for what is taken out of an image, made where it is not there. One that was made goes again at the end of
/// this object's life, if it is empty then and is not to be kept.
class OutputFolder
{
public:
    OutputFolder() = default;
    ~OutputFolder();
    OutputFolder(const OutputFolder &) = delete;
    OutputFolder &operator=(const OutputFolder &) = delete;

    /// `advice` is what to do when something else is there.
    [[nodiscard]] NSError open(const QByteArray &path, const QString &advice);
    /// Opened without rights over its content (O_PATH), owned by this object.
    [[nodiscard]] int descriptor() const { return m_folder.get(); }
    /// Waits until all that was written to its filesystem is on the disk; 0 or an `errno` value.
    [[nodiscard]] int sync() const;
    void keep() { m_made.clear(); }

private:
    QByteArray m_made;
    UniqueDescriptor m_folder;
};

} // namespace Tessaron
