#include "platform/discrecording/drives/DRDevice.h"

#include "platform/discrecording/drives/DiscErasing.h"
#include "platform/discrecording/drives/DriveReader.h"
#include "platform/discrecording/drives/DriveSink.h"
#include "platform/discrecording/drives/DriveTray.h"
#include "platform/discrecording/drives/GrabbedDrive.h"
#include "platform/discrecording/objects/DRDeviceMedia.h"

namespace Tessaron
{

class DRDevice::Private
{
public:
    Private(DriveAddress known, std::unique_ptr<GrabbedDrive> opened)
        : address(std::move(known))
        , drive(std::move(opened))
    {
    }

    const DriveAddress address;
    const std::unique_ptr<GrabbedDrive> drive;
    DriveActivity activity;
    RecordingOptions options;
    std::shared_ptr<DriveSink> sink; ///< of the last burn
};

DRDevice::DRDevice(std::unique_ptr<Private> own)
    : d(std::move(own))
{
}

DRDevice::~DRDevice() = default;

Result<std::shared_ptr<DRDevice>> DRDevice::open(const QByteArray &address, bool mayMakeFile,
                                                 const DrivePatience &patience)
{
    const Result<DriveAddress> known =
        driveAddress(address, mayMakeFile ? DriveFileIs::ThereOrNew : DriveFileIs::There);
    if (!known)
        return known.error();
    Result<std::unique_ptr<GrabbedDrive>> drive = GrabbedDrive::grab(*known, mayMakeFile, patience);
    if (!drive)
        return drive.error();
    return std::shared_ptr<DRDevice>(new DRDevice(std::make_unique<Private>(*known, *std::move(drive))));
}

QString DRDevice::name() const
{
    return d->drive->name();
}

bool DRDevice::isFile() const
{
    return d->drive->isFile();
}

const DiscDescription &DRDevice::disc() const
{
    return d->drive->disc();
}

NSError DRDevice::lookAgain()
{
    return d->drive->lookAgain();
}

NSError DRDevice::release(bool ejects)
{
    const bool asks = ejects && d->drive->isOpen(); // one that was given up would not answer
    const NSError error = d->drive->release(ejects);
    return error || !asks ? error : errorOfEjecting(d->address);
}

void DRDevice::setBurnOptions(const DRBurnOptions &options)
{
    d->options = {options.isSimulated, options.leavesOpen, options.speed, options.overburns, options.growth};
}

NSError DRDevice::errorOfBurn(const TableOfContents &contents) const
{
    return planRecording(contents, disc(), d->options).error();
}

QStringList DRDevice::lostByBurn() const
{
    return d->sink ? d->sink->lost() : QStringList();
}

QString DRDevice::conditionAfterBurn() const
{
    return nameOfDiscCondition(d->sink ? d->sink->condition() : DiscCondition::Unchanged);
}

NSError DRDevice::blank(bool isFull)
{
    return eraseDisc(*d->drive, isFull ? DiscErasure::Full : DiscErasure::Quick, d->activity);
}

NSError DRDevice::format()
{
    return eraseDisc(*d->drive, DiscErasure::Format, d->activity);
}

std::shared_ptr<const DiscImageSource> DRDevice::readBack(std::uint64_t firstBlock, std::uint64_t blocks)
{
    const auto readerOf = [this](std::uint64_t from, std::uint64_t length) {
        return std::make_shared<const DriveReader>(
            [this](std::uint64_t first, std::uint32_t count, char *out) {
                return d->drive->readBlocks(first, count, out);
            },
            from, length);
    };
    DiscImageSectors sectors;
    sectors.kind = TrackKind::Mode1;
    sectors.firstBlock = std::uint32_t(firstBlock);
    return DiscImageSource::sourceWithReader(readerOf(firstBlock, blocks), sectors,
                                             firstBlock > 0 ? readerOf(0, firstBlock) : nullptr);
}

NSError DRDevice::readSound(std::int64_t first, std::uint32_t count, char *out)
{
    return d->drive->readSound(first, count, out);
}

const DriveActivity &DRDevice::activity() const
{
    return d->activity;
}

std::shared_ptr<BlockSink> DRDevice::sinkForBurn(const std::stop_token &cancellation)
{
    d->sink = std::make_shared<DriveSink>(*d->drive, d->options, d->activity, cancellation);
    return d->sink;
}

BlockAddress DRDevice::firstBlock() const
{
    if (d->options.growth)
        return BlockAddress(std::int64_t(d->options.growth->firstBlock));
    const bool adds = d->options.leavesOpen && disc().state == DiscState::Appendable;
    return BlockAddress(adds ? std::int64_t(disc().nextBlock.value_or(0)) : 0);
}

QVariantMap DRDevice::mediaInfo() const
{
    const bool isCD = isCDFamily(d->drive->disc().family);
    return {{DRDeviceMediaClassKey, isCD ? DRDeviceMediaClassCD : DRDeviceMediaClassDVD}};
}

} // namespace Tessaron
