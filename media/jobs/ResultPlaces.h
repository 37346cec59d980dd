#pragma once

#include "media/jobs/MadeFolders.h"
#include "media/jobs/MediaFileWalk.h"
#include "media/jobs/StagedResult.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <set>

namespace Tessaron
{

/// Whether a code of KRAudioConverter means MP3.
[[nodiscard]] bool isMP3Format(std::int32_t format);

/// Where the results of a conversion go: into folders like those of their sources, or all into one, under names that
/// neither a file that is there nor another result has. Any thread, one at a time.
class ResultPlaces
{
public:
    /// Below the folder `destination`; `format` is a code of KRAudioConverter.
    ResultPlaces(QByteArray destination, bool isFlat, std::int32_t format);

    /// Makes the destination where it is missing. An error of code Destination (DiscJobErrors.h).
    [[nodiscard]] NSError makeDestination();
    /// The place of the file's result, with the folders on the way to it.
    [[nodiscard]] Result<std::unique_ptr<StagedResult>> placeFor(const FoundMediaFile &file);
    /// Removes the folders made here in which there is nothing.
    void removeEmptyFolders() { m_folders.removeEmpty(); }

private:
    [[nodiscard]] QByteArray nameOfResult(const QByteArray &source) const;

    const QByteArray m_destination;
    const bool m_isFlat;
    const std::int32_t m_format;
    MadeFolders m_folders;
    std::set<QString> m_promisedPaths; ///< of all results so far
    std::set<QByteArray> m_foldersWithoutRemains; ///< those that hold nothing of killed processes any more
};

} // namespace Tessaron
