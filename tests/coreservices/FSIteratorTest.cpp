#include "platform/coreservices/FSIterator.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/ForkAttributes.h"
#include "tests/coreservices/LongTree.h"
#include "tests/support/TemporaryTree.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t scanInfo = kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes;

FSRef refOf(const QByteArray &path)
{
    FSRef ref;
    EXPECT_EQ(FSPathMakeRefWithOptions(path, kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr), noErr);
    return ref;
}

/// The names in the order in which the system lists them.
std::vector<std::string> systemListing(const QByteArray &path)
{
    std::vector<std::string> names;
    DIR *const directory = ::opendir(path.constData());
    while (const dirent *const entry = ::readdir(directory)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    ::closedir(directory);
    return names;
}

struct Batches {
    std::vector<std::uint32_t> sizes;
    std::vector<std::string> names;
    OSStatus status = noErr;
};

/// Reads a listing on to its end in batches of 50.
Batches readOn(FSIterator &iterator)
{
    Batches batches;
    std::vector<FSBulkEntry> entries(50);
    while (batches.status == noErr) {
        std::uint32_t actual = 0;
        batches.status = FSGetCatalogInfoBulk(iterator, 50, &actual, scanInfo, entries.data());
        batches.sizes.push_back(actual);
        for (std::uint32_t index = 0; index < actual; ++index)
            batches.names.emplace_back(nameOfFSRef(entries[index].ref).data());
    }
    return batches;
}

class FSIteratorTest : public ::testing::Test
{
protected:
    void makeFiles(const QByteArray &folder, int count) const
    {
        for (int number = 0; number < count; ++number)
            tree.makeFile(folder + "/" + QByteArray::number(number));
    }

    std::shared_ptr<FSIterator> open(const QByteArray &relative) const
    {
        OSStatus status = 1;
        std::shared_ptr<FSIterator> iterator = FSOpenIterator(refOf(tree.path(relative)), &status);
        EXPECT_EQ(status, noErr);
        return iterator;
    }

    const Testing::TemporaryTree tree;
};

} // namespace

TEST_F(FSIteratorTest, bulk_fetches120FilesInThreeBatchesInListingOrder)
{
    makeFiles("folder", 120);
    const Batches batches = readOn(*open("folder"));
    EXPECT_EQ(batches.sizes, (std::vector<std::uint32_t>{50, 50, 20}));
    EXPECT_EQ(batches.names, systemListing(tree.path("folder")));
    EXPECT_EQ(batches.status, errFSNoMoreItems);
}

TEST_F(FSIteratorTest, bulk_endsAtOnce_inAnEmptyFolder)
{
    tree.makeFolder("empty");
    const Batches batches = readOn(*open("empty"));
    EXPECT_EQ(batches.sizes, std::vector<std::uint32_t>{0});
    EXPECT_EQ(batches.status, errFSNoMoreItems);
}

TEST_F(FSIteratorTest, bulk_listsMoreThanOnePieceOfRecords)
{
    for (int number = 0; number < 700; ++number)
        tree.makeFile("folder/" + QByteArray(200, 'n') + QByteArray::number(number));
    const Batches batches = readOn(*open("folder"));
    EXPECT_EQ(batches.names, systemListing(tree.path("folder")));
}

TEST_F(FSIteratorTest, bulk_tellsKindSizesAndIdentity)
{
    tree.makeFile("folder/file", QByteArray(6000, 'x'));
    tree.makeFolder("folder/inner");
    tree.makeSymbolicLink("folder/link", "inner");
    tree.makeFifo("folder/fifo");
    tree.makeFile("folder/caf\xE9");
    tree.makeFile("folder/.DS_Store", "x");
    const std::shared_ptr<FSIterator> iterator = open("folder");
    std::vector<FSBulkEntry> entries(50);
    std::uint32_t actual = 0;
    EXPECT_EQ(FSGetCatalogInfoBulk(*iterator, 50, &actual, scanInfo, entries.data()), errFSNoMoreItems);
    ASSERT_EQ(actual, 6u);
    for (std::uint32_t index = 0; index < actual; ++index) {
        const FSBulkEntry &entry = entries[index];
        const QByteArray name = nameOfFSRef(entry.ref).toByteArray();
        EXPECT_EQ(entry.ref, refOf(tree.path("folder/" + name))) << name.constData();
        EXPECT_EQ((entry.info.nodeFlags & kFSNodeIsDirectoryMask) != 0, name == "inner");
        EXPECT_EQ(entry.info.dataLogicalSize == 6000, name == "file");
        EXPECT_EQ(entry.info.rsrcLogicalSize, 0u);
    }
}

