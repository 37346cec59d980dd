#include "platform/coreservices/FSForks.h"
#include "platform/coreservices/ForkAttributes.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/PathHelpers.h>

#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

// As a program sees them that knows their symbols alone: without the plain names it does not link.
extern "C" {
bool FSRefValid(const Tessaron::FSRef *ref);
Tessaron::OSErr FSGetFinderInfo(const Tessaron::FSRef *ref, Tessaron::FileInfo *finderInfo,
                                Tessaron::ExtendedFileInfo *extendedFinderInfo, bool *isDirectory);
Tessaron::OSErr FSGetTotalForkSizes(const Tessaron::FSRef *ref, std::uint64_t *totalLogicalSize,
                                    std::uint64_t *totalPhysicalSize, std::uint64_t *forkCount);
QByteArray AliasDataFromFSRef(const Tessaron::FSRef *ref);
Tessaron::OSErr FSRefFromAliasData(const QByteArray &data, Tessaron::FSRef *ref);
}

namespace
{

/// How many calls of statx(2) still succeed before all of them fail with EIO; negative: none fails.
int statCallsThatSucceed = -1;

} // namespace

/// In the place of the C library's.
extern "C" int statx(int folder, const char *path, int flags, unsigned int mask, struct statx *result) noexcept
{
    if (statCallsThatSucceed == 0) {
        errno = EIO;
        return -1;
    }
    if (statCallsThatSucceed > 0)
        --statCallsThatSucceed;
    return static_cast<int>(::syscall(SYS_statx, folder, path, flags, mask, result));
}

namespace Tessaron
{

namespace
{

class FileReferenceFunctions : public ::testing::Test
{
protected:
    FSRef ref(const QByteArray &relative) const { return fsRef(tree.pathText(relative)); }

