#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <mutex>

namespace Tessaron
{

/// A folder for the temporary files of one process, named "process-XXXXXX", in a folder of the user's. It is locked
/// (flock(2)) while the process lives and removed with all it holds when the object ends. Such folders that other
/// processes left behind, killed ones for example, are removed when one is made. Thread-safe.
class ProcessFolder
{
public:
    /// Nothing is made yet. `parent` is asked for at each call of path().
    explicit ProcessFolder(QByteArray (*parent)());
    ~ProcessFolder();
    ProcessFolder(const ProcessFolder &) = delete;
    ProcessFolder &operator=(const ProcessFolder &) = delete;

    /// The folder, which exists when the call returns; empty when it cannot be made.
    [[nodiscard]] QByteArray path();

    /// Lets what an object of the process has in the parent folder go with this one: the entry with that name, a file
    /// or a folder with all it holds, and those of that name and an extension. Those of a name that a living process
    /// has noted, too, stay. The name holds no dot and no slash.
    void noteObject(const QByteArray &name);

    /// That of this process, in temporaryFolder().
    [[nodiscard]] static ProcessFolder &ofThisProcess();

private:
    QByteArray (*const m_parent)();
    std::mutex m_mutex; ///< guards the members below
    QByteArray m_path;
    UniqueDescriptor m_lock;
};

} // namespace Tessaron
