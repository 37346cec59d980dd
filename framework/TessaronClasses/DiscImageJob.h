#pragma once

#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

class DRStorageReport;
class KRFileHierarchyItem;

/// What an image is to be made of, where, and how. Paths are bytes; relative ones count from the working folder.
struct DiscImageOrder {
    /// The content of one folder becomes the content of the disc; files, or several folders, are put together under
    /// their own names. A symbolic link here stands for what it leads to.
    QList<QByteArray> sources = {};
    /// The disc as a tree, in place of `sources`, which has to be empty then: what is below its root becomes the
    /// content of the disc, each under its own name on the disc and with its own options; real folders are not looked
    /// into again. The job takes the tree over: nothing else may use it from start() on.
    std::shared_ptr<KRFileHierarchyItem> tree = {};
    /// The image file. It appears when it is whole; an older file is replaced then and is left as it was if the job
    /// fails. A pipe or a character device takes the image as a stream: what it has taken cannot be had back.
    QByteArray output = {};
    /// Takes the image as a stream instead of `output` when it is not -1: an open descriptor of a pipe, a character
    /// device or an empty file. Stays the caller's and must stay open. A program that writes into pipes ignores
    /// SIGPIPE, so that a reader that goes away is an error.
    int outputDescriptor = -1;
    DiscFormat format = DiscFormat::ISO;
    /// Name of the volume; empty for the name of the only folder given, else that of the output without its extension,
    /// which is what a tree gets, too.
    QString volumeName = {};
    DiscFilesystems filesystems = allDiscFilesystems;
    /// Keep ISO 9660 within the eight levels of folders that its standard allows: deeper ones are recorded in a folder
    /// "rr_moved" of the root, and Rock Ridge shows them in their places. Without it they are recorded where they are,
    /// which today's systems read.
    bool relocatesDeepFolders = false;
    /// Fail, and leave nothing, when something cannot be read or stored as it is.
    bool isStrict = false;
    /// Have the image on the disk, past all caches, before it gets its name: not even a loss of power can leave a file
    /// of that name that is not whole. Without it the job ends earlier.
    bool isSynchronized = true;
};

/// How the making of an image has ended.
struct DiscImageResult {
    /// Null when the image is whole. Else nothing is left of it, and what was there before is as it was. Domain and
    /// codes are those of DiscJobErrors.h.
    NSError error;
    QByteArray imagePath; ///< where the image is or was to be, symbolic links followed; empty for a descriptor
    QByteArray cueSheetPath; ///< empty for formats without a cue sheet
    QString volumeName; ///< as it was asked for, or for DVD-Video as players need it
    /// The order gave the volume a name, and no filesystem of the image has it.
    bool isVolumeNameLost = false;
    std::uint64_t bytes = 0; ///< of the image file
    std::uint64_t files = 0;
    std::uint64_t folders = 0; ///< the root not counted
    /// Folders below the sources that could not be listed, or not to their end: what is in them is missing in the
    /// image. A source itself that cannot be listed is an error.
    std::vector<UnreadableFolder> unreadable;
    /// What the disc's filesystems cannot hold as it stands; null when the job ended before that was known.
    std::shared_ptr<const DRStorageReport> report;

    /// True when there is no error and everything is in the image: nothing is unreadable or lost, and if the order gave
    /// the volume a name, it has that one. A program must look, and tell its user what is missing.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Makes a disc image of folders and files. See DiscJob for threads and lifetime.
///
///     auto *job = new DiscImageJob({.sources = {"Photos"}, .output = "photos.iso"}, parent);
///     QObject::connect(job, &DiscImageJob::finished, parent, [](const DiscImageResult &result) { … });
///     job->start();
class TESSARON_EXPORT DiscImageJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit DiscImageJob(DiscImageOrder order, QObject *parent = nullptr);
    ~DiscImageJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const DiscImageResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::DiscImageResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::DiscImageResult)
