#pragma once

#include "platform/discrecording/drives/DriveDescription.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/ImageVerification.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>

namespace Tessaron
{

class KRFileHierarchyItem;

/// What is to be written to a disc, and how. Paths are bytes; relative ones count from the working folder.
struct BurnDiscOrder {
    /// Folders and files, as in DiscImageOrder; or one image: a cue sheet, a .ccd or .toc file, or a file that holds
    /// filesystems or has the name of an image.
    QList<QByteArray> sources = {};
    /// A disc of folders and files as a tree, in place of `sources`; see DiscImageOrder.
    std::shared_ptr<KRFileHierarchyItem> tree = {};
    /// A disc of sound, in place of both: what AudioImageJob would make an image of is decoded while the drive writes
    /// it. What of it says where an image goes does not count, and a track of data is refused.
    std::optional<AudioImageOrder> audio = {};
    /// A drive such as "/dev/sr0", or "stdio:" and the path of a regular file; empty for the only drive that there is.
    /// No other one is opened.
    QByteArray drive = {};
    // Of folders and files only; see DiscImageOrder.
    QString volumeName = {};
    DiscFilesystems filesystems = allDiscFilesystems;
    bool relocatesDeepFolders = false;
    bool isStrict = false;
    /// How many times as fast as single speed for the disc; 0 for as fast as it goes. Drives take the nearest speed.
    double speed = 0;
    bool isSimulated = false; ///< with the laser off: nothing is written
    /// Adds to the disc, and leaves it open, so that more can be added later.
    ///
    /// An empty disc is written as without it, but for being left open. A kind of disc that cannot be left open is
    /// refused.
    ///
    /// On a disc that was left open, folders and files become a further session. It shows the earlier files as well; a
    /// new file of the same path takes the place of the earlier one. It has ISO 9660 and Joliet only: with
    /// `allDiscFilesystems` it gets these two, and asking for any other one by name is an error. Sound can be added, an
    /// image of data cannot. Without this option such a disc is refused.
    ///
    /// DVD+RW, DVD-RAM, BD-RE and DVD-RW that are formatted for overwriting, and files in the place of a drive, have no
    /// sessions: folders and files are written behind what is there, and the disc then shows both, by the same two
    /// filesystems; UDF and HFS+ that it had are taken away. An image cannot be added. Without this option the disc is
    /// written from its begin, and what was there is replaced.
    bool leavesOpen = false;
    /// Asks for writing more than the disc says that it holds. That is refused all the same before anything is written,
    /// and the error says why.
    bool overburns = false;
    /// Finds out what would come of it, and ends before anything is written: the size (`data.bytes`), what of the disc
    /// is kept and replaced, what cannot be stored, and every error that can be known by then. The drive is opened and
    /// read for that. `verifies` and `ejects` are passed over.
    bool isPlanOnly = false;
    bool verifies = false; ///< read everything back and compare it
    bool ejects = false; ///< put the tray out at the end, also after a failure
};

/// How the writing of a disc has ended.
struct BurnDiscResult {
    /// Null when everything is on the disc (or was simulated) and, where that was asked for, compares as it should.
    /// Else its recovery suggestion says first what the disc is worth.
    NSError error;
    DiscDescription disc; ///< as it was found
    QString driveName; ///< for people
    /// "unchanged", "written", "written-not-closed", "appendable", "only-kept", "overwritable", "needs-blanking",
    /// "spoiled" or "unknown".
    QString condition = QStringLiteral("unchanged");
    /// What has gone wrong with the drive: "busy", "no-disc", "calibration" …; empty where it was something else.
    QString fault;
    bool isImage = false; ///< an image or a disc of sound was written, not folders and files
    std::vector<AudioImageTrack> audioTracks; ///< of a disc of sound, with what of it is damaged
    /// Of folders and files: counts, name, and what is not on the disc as it stands. Of an image: `bytes`.
    DiscImageResult data;
    // Of what the disc had before and still has; not counted in `data`.
    std::uint32_t keptFiles = 0;
    std::uint32_t keptFolders = 0;
    QStringList replaced; ///< paths on the disc of earlier files that were replaced by what was added
    std::uint32_t tracks = 0;
    std::uint32_t sessions = 0; ///< that were written
    /// What an image says and this disc cannot have, what was interpreted, what sounds are damaged, and that the disc
    /// could not be put out.
    QStringList notes;
    bool isAnythingLost = false; ///< one of the notes is about something that is not on the disc
    /// Computers could be started from the disc (El Torito), and cannot now that something was added. A note says it.
    bool isStartLost = false;
    std::uint64_t waits = 0; ///< how often the drive had to wait for data
    std::optional<VerificationResult> verification; ///< of folders and files that were compared
    std::uint64_t bytesCompared = 0; ///< of an image that was compared: data and sound

    /// True when there is no error and everything is on the disc.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Writes a disc: folders and files, or an image. See DiscJob for threads and lifetime. A cancel stops the drive as
/// soon as it can be stopped, which may take a minute, and says what the disc is worth; while a session is being
/// closed, that is waited for.
class TESSARON_EXPORT BurnDiscJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit BurnDiscJob(BurnDiscOrder order, QObject *parent = nullptr);
    ~BurnDiscJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const BurnDiscResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::BurnDiscResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::BurnDiscResult)
