#pragma once

#include "imaging/StagedFile.h"
#include "imaging/verification/PathSelection.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/ExtractFilesJob.h>

#include <functional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// Walks a volume, notes what of the selection is there, and adds up the bytes that the disk will hold for it: holes do
/// not count. After a stop the result is of no use.
[[nodiscard]] std::uint64_t bytesOfSelection(const VolumeReader &reader, PathSelection &selection,
                                             const std::stop_token &stop);

/// Writes what is chosen of a volume into a folder. Serves one run, on one thread.
class FileExtractor
{
public:
    /// Called with bytes as they are written; with 0 for each object.
    using Progress = std::function<void(std::uint64_t bytes)>;

    /// What it does goes into `result` as it is done; its error is left alone. `folder` is a descriptor, and stays
    /// open.
    FileExtractor(const VolumeReader &reader, const PathSelection &selection, int folder, ExtractFilesResult &result);

    /// An error only for what makes all the rest impossible, such as a full disk; other failures are in the result.
    [[nodiscard]] NSError extract(const Progress &progress, const std::stop_token &stop);

private:
    /// A chosen folder that is being walked.
    struct Level {
        UniqueDescriptor folder; ///< not valid for the root, whose objects go into the folder that was given
        VolumeObject object; ///< what it is in the image
    };
    /// Gives an object a name: 0, EEXIST where the name is taken, or another `errno` value.
    using GiveName = std::function<int(const QByteArray &name)>;

    [[nodiscard]] int folderForNew() const;
    [[nodiscard]] bool enterFolder(const QByteArray &path, const VolumeObject &folder);
    [[nodiscard]] bool makeFolder(const QByteArray &path, const VolumeObject &folder);
    void leaveFolder();
    void take(const QByteArray &path, const VolumeObject &object);
    void takeFile(const QByteArray &path, const VolumeObject &file);
    void takeLink(const QByteArray &path, const VolumeObject &link);
    [[nodiscard]] bool fill(const QByteArray &path, const VolumeObject &file, int descriptor);
    [[nodiscard]] int giveUnusedName(const QByteArray &path, const VolumeObject &object, const GiveName &give);
    void fail(const QByteArray &path, const NSError &error);
    void failWriting(const QByteArray &path, int errnoValue);

    const VolumeReader &m_reader;
    const PathSelection &m_selection;
    const int m_folder;
    ExtractFilesResult &m_result;
    std::vector<Level> m_levels;
    std::vector<char> m_buffer;
    Progress m_progress;
    std::stop_token m_stop;
    NSError m_fatal; ///< ends the walk
};

} // namespace Tessaron
