#include "platform/coreservices/FSRef.h"

#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRefAccess.h"
#include "tests/coreservices/LongTree.h"
#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

FSRef refOf(const QByteArray &path)
{
    FSRef ref;
    EXPECT_EQ(FSPathMakeRefWithOptions(path, kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr), noErr);
    return ref;
}

QByteArray pathOf(const FSRef &ref)
{
    char buffer[1024];
    return FSRefMakePath(&ref, buffer, sizeof buffer) == noErr ? QByteArray(buffer) : QByteArray("<error>");
}

} // namespace

TEST(FSRef, FSPathMakeRef_makesAReferenceThatYieldsThePath)
{
    const Testing::TemporaryTree tree;
    const QByteArray path = tree.makeFile("folder/file.txt", "x");
    bool isDirectory = true;
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(path, &ref, &isDirectory), noErr);
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(pathOf(ref), path);
    EXPECT_EQ(lastKnownPath(ref), path);
    EXPECT_EQ(nameOfFSRef(ref), "file.txt");
    ASSERT_EQ(FSPathMakeRef(tree.path("folder"), &ref, &isDirectory), noErr);
    EXPECT_TRUE(isDirectory);
}

TEST(FSRef, FSPathMakeRef_givesEqualReferences_forSpellingsOfOnePath)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("folder/file.txt");
    EXPECT_EQ(refOf(tree.path("folder/file.txt")), refOf(tree.path("folder//.././folder/file.txt")));
    EXPECT_NE(refOf(tree.path("folder/file.txt")), refOf(tree.path("folder")));
}

TEST(FSRef, FSPathMakeRef_leavesTheOutputsAlone_onFailure)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("file");
    FSRef ref;
    ref.inode = 42;
    bool isDirectory = true;
    EXPECT_EQ(FSPathMakeRef(tree.path("missing"), &ref, &isDirectory), fnfErr);
    EXPECT_EQ(FSPathMakeRef(QByteArray(), &ref, &isDirectory), fnfErr);
    EXPECT_NE(FSPathMakeRef(tree.path("file/below"), &ref, &isDirectory), noErr);
    EXPECT_NE(FSPathMakeRef(tree.path(QByteArray(300, 'n')), &ref, &isDirectory), noErr);
    EXPECT_EQ(FSPathMakeRef(tree.path("file"), nullptr, &isDirectory), paramErr);
    EXPECT_EQ(ref.inode, 42u);
    EXPECT_TRUE(isDirectory);
}

TEST(FSRef, FSPathMakeRef_isDeniedAccess_belowAFolderThatMayNotBeSearched)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("closed/file");
    tree.setMode("closed", 0);
    FSRef ref;
    {
        const Testing::WithoutRootRights rights;
        EXPECT_EQ(FSPathMakeRef(tree.path("closed/file"), &ref, nullptr), afpAccessDenied);
    }
    tree.setMode("closed", 0700);
}

TEST(FSRef, FSPathMakeRef_meansTheLinkOrItsTarget_asTheOptionSays)
{
    const Testing::TemporaryTree tree;
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "folder");
    tree.makeSymbolicLink("broken", "nowhere");
    FSRef ref;
    bool isDirectory = false;
    ASSERT_EQ(FSPathMakeRef(tree.path("link"), &ref, &isDirectory), noErr);
    EXPECT_TRUE(isDirectory);
    EXPECT_EQ(pathOf(ref), tree.path("folder"));
    ASSERT_EQ(FSPathMakeRefWithOptions(tree.path("link"), kFSPathMakeRefDoNotFollowLeafSymlink, &ref, &isDirectory),
              noErr);
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(pathOf(ref), tree.path("link"));
    EXPECT_EQ(FSPathMakeRef(tree.path("broken"), &ref, nullptr), fnfErr);
    EXPECT_EQ(pathOf(refOf(tree.path("broken"))), tree.path("broken"));
}

TEST(FSRef, names_keepTheirBytes_whenTheyAreNotUtf8OrVeryLong)
{
    const Testing::TemporaryTree tree;
    for (const QByteArray &name : {QByteArray("caf\xE9.txt"), QByteArray(255, 'n'), QByteArray("line\nend\r\x01"),
                                   QByteArray("\xED\xB2\x80 \xFF\xFE")}) {
        const FSRef ref = refOf(tree.makeFile(name, "x"));
        EXPECT_EQ(pathOf(ref), tree.path(name));
        EXPECT_EQ(nameOfFSRef(ref), name);
    }
}

