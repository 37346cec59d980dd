#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// Which files are to be taken out of a filesystem of an image. Paths are bytes; relative ones of this machine count
/// from the working folder.
struct ExtractFilesOrder {
    QByteArray image = {}; ///< see openDiscImage()
    /// Absent for the one that keeps the most of names and properties: the first of Rock Ridge, UDF, HFS+, Joliet and
    /// ISO 9660 that is there and can be read.
    std::optional<VolumeKind> filesystem = std::nullopt;
    /// Which of OpenedDiscImage::parts has the filesystem. Absent, without a track, for the image itself, or, where
    /// that has none, for the first part that has one.
    std::optional<std::size_t> part = std::nullopt;
    /// In place of `part`: the number of the track that has the filesystem.
    std::optional<std::uint32_t> track = std::nullopt;
    /// Files, and folders with all that is in them, by their paths from the root of the filesystem, with or without
    /// '/' in front. Empty for everything.
    QList<QByteArray> paths = {};
    /// Where they go: each of `paths` under its last name; without `paths`, all that is in the root. Made where it is
    /// not there.
    QByteArray folder = {};
    /// Have the files on the disk, past all caches, before the job ends.
    bool isSynchronized = true;
};

/// What became of an order.
struct ExtractFilesResult {
    /// Null when the job came to its end. What was taken out before an error or a cancel stays, each file whole. Domain
    /// and codes are those of DiscJobErrors.h.
    NSError error;
    VolumeKind filesystem = VolumeKind::ISO9660; ///< the one that was read
    std::uint64_t files = 0; ///< taken out
    std::uint64_t folders = 0;
    std::uint64_t symbolicLinks = 0;
    std::uint64_t bytes = 0; ///< of the files

    /// Something that could not be taken out as the image has it. Paths are those of the filesystem, without '/' in
    /// front.
    struct Failure {
        QByteArray path;
        NSError error;
    };
    std::vector<Failure> failures; ///< the first thousand
    std::uint64_t failureCount = 0;

    /// Something that has another name than in the image, since a file of that name was there already, or no file can
    /// have it.
    struct Renaming {
        QByteArray path;
        QByteArray name; ///< the one that it has now
    };
    std::vector<Renaming> renamings; ///< the first thousand
    std::uint64_t renamingCount = 0;
    std::uint64_t unsetTimes = 0; ///< files and folders whose dates the disk did not take
    QStringList notes; ///< see OpenedDiscImage

    /// True when all that was asked for is there, with its dates.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Takes files out of a filesystem of an image. No file that is there already is replaced, and nothing is written
/// through a link: what has a name that is taken gets another one ("letter 2.txt"). Each file gets its name when it is
/// whole. Dates and permissions are those of the image as far as it has them, but the user may always read and write.
/// Files that the image names several times become several files. What cannot be read is told, and the rest is taken
/// all the same. See DiscJob for threads and lifetime.
class TESSARON_EXPORT ExtractFilesJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit ExtractFilesJob(ExtractFilesOrder order, QObject *parent = nullptr);
    ~ExtractFilesJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const ExtractFilesResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::ExtractFilesResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::ExtractFilesResult)