    const Testing::TemporaryTree tree;
};

} // namespace

TEST_F(FileReferenceFunctions, symbols_areThePlainNames)
{
    tree.makeFile("file", "x");
    const FSRef file = ref("file");
    EXPECT_TRUE(::FSRefValid(&file));
    bool isDirectory = true;
    EXPECT_EQ(::FSGetFinderInfo(&file, nullptr, nullptr, &isDirectory), noErr);
    EXPECT_FALSE(isDirectory);
    std::uint64_t length = 0;
    EXPECT_EQ(::FSGetTotalForkSizes(&file, &length, nullptr, nullptr), noErr);
    EXPECT_EQ(length, 1u);
    FSRef found;
    EXPECT_EQ(::FSRefFromAliasData(::AliasDataFromFSRef(&file), &found), noErr);
    EXPECT_EQ(found, file);
}

TEST_F(FileReferenceFunctions, FSRefValid_isTrue_whileTheFileExists)
{
    tree.makeFile("file");
    const FSRef file = ref("file");
    EXPECT_TRUE(FSRefValid(&file));
    tree.remove("file");
    EXPECT_FALSE(FSRefValid(&file));
    EXPECT_FALSE(FSRefValid(nullptr));
    const FSRef zero;
    EXPECT_FALSE(FSRefValid(&zero));
}

TEST_F(FileReferenceFunctions, FSGetFinderInfo_fillsWhatIsAskedFor)
{
    tree.makeFile("file");
    tree.makeFolder("folder");
    FileInfo info;
    ExtendedFileInfo extended;
    bool isDirectory = true;
    const FSRef file = ref("file");
    const FSRef folder = ref("folder");
    EXPECT_EQ(FSGetFinderInfo(&file, nullptr, nullptr, &isDirectory), noErr);
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(FSGetFinderInfo(&folder, nullptr, nullptr, &isDirectory), noErr);
    EXPECT_TRUE(isDirectory);
    EXPECT_EQ(FSGetFinderInfo(&file, nullptr, nullptr, nullptr), noErr);
    QByteArray bytes(32, '\1');
    bytes.replace(16, 16, QByteArray(16, '\2'));
    if (::setxattr(tree.path("file").constData(), finderInfoAttribute, bytes.constData(), 32, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    EXPECT_EQ(FSGetFinderInfo(&file, &info, nullptr, nullptr), noErr);
    EXPECT_EQ(info.bytes[15], 1);
    EXPECT_EQ(FSGetFinderInfo(&file, nullptr, &extended, nullptr), noErr);
    EXPECT_EQ(extended.bytes[0], 2);
}

TEST_F(FileReferenceFunctions, FSGetFinderInfo_givesAllItsBytesInTheirPlaces)
{
    tree.makeFile("file");
    tree.makeFile("short");
    QByteArray bytes(32, '\0');
    for (int index = 0; index < 32; ++index)
        bytes[index] = static_cast<char>(100 + index);
    if (::setxattr(tree.path("file").constData(), finderInfoAttribute, bytes.constData(), 32, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    ASSERT_EQ(::setxattr(tree.path("short").constData(), finderInfoAttribute, bytes.constData(), 20, 0), 0);
    for (const char *const name : {"file", "short"}) {
        const FSRef file = ref(name);
        const int stored = QByteArray(name) == "file" ? 32 : 20;
        FileInfo info;
        ExtendedFileInfo extended;
        ASSERT_EQ(FSGetFinderInfo(&file, &info, &extended, nullptr), noErr);
        for (int index = 0; index < 32; ++index) {
            const int got = index < 16 ? info.bytes[std::size_t(index)] : extended.bytes[std::size_t(index) - 16];
            EXPECT_EQ(got, index < stored ? 100 + index : 0) << name << ' ' << index;
        }
    }
}

TEST_F(FileReferenceFunctions, FSGetFinderInfo_writesNothing_onFailure)
{
    tree.makeFile("file");
    const FSRef gone = ref("file");
    tree.remove("file");
    FileInfo info;
    info.bytes.fill(7);
    bool isDirectory = true;
    EXPECT_EQ(FSGetFinderInfo(&gone, &info, nullptr, &isDirectory), fnfErr);
    EXPECT_EQ(info.bytes[0], 7);
    EXPECT_TRUE(isDirectory);
}

TEST_F(FileReferenceFunctions, FSGetTotalForkSizes_countsOneFork_inAFileWithoutResourceFork)
{
    tree.makeFile("file", QByteArray(5000, 'x'));
    const FSRef file = ref("file");
    std::uint64_t logical = 1;
    std::uint64_t physical = 1;
    std::uint64_t forks = 7;
    EXPECT_EQ(FSGetTotalForkSizes(&file, &logical, &physical, &forks), noErr);
    EXPECT_EQ(logical, 5000u);
    EXPECT_GE(physical, 5000u);
    EXPECT_EQ(forks, 1u);
    EXPECT_EQ(FSGetTotalForkSizes(&file, nullptr, nullptr, nullptr), noErr);
}

TEST_F(FileReferenceFunctions, FSGetTotalForkSizes_addsTheResourceFork)
{
    tree.makeFile("file", "data");
    if (::setxattr(tree.path("file").constData(), resourceForkAttribute, "fork", 4, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    const FSRef file = ref("file");
    std::uint64_t logical = 0;
    std::uint64_t forks = 0;
    EXPECT_EQ(FSGetTotalForkSizes(&file, &logical, nullptr, &forks), noErr);
    EXPECT_EQ(logical, 8u);
    EXPECT_EQ(forks, 2u);
}

TEST_F(FileReferenceFunctions, FSGetTotalForkSizes_countsTheAllocatedBytesOfBothForks)
{
    tree.makeFile("file", QByteArray(9000, 'x'));
    const QByteArray fork(3000, 'r');
    if (::setxattr(tree.path("file").constData(), resourceForkAttribute, fork.constData(), 3000, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes of that size";
    struct stat facts = {};
    ASSERT_EQ(::stat(tree.path("file").constData(), &facts), 0);
    struct statvfs volume = {};
    ASSERT_EQ(::statvfs(tree.path("file").constData(), &volume), 0);
    const FSRef file = ref("file");
    std::uint64_t logical = 0;
    std::uint64_t physical = 0;
    EXPECT_EQ(FSGetTotalForkSizes(&file, &logical, &physical, nullptr), noErr);
    EXPECT_EQ(logical, 12000u);
    const auto dataAllocated = KRFileReference::initWithFSRef(file)->dataPhysicalSize();
    const std::uint64_t forkAllocated = (3000 + volume.f_bsize - 1) / volume.f_bsize * volume.f_bsize;
    EXPECT_EQ(physical, dataAllocated + forkAllocated);
    EXPECT_EQ(dataAllocated, static_cast<std::uint64_t>(facts.st_blocks) * 512);
}

TEST_F(FileReferenceFunctions, aWalkThroughForks_endsWithTheFailure_whenTheFileVanishesMidway)
{
    tree.makeFile("file", "data");
    if (::setxattr(tree.path("file").constData(), resourceForkAttribute, "fork", 4, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    const FSRef file = ref("file");
    FSForkPosition position;
    FSForkInfo fork;
    ASSERT_EQ(FSIterateForks(&file, &position, &fork), noErr);
    EXPECT_EQ(fork.logicalSize, 4u);
    tree.remove("file");
    EXPECT_EQ(FSIterateForks(&file, &position, &fork), fnfErr);
}

TEST_F(FileReferenceFunctions, FSGetTotalForkSizes_leavesTheSumsSoFar_whenItFailsMidway)
{
    const FSRef file = fsRef(QString::fromUtf8(tree.makeFile("file", QByteArray(5000, 'x'))));
    std::uint64_t logical = 1;
    std::uint64_t physical = 1;
    std::uint64_t forks = 7;
    statCallsThatSucceed = 1; // the data fork is told, and then the disk fails
    EXPECT_EQ(FSGetTotalForkSizes(&file, &logical, &physical, &forks), ioErr);
    statCallsThatSucceed = -1;
    EXPECT_EQ(logical, 5000u);
    EXPECT_GE(physical, 5000u);
    EXPECT_EQ(forks, 1u);
}

TEST_F(FileReferenceFunctions, FSGetTotalForkSizes_findsNoFork_inAFolder)
{
    tree.makeFolder("folder");
    const FSRef folder = ref("folder");
    std::uint64_t logical = 1;
    std::uint64_t physical = 1;
    std::uint64_t forks = 1;
    EXPECT_EQ(FSGetTotalForkSizes(&folder, &logical, &physical, &forks), noErr);
    EXPECT_EQ(logical + physical + forks, 0u);
}

TEST_F(FileReferenceFunctions, FSGetTotalForkSizes_zeroesTheOutputs_whenTheFileIsGone)
{
    tree.makeFile("file", "data");
    const FSRef gone = ref("file");
    tree.remove("file");
    std::uint64_t logical = 1;
    std::uint64_t physical = 1;
    std::uint64_t forks = 1;
    EXPECT_EQ(FSGetTotalForkSizes(&gone, &logical, &physical, &forks), fnfErr);
    EXPECT_EQ(logical + physical + forks, 0u);
}

TEST_F(FileReferenceFunctions, aliasData_leadsBackToTheFile_afterARename)
{
    tree.makeFile("file", "x");
    const FSRef file = ref("file");
    const QByteArray data = AliasDataFromFSRef(&file);
    ASSERT_FALSE(data.isNull());
    ASSERT_EQ(std::rename(tree.path("file").constData(), tree.path("renamed").constData()), 0);
    FSRef found;
    EXPECT_EQ(FSRefFromAliasData(data, &found), noErr);
    EXPECT_EQ(stringWithFSRef(&found), tree.pathText("renamed"));
}

TEST_F(FileReferenceFunctions, FSRefFromAliasData_hasAStatusOfItsOwnForNoData)
{
    FSRef untouched;
    untouched.inode = 42;
    EXPECT_EQ(FSRefFromAliasData(QByteArray(), &untouched), 1);
    EXPECT_EQ(FSRefFromAliasData(QByteArray(""), &untouched), paramErr);
    EXPECT_EQ(FSRefFromAliasData("no alias", &untouched), paramErr);
    EXPECT_EQ(untouched.inode, 42u);
}

TEST_F(FileReferenceFunctions, AliasDataFromFSRef_isNull_whenTheFileIsGone)
{
    tree.makeFile("file");
    const FSRef gone = ref("file");
    tree.remove("file");
    EXPECT_TRUE(AliasDataFromFSRef(&gone).isNull());
    EXPECT_TRUE(AliasDataFromFSRef(nullptr).isNull());
}

} // namespace Tessaron