TEST_F(FSIteratorTest, bulk_findsResourceForks)
{
    const QByteArray path = tree.makeFile("folder/forked", "data");
    tree.makeFile("folder/plain", "data");
    if (::setxattr(path.constData(), resourceForkAttribute, "resource", 8, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    const std::shared_ptr<FSIterator> iterator = open("folder");
    std::vector<FSBulkEntry> entries(50);
    std::uint32_t actual = 0;
    EXPECT_EQ(FSGetCatalogInfoBulk(*iterator, 50, &actual, scanInfo, entries.data()), errFSNoMoreItems);
    ASSERT_EQ(actual, 2u);
    for (std::uint32_t index = 0; index < actual; ++index) {
        const bool isForked = nameOfFSRef(entries[index].ref) == QByteArrayView("forked");
        EXPECT_EQ(entries[index].info.rsrcLogicalSize, isForked ? 8u : 0u);
    }
}

TEST_F(FSIteratorTest, bulk_leavesOutWhatVanishesWhileItIsListed)
{
    makeFiles("folder", 100);
    const std::shared_ptr<FSIterator> iterator = open("folder");
    std::vector<FSBulkEntry> entries(50);
    std::uint32_t actual = 0;
    ASSERT_EQ(FSGetCatalogInfoBulk(*iterator, 10, &actual, scanInfo, entries.data()), noErr);
    ASSERT_EQ(actual, 10u);
    std::set<std::string> seen;
    for (std::uint32_t index = 0; index < actual; ++index)
        seen.insert(nameOfFSRef(entries[index].ref).data());
    int removed = 0;
    for (int number = 0; number < 100; number += 2) {
        if (!seen.contains(std::to_string(number)) && ++removed > 0)
            tree.remove("folder/" + QByteArray::number(number));
    }
    const Batches rest = readOn(*iterator);
    EXPECT_EQ(rest.names.size(), 90u - static_cast<std::size_t>(removed));
    EXPECT_EQ(rest.status, errFSNoMoreItems);
}

TEST_F(FSIteratorTest, bulk_reportsAFolderThatMayBeListedButNotSearched)
{
    makeFiles("folder", 3);
    tree.setMode("", 0777);
    tree.setMode("folder", 0444);
    const FSRef ref = refOf(tree.path("folder"));
    {
        const Testing::WithoutRootRights rights;
        OSStatus status = noErr;
        const std::shared_ptr<FSIterator> iterator = FSOpenIterator(ref, &status);
        ASSERT_TRUE(iterator);
        const Batches batches = readOn(*iterator);
        EXPECT_EQ(batches.sizes, std::vector<std::uint32_t>{0});
        EXPECT_EQ(batches.status, afpAccessDenied);
    }
    tree.setMode("folder", 0755);
}

TEST_F(FSIteratorTest, open_fails_forWhatIsNoReadableFolder)
{
    tree.makeFile("file");
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "folder");
    tree.makeFolder("closed");
    OSStatus status = noErr;
    EXPECT_FALSE(FSOpenIterator(refOf(tree.path("file")), &status));
    EXPECT_NE(status, noErr);
    EXPECT_FALSE(FSOpenIterator(refOf(tree.path("link")), &status));
    EXPECT_NE(status, noErr);
    EXPECT_FALSE(FSOpenIterator(FSRef(), &status));
    EXPECT_EQ(status, fnfErr);
    const FSRef gone = refOf(tree.makeFolder("gone"));
    tree.remove("gone");
    EXPECT_FALSE(FSOpenIterator(gone, &status));
    EXPECT_EQ(status, fnfErr);
    const FSRef closed = refOf(tree.path("closed"));
    tree.setMode("", 0777);
    tree.setMode("closed", 0);
    {
        const Testing::WithoutRootRights rights;
        EXPECT_FALSE(FSOpenIterator(closed, &status));
        EXPECT_EQ(status, afpAccessDenied);
    }
    tree.setMode("closed", 0755);
}

TEST_F(FSIteratorTest, open_findsTheFolder_afterARename)
{
    makeFiles("folder", 3);
    const FSRef ref = refOf(tree.path("folder"));
    ASSERT_EQ(std::rename(tree.path("folder").constData(), tree.path("renamed").constData()), 0);
    tree.makeFolder("folder");
    OSStatus status = noErr;
    const std::shared_ptr<FSIterator> iterator = FSOpenIterator(ref, &status);
    ASSERT_TRUE(iterator);
    std::vector<FSBulkEntry> entries(50);
    std::uint32_t actual = 0;
    EXPECT_EQ(FSGetCatalogInfoBulk(*iterator, 50, &actual, scanInfo, entries.data()), errFSNoMoreItems);
    ASSERT_EQ(actual, 3u);
    EXPECT_TRUE(lastKnownPath(entries[0].ref).startsWith(tree.path("renamed/")));
}

TEST_F(FSIteratorTest, releaseDescriptor_changesNothingInWhatIsListed)
{
    makeFiles("folder", 900);
    const std::shared_ptr<FSIterator> iterator = open("folder");
    std::vector<FSBulkEntry> entries(50);
    std::uint32_t actual = 0;
    std::vector<std::string> names;
    OSStatus status = noErr;
    while (status == noErr) {
        iterator->releaseDescriptor();
        status = FSGetCatalogInfoBulk(*iterator, 50, &actual, scanInfo, entries.data());
        for (std::uint32_t index = 0; index < actual; ++index)
            names.emplace_back(nameOfFSRef(entries[index].ref).data());
        iterator->releaseDescriptor();
    }
    EXPECT_EQ(status, errFSNoMoreItems);
    EXPECT_EQ(names, systemListing(tree.path("folder")));
}

TEST_F(FSIteratorTest, open_reachesFoldersBelowEachOther_atAnyDepth)
{
    const QByteArray name(250, 'd');
    ASSERT_FALSE(Testing::makeDeepFolders(tree.path(), name, 40).isEmpty());
    FSRef folder = refOf(tree.path());
    std::shared_ptr<FSIterator> above;
    std::vector<FSBulkEntry> entries(50);
    for (int level = 0; level < 40; ++level) {
        OSStatus status = noErr;
        // Every other folder is opened by its path alone, which is soon longer than the system takes at once.
        above = openIteratorBelow(folder, level % 2 == 0 ? above.get() : nullptr, &status);
        ASSERT_TRUE(above) << level;
        std::uint32_t actual = 0;
        (void)FSGetCatalogInfoBulk(*above, 50, &actual, scanInfo, entries.data());
        ASSERT_EQ(actual, 1u);
        folder = entries[0].ref;
    }
    EXPECT_GT(lastKnownPath(folder).size(), 10000);
    Testing::removeDeepFolders(tree.path(), name, 40);
}

} // namespace Tessaron