TEST(FSRef, longPaths_work_beyondTheSystemsLimit)
{
    const Testing::TemporaryTree tree;
    const QByteArray name(200, 'd');
    const QByteArray path = Testing::makeDeepFolders(tree.path(), name, 30);
    ASSERT_GT(path.size(), 6000);
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(path, &ref, nullptr), noErr);
    EXPECT_EQ(lastKnownPath(ref), path);
    char buffer[1024];
    EXPECT_EQ(FSRefMakePath(&ref, buffer, sizeof buffer), bdNamErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr), noErr);
    struct statx facts;
    ASSERT_EQ(statFSRef(ref, STATX_SIZE, &facts), 0);
    EXPECT_EQ(facts.stx_size, 4u);
    int error = 0;
    const UniqueDescriptor file = openFSRef(ref, O_RDONLY, &error);
    char contents[5] = {};
    EXPECT_EQ(::read(file.get(), contents, 4), 4);
    EXPECT_STREQ(contents, "deep");
    Testing::removeDeepFolders(tree.path(), name, 30);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr), fnfErr);
}

TEST(FSRef, FSRefMakePath_needsRoomForTheTerminator)
{
    const Testing::TemporaryTree tree;
    const QByteArray path = tree.makeFile("file");
    const FSRef ref = refOf(path);
    QByteArray buffer(path.size() + 1, '?');
    EXPECT_EQ(FSRefMakePath(&ref, buffer.data(), static_cast<std::uint32_t>(path.size())), bdNamErr);
    EXPECT_EQ(FSRefMakePath(&ref, buffer.data(), static_cast<std::uint32_t>(path.size()) + 1), noErr);
    EXPECT_STREQ(buffer.constData(), path.constData());
}

TEST(FSRef, theZeroReference_refersToNothing)
{
    const FSRef zero;
    char buffer[1024];
    EXPECT_EQ(FSRefMakePath(&zero, buffer, sizeof buffer), fnfErr);
    EXPECT_TRUE(lastKnownPath(zero).isEmpty());
    EXPECT_TRUE(nameOfFSRef(zero).isEmpty());
    EXPECT_EQ(parentNodeOfFSRef(zero), 0u);
    int error = 0;
    EXPECT_FALSE(openFSRef(zero, O_RDONLY, &error));
    EXPECT_EQ(error, ENOENT);
    QByteArray target;
    EXPECT_EQ(readLinkTarget(zero, &target), ENOENT);
}

TEST(FSRef, aReferenceOfRandomBytes_isInvalidAndHarmless)
{
    FSRef garbage;
    std::memset(static_cast<void *>(&garbage), 0xA5, sizeof garbage);
    EXPECT_NE(FSGetCatalogInfo(&garbage, kFSCatInfoNone, nullptr), noErr);
    EXPECT_TRUE(lastKnownPath(garbage).isEmpty());
}

TEST(FSRef, theRootFolder_hasTheNameOfASlash)
{
    const FSRef root = refOf("/");
    EXPECT_EQ(nameOfFSRef(root), "/");
    EXPECT_EQ(pathOf(root), "/");
    EXPECT_EQ(parentNodeOfFSRef(root), 0u);
    FSRef child;
    ASSERT_EQ(FSMakeFSRefForChild(root, "tmp", &child), noErr);
    EXPECT_EQ(pathOf(child), "/tmp");
}

TEST(FSRef, FSMakeFSRefForChild_findsOnlyWhatIsThere)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("folder/Icon\r");
    const FSRef folder = refOf(tree.path("folder"));
    FSRef child;
    ASSERT_EQ(FSMakeFSRefForChild(folder, "Icon\r", &child), noErr);
    EXPECT_EQ(pathOf(child), tree.path("folder/Icon\r"));
    EXPECT_EQ(parentNodeOfFSRef(child), folder.node);
    EXPECT_EQ(FSMakeFSRefForChild(folder, "missing", &child), fnfErr);
    EXPECT_EQ(FSMakeFSRefForChild(folder, "..", &child), paramErr);
    EXPECT_EQ(FSMakeFSRefForChild(folder, "a/b", &child), paramErr);
    EXPECT_EQ(FSMakeFSRefForChild(folder, "", &child), paramErr);
}

TEST(FSRef, readLinkTarget_readsTargetsOfAnyLength)
{
    const Testing::TemporaryTree tree;
    const QByteArray target(4000, 't');
    tree.makeSymbolicLink("link", target);
    QByteArray read;
    EXPECT_EQ(readLinkTarget(refOf(tree.path("link")), &read), 0);
    EXPECT_EQ(read, target);
    tree.makeFile("file");
    EXPECT_EQ(readLinkTarget(refOf(tree.path("file")), &read), EINVAL);
}

TEST(FSRef, references_mayBeMadeAndUsedByManyThreadsAtOnce)
{
    const Testing::TemporaryTree tree;
    for (int number = 0; number < 50; ++number)
        tree.makeFile("folder/" + QByteArray::number(number));
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int number = 0; number < 50; ++number) {
                    const QByteArray path = tree.path("folder/" + QByteArray::number(number));
                    FSRef ref;
                    if (FSPathMakeRef(path, &ref, nullptr) != noErr || lastKnownPath(ref) != path
                        || FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr) != noErr)
                        ++wrong;
                }
            });
        }
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace Tessaron
