#pragma once

#include "platform/discrecording/drives/DriveAddress.h"
#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/discrecording/drives/DriveMessages.h"
#include "platform/discrecording/drives/DrivePatience.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <sys/types.h>
#include <vector>

namespace burn
{
struct burn_drive;
struct burn_drive_info;
} // namespace burn

namespace Tessaron
{

/// A drive that this process has opened for itself alone, or the file that stands for one. Every operation runs on the
/// control thread (see BurnControl) and waits for it, as long as its patience lasts: not for a thread that must not
/// wait. A drive that does not answer within it is given up: it is not open any more, and is let go of once it answers.
/// Used by one thread at a time. One drive is open in a process at a time: libburn's messages do not say which drive
/// they are about.
class GrabbedDrive
{
public:
    /// Opens the drive, which takes its tray in. A file that is not there is made when it is `mayMakeFile`.
    [[nodiscard]] static Result<std::unique_ptr<GrabbedDrive>> grab(const DriveAddress &address, bool mayMakeFile,
                                                                    const DrivePatience &patience = {});
    /// Lets the drive go with its tray as it is.
    ~GrabbedDrive();
    GrabbedDrive(const GrabbedDrive &) = delete;
    GrabbedDrive &operator=(const GrabbedDrive &) = delete;

    /// For people.
    [[nodiscard]] QString name() const;
    [[nodiscard]] bool isFile() const { return m_address.kind == DriveAddress::Kind::File; }
    /// Open for reading and writing; -1 for a drive.
    [[nodiscard]] int fileDescriptor() const { return m_file->get(); }
    [[nodiscard]] const DrivePatience &patience() const { return m_patience; }

    /// As the drive described it when it was opened or looked at again.
    [[nodiscard]] const DiscDescription &disc() const { return m_disc; }
    /// Lets the drive go and opens it again: only then does it tell what became of a disc that was written.
    [[nodiscard]] NSError lookAgain();
    /// Whether the drive can still be used: one that was unplugged has been let go of, and one may have been given up.
    [[nodiscard]] bool isOpen() const { return m_opened.drive != nullptr; }

    /// Lets the drive go; with its tray out when `ejects`. An error when it does not answer.
    [[nodiscard]] NSError release(bool ejects);
    /// libburn has let the drive go by itself.
    void forget() { m_opened.drive = nullptr; }
    /// Gives a drive up that a thread of libburn is still busy with. It is let go of when it is idle and the next drive
    /// is opened.
    void giveUpBusy();

    /// Reads whole blocks of user data. An error names the block.
    [[nodiscard]] NSError readBlocks(std::uint64_t first, std::uint32_t count, char *out);
    /// Writes whole blocks in the midst of a disc that is overwritten, or of a file, and waits until they are there. A
    /// drive takes multiples of 16 blocks, at such a place. An error names the block.
    [[nodiscard]] NSError overwriteBlocks(std::uint64_t first, std::span<const std::uint8_t> bytes);
    /// Reads sectors of sound, 2352 bytes each, as near to `first` as the drive finds them.
    [[nodiscard]] NSError readSound(std::int64_t first, std::uint32_t count, char *out);

    /// For the control thread.
    [[nodiscard]] burn::burn_drive *handle() const { return m_opened.drive; }

private:
    /// What libburn has opened.
    struct Opened {
        burn::burn_drive_info *infos = nullptr; ///< libburn's; freed when the drive is let go
        burn::burn_drive *drive = nullptr; ///< null while it is not open
    };
    struct Opening;
    struct Reading {
        bool isWell = false;
        bool isGivenUp = false;
        std::vector<DriveMessage> messages;
    };
    /// One of libburn's: its value is positive when `*got` bytes were read.
    using ReadingFunction = std::function<int(burn::burn_drive *, char *to, off_t length, off_t *got)>;

    GrabbedDrive(DriveAddress address, const DrivePatience &patience);
    [[nodiscard]] NSError openFile(bool mayMakeFile);
    void removeEmptyFile();
    [[nodiscard]] NSError open();
    [[nodiscard]] NSError close(bool ejects);
    template <typename Work>
    [[nodiscard]] auto ask(Work work);
    [[nodiscard]] Reading read(std::size_t length, char *out, const ReadingFunction &reading);
    [[nodiscard]] NSError noAnswer() const;
    [[nodiscard]] static Opening openOnControlThread(const DriveAddress &address, const UniqueDescriptor &file);
    static void letGo(const Opened &opened, bool ejects);
    [[nodiscard]] static NSError letBusyOneGo();

    const DriveAddress m_address;
    const DrivePatience m_patience;
    std::shared_ptr<UniqueDescriptor> m_file; ///< never null; shared with work that was given up
    bool m_isNewFile = false; ///< made by this object; removed again when nothing was written to it
    Opened m_opened;
    DiscDescription m_disc;
};

} // namespace Tessaron
