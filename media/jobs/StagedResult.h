#pragma once

#include "media/jobs/MadeFolders.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <memory>

namespace Tessaron
{

/// The result of a conversion while it is made: a file in a hidden folder ".tessaron-convert-XXXXXX" in the folder
/// where it will be. A converter that deletes its result with the folder around it finds nothing else there. Destroying
/// it before publish() removes both; what a killed process left, removeAbandoned() removes. Any thread, one at a time.
class StagedResult
{
public:
    /// Makes the hidden folder, and by `folders` those on the way to it. `wanted` is an absolute path.
    [[nodiscard]] static Result<std::unique_ptr<StagedResult>> create(const QByteArray &wanted, MadeFolders &folders);
    /// Removes the hidden folders that killed processes left in this one. Lists it as a whole: to be called once before
    /// the first result there.
    static void removeAbandoned(const QByteArray &parentFolder);
    ~StagedResult();
    StagedResult(const StagedResult &) = delete;
    StagedResult &operator=(const StagedResult &) = delete;

    /// Where the file is to be made.
    [[nodiscard]] QByteArray path() const;
    /// As it was given to create().
    [[nodiscard]] const QByteArray &wanted() const { return m_wanted; }

    /// Puts bytes in front of the file. After an error, the file is gone.
    [[nodiscard]] NSError prepend(const QByteArray &bytes);

    /// Moves the file to the wanted path or, where something is there by now, to the first unused name (unusedName());
    /// where it is then. Nothing is ever replaced.
    [[nodiscard]] Result<QByteArray> publish();

private:
    StagedResult(QByteArray wanted, UniqueDescriptor parent, QByteArray hiddenName, UniqueDescriptor folder);
    [[nodiscard]] int moveTo(const QByteArray &path) const;

    const QByteArray m_wanted;
    const UniqueDescriptor m_parent;
    const QByteArray m_hiddenName; ///< of the folder in its parent
    const UniqueDescriptor m_folder;
    int m_fileNumber = -1; ///< in the notes for an emergency
    int m_folderNumber = -1;
};

} // namespace Tessaron
