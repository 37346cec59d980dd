#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSIterator.h"
#include "tests/support/MountTest.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <ostream>
#include <string>

namespace Tessaron
{

namespace
{

/// A volume as people bring them along, with how it is made and mounted; `$1` is a folder to work in.
struct ForeignVolume {
    const char *name;
    const char *commands;

    friend void PrintTo(const ForeignVolume &volume, std::ostream *out) { *out << volume.name; }
};

/// Files on filesystems that keep no stable inode numbers, or no times of birth.
class FSRefForeignVolumes : public Testing::MountTest, public ::testing::WithParamInterface<ForeignVolume>
{
protected:
    /// Runs the steps, which get the path of the mounted volume.
    void runOnVolume(const std::function<int(const QByteArray &)> &steps) const
    {
        runApart([&] {
            const std::string command =
                "set -- '" + tree.path().toStdString() + "'; { " + GetParam().commands + "; } >/dev/null 2>&1";
            if (std::system(command.c_str()) != 0)
                return mayNotMount;
            const QByteArray volume = tree.path("volume");
            const int failure = steps(volume);
            // A filesystem in user space is a process, which ends with its mount.
            return ::umount2(volume.constData(), MNT_DETACH) == 0 ? failure : 99;
        });
    }

    static bool write(const QByteArray &path, const char *contents)
    {
        const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const auto length = static_cast<ssize_t>(std::char_traits<char>::length(contents));
        return ::write(file, contents, static_cast<std::size_t>(length)) == length && ::close(file) == 0;
    }

    static std::uint64_t sizeOf(const FSRef &ref)
    {
        FSCatalogInfo info;
        return FSGetCatalogInfo(&ref, kFSCatInfoDataSizes, &info) == noErr ? info.dataLogicalSize : 0;
    }
};

TEST_P(FSRefForeignVolumes, fileSavedByWriteAndRename_isFoundByItsPath)
{
    runOnVolume([](const QByteArray &volume) {
        if (!write(volume + "/file", "old"))
            return 1;
        FSRef ref;
        if (FSPathMakeRef(volume + "/file", &ref, nullptr) != noErr)
            return 2;
        for (const char *const contents : {"saved", "saved again"}) {
            if (!write(volume + "/file.new", contents)
                || ::rename((volume + "/file.new").constData(), (volume + "/file").constData()) != 0)
                return 3;
            if (sizeOf(ref) != std::char_traits<char>::length(contents))
                return 4;
        }
        return 0;
    });
}

TEST_P(FSRefForeignVolumes, listedFile_isFound_whenItIsSavedByWriteAndRename)
{
    runOnVolume([](const QByteArray &volume) {
        if (!write(volume + "/file", "old"))
            return 1;
        FSRef folder;
        OSStatus status = FSPathMakeRef(volume, &folder, nullptr);
        const std::shared_ptr<FSIterator> iterator = status == noErr ? FSOpenIterator(folder, &status) : nullptr;
        std::array<FSBulkEntry, 4> entries;
        std::uint32_t count = 0;
        if (!iterator)
            return 2;
        (void)FSGetCatalogInfoBulk(*iterator, entries.size(), &count, kFSCatInfoDataSizes, entries.data());
        if (count != 1)
            return 3;
        if (!write(volume + "/file.new", "saved")
            || ::rename((volume + "/file.new").constData(), (volume + "/file").constData()) != 0)
            return 4;
        return sizeOf(entries[0].ref) == 5 ? 0 : 5;
    });
}

TEST_P(FSRefForeignVolumes, otherFileInItsPlace_isNotFound_onceItIsRemovedThere)
{
    runOnVolume([](const QByteArray &volume) {
        if (!write(volume + "/file", "old"))
            return 1;
        FSRef ref;
        if (FSPathMakeRef(volume + "/file", &ref, nullptr) != noErr)
            return 2;
        // The newcomer may get the inode of the removed file; it is elsewhere, so it is not meant.
        if (::unlink((volume + "/file").constData()) != 0 || !write(volume + "/another", "something else"))
            return 3;
        return sizeOf(ref) == 0 ? 0 : 4;
    });
}

// A kernel without these filesystems mounts them through programs in user space.
constexpr ForeignVolume foreignVolumes[] = {
    {"vfat",
     "truncate -s 64M \"$1/disk\" && mkfs.vfat \"$1/disk\" && mkdir \"$1/volume\" && "
     "{ mount -o loop \"$1/disk\" \"$1/volume\" || fusefat -o rw+ \"$1/disk\" \"$1/volume\"; }"},
    {"exfat",
     "truncate -s 64M \"$1/disk\" && mkfs.exfat \"$1/disk\" && mkdir \"$1/volume\" && "
     "{ mount -o loop -t exfat \"$1/disk\" \"$1/volume\" || "
     "{ device=$(losetup --find --show \"$1/disk\") && mount.exfat-fuse \"$device\" \"$1/volume\" && "
     // Detaching a device in use has the kernel detach it once it is free.
     "losetup --detach \"$device\"; }; }"},
    {"fuse", "mkdir \"$1/folder\" \"$1/volume\" && bindfs \"$1/folder\" \"$1/volume\""},
};

INSTANTIATE_TEST_SUITE_P(Volumes, FSRefForeignVolumes, ::testing::ValuesIn(foreignVolumes),
                         [](const auto &instance) { return std::string(instance.param.name); });

} // namespace

} // namespace Tessaron
