#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discrecording/burn/BurnDevice.h"
#include "platform/discrecording/drives/DriveActivity.h"
#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/discrecording/drives/DriveGrowth.h"
#include "platform/discrecording/drives/DrivePatience.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>

namespace Tessaron
{

struct TableOfContents;

/// How a burn to a drive is to be done.
struct DRBurnOptions {
    bool isSimulated = false; ///< with the laser off
    /// The disc stays open for further sessions. On one that has some already the layout becomes the next one, at
    /// DRDevice::firstBlock(): its filesystem has to list the files of the earlier ones as well, which systems do not
    /// show any more. What is overwritten has no sessions: see `growth`.
    bool leavesOpen = false;
    /// Of what is overwritten: the layout is added, as a session would be. Without it, it is written from the begin.
    std::optional<DriveGrowth> growth = {};
    std::uint32_t speed = 0; ///< thousands of bytes a second; 0 for the fastest
    /// Asks for writing more than the disc says that it holds. What does so is refused all the same, since libburn
    /// stops at that place and leaves a spoiled disc; the error then says this.
    bool overburns = false;
};

/// An optical drive that this process has for itself alone, or a regular file in its place ("stdio:" and its path).
///
/// Opening and everything that asks the drive waits for it, a minute where a disc has to be loaded: not for the main
/// thread. One thread uses a device at a time; activity() may be asked for by any. A drive stays open until it is
/// released or the device destroyed. One drive can be open in a process at a time.
class TESSARON_EXPORT DRDevice final : public BurnDevice
{
public:
    /// Opens the drive at the address, and no other one; takes its tray in. Nothing but an optical drive or a regular
    /// file is opened; one that is not there is made when `mayMakeFile`. Errors say what is in the way and what to do.
    /// A drive that lets the patience run out, now or later, is given up: it ends with the fault "no-answer", and no
    /// drive can be opened until it has answered.
    [[nodiscard]] static Result<std::shared_ptr<DRDevice>> open(const QByteArray &address, bool mayMakeFile,
                                                                const DrivePatience &patience = {});
    ~DRDevice() override;

    /// For people: "the drive “/dev/sr0”", or the file's path.
    [[nodiscard]] QString name() const;
    [[nodiscard]] bool isFile() const;
    /// The disc, as it was when the drive was opened or looked at again.
    [[nodiscard]] const DiscDescription &disc() const;
    /// Lets the drive go and opens it again, which tells what became of a disc.
    [[nodiscard]] NSError lookAgain();
    /// Lets the drive go, with its tray out when `ejects`. Nothing but the destructor may follow. An error when it does
    /// not answer, or when the disc is still in although it was to be put out.
    [[nodiscard]] NSError release(bool ejects);

    /// For the next burn.
    void setBurnOptions(const DRBurnOptions &options);
    /// Why the disc in the drive cannot take such contents, as the next burn would find; the null error when it can.
    [[nodiscard]] NSError errorOfBurn(const TableOfContents &contents) const;
    /// What the last burn could not put onto the disc as it was described.
    [[nodiscard]] QStringList lostByBurn() const;
    /// What the disc is worth after the last burn: see nameOfDiscCondition().
    [[nodiscard]] QString conditionAfterBurn() const;

    /// Blanks a CD-RW or DVD-RW, or makes an overwriteable disc ready; `isFull` takes as long as writing all of it. A
    /// drive cannot be stopped at that. Waits for the end.
    [[nodiscard]] NSError blank(bool isFull);
    /// Formats: DVD-RW for overwriting, DVD-RAM, DVD+RW and BD-RE for their first use. As blank().
    [[nodiscard]] NSError format();

    /// The disc's data from `firstBlock` on, read from the drive, with what lies in front of it for the filesystems
    /// that lead there. The device must not be released before the source goes.
    [[nodiscard]] std::shared_ptr<const DiscImageSource> readBack(std::uint64_t firstBlock, std::uint64_t blocks);
    /// Reads sectors of sound of a CD, as near to `first` as the drive finds them.
    [[nodiscard]] NSError readSound(std::int64_t first, std::uint32_t count, char *out);

    /// What the drive does at the moment. Thread-safe.
    [[nodiscard]] const DriveActivity &activity() const;

    [[nodiscard]] std::shared_ptr<BlockSink> sinkForBurn(const std::stop_token &cancellation) override;
    [[nodiscard]] QVariantMap mediaInfo() const override;
    /// Behind what the disc has where the next burn is to add to it.
    [[nodiscard]] BlockAddress firstBlock() const override;

private:
    class Private;
    explicit DRDevice(std::unique_ptr<Private> own);
    const std::unique_ptr<Private> d;
};

} // namespace Tessaron
