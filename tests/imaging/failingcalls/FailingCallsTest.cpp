// Every system call that brings an image to the disk fails once: the failure is reported with the file's name and what
// to do, or got over; an image that is only half made never stands under the final name.

#include "tests/imaging/failingcalls/FailingCalls.h"

#include "imaging/ImageFinisher.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/imaging/trackwriter/RecordingDelegate.h"
#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>

namespace Tessaron::Testing
{

namespace
{

constexpr int mostCalls = 1000; // a run that makes more would never end this test

/// The names of the calls that were made to fail, to see that those meant were among them.
using CallNames = std::set<QByteArray>;

/// The errors that a call fails with in turn.
constexpr int failures[] = {EIO, ENOSPC};

void expectNameAndRemedy(const NSError &error, const TemporaryTree &tree, const QByteArray &call)
{
    EXPECT_TRUE(error.filePath().startsWith(tree.pathText())) << call.constData();
    EXPECT_TRUE(error.localizedDescription().contains(error.filePath())) << call.constData();
    EXPECT_FALSE(error.localizedRecoverySuggestion().isEmpty()) << call.constData();
}

/// Finishes an image and an empty cue sheet under temporary names, which are called disc.bin and disc.cue then. The
/// call with the number fails; `*failed` is its name.
NSError finishStaged(const TemporaryTree &tree, int number, QByteArray *failed)
{
    const UniqueDescriptor image(
        ::open(tree.makeFile("image.part", QByteArray(2048, 'x')).constData(), O_RDWR | O_CLOEXEC));
    const UniqueDescriptor sheet(::open(tree.makeFile("sheet.part").constData(), O_RDWR | O_CLOEXEC));
    const UniqueDescriptor folder(::open(tree.path().constData(), O_PATH | O_CLOEXEC));
    UnfinishedImage unfinished;
    unfinished.path = tree.path("disc.bin");
    unfinished.descriptor = image.get();
    unfinished.cueSheet = sheet.get();
    unfinished.folder = folder.get();
    unfinished.giveNames = [&] {
        EXPECT_EQ(std::rename(tree.path("image.part").constData(), tree.path("disc.bin").constData()), 0);
        EXPECT_EQ(std::rename(tree.path("sheet.part").constData(), tree.path("disc.cue").constData()), 0);
        return 0;
    };
    const ImageFinisher finisher(TessaronDiscImageFormatBIN, contentsOfPlainImage(2048));
    const FailingCall failing(tree.path(), number, failures[number % 2], FailingCall::Folders::Count);
    NSError error = finisher.finish(unfinished);
    *failed = failing.failed();
    return error;
}

/// Lets each call fail in turn while a folder is written into a file of the length. Gives the names of the calls.
CallNames failEachCallOfTrackWriter(const TemporaryTree &tree, qint64 lengthBefore)
{
    QByteArray whole;
    CallNames names;
    for (int number = 0; number < mostCalls; ++number) {
        if (tree.exists("image"))
            tree.remove("image");
        tree.makeSparseFile("image", lengthBefore);
        const auto writer = KRTrackWriter::trackWriterWithTrack(
            DRTrack::trackForRootFolder(DRFolder::folderWithPath(tree.pathText("source"))), tree.pathText("image"));
        RecordingDelegate delegate;
        const FailingCall failing(tree.path(), number, failures[number % 2], FailingCall::Folders::DoNotCount);
        if (const NSError error = writer->writeTrackAndNotifyDelegate(delegate.callbacks())) {
            EXPECT_EQ(error,
                      NSError(NSOSStatusErrorDomain, fileOpenErr, {{NSFilePathErrorKey, tree.pathText("image")}}));
            names.insert(failing.failed());
            continue;
        }
        delegate.waitForEnd();
        const bool isWritten = delegate.heard.last() == QStringLiteral("end");
        if (number == 0)
            whole = tree.contents("image");
        EXPECT_EQ(isWritten, tree.exists("image")) << number << failing.failed().constData();
        if (isWritten) {
            EXPECT_TRUE(tree.contents("image") == whole) << number << failing.failed().constData();
        } else {
            EXPECT_EQ(delegate.heard.last(), QStringLiteral("failure"));
            const QString reason = delegate.error.localizedFailureReason();
            EXPECT_TRUE(reason.contains(tree.pathText("image"))) << reason.toStdString();
            EXPECT_TRUE(reason.contains(QStringLiteral("another"))) << "what to do: " << reason.toStdString();
        }
        if (number > 0 && failing.failed().isEmpty())
            return names;
        names.insert(failing.failed());
    }
    ADD_FAILURE() << "too many calls";
    return names;
}

} // namespace

TEST(FailingCalls, trackWriter_reportsOrGetsOverEachFailure_andLeavesNoHalfImage)
{
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    const TemporaryTree tree;
    tree.makeFile("source/small", "small file");
    tree.makeFile("source/big", QByteArray((17 << 20) + 5, 'b')); // the kernel copies it
    tree.makeSparseFile("source/holes", 18 << 20);
    const CallNames names = failEachCallOfTrackWriter(tree, 0);
    for (const char *const call : {"open", "write", "copy_file_range", "ftruncate", "lseek", "fsync", "close"})
        EXPECT_TRUE(names.contains(call)) << call;
}

TEST(FailingCalls, trackWriter_leavesNoHalfImage_whereALongerFileWas)
{
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    const TemporaryTree tree;
    tree.makeFile("source/small", "small file");
    const CallNames names = failEachCallOfTrackWriter(tree, 64 << 20);
    EXPECT_EQ(names, (CallNames{"", "open", "write", "ftruncate", "lseek", "fsync", "close"}));
}

TEST(FailingCalls, trailerInPlace_isWholeOrAbsent)
{
    const TemporaryTree tree;
    const QByteArray blocks(qsizetype{3} * 2048, 'x');
    const ImageFinisher finisher(TessaronDiscImageFormatVANT, contentsOfPlainImage(std::uint64_t(blocks.size())));
    CallNames names;
    for (int number = 1; number < mostCalls; ++number) {
        tree.makeFile("disc.vant", blocks);
        NSError error;
        QByteArray failed;
        {
            const FailingCall failing(tree.path(), number, failures[number % 2], FailingCall::Folders::Count);
            error = finisher.finishInPlace(tree.path("disc.vant"));
            failed = failing.failed();
        }
        if (failed.isEmpty()) {
            EXPECT_TRUE(error.isNull());
            EXPECT_GT(tree.contents("disc.vant").size(), blocks.size());
            break;
        }
        names.insert(failed);
        expectNameAndRemedy(error, tree, failed);
        EXPECT_TRUE(tree.contents("disc.vant") == blocks) << failed.constData();
    }
    EXPECT_EQ(names, (CallNames{"open", "lseek", "write", "fsync", "close"}));
}

TEST(FailingCalls, cueSheetInPlace_isWholeOrAbsent)
{
    const TemporaryTree tree;
    tree.makeFile("disc.bin", QByteArray(2048, 'x'));
    const ImageFinisher finisher(TessaronDiscImageFormatBIN, contentsOfPlainImage(2048));
    CallNames names;
    for (int number = 1; number < mostCalls; ++number) {
        if (tree.exists("disc.cue"))
            tree.remove("disc.cue");
        NSError error;
        QByteArray failed;
        {
            const FailingCall failing(tree.path(), number, failures[number % 2], FailingCall::Folders::Count);
            error = finisher.finishInPlace(tree.path("disc.bin"));
            failed = failing.failed();
        }
        names.insert(failed);
        if (tree.exists("disc.cue")) {
            EXPECT_EQ(tree.contents("disc.cue").size(), 62 + 8) << failed.constData();
        }
        if (failed.isEmpty()) {
            EXPECT_TRUE(error.isNull());
            break;
        }
        if (error)
            expectNameAndRemedy(error, tree, failed);
        else // only descriptors that nothing was written to
            EXPECT_TRUE(failed == "close" || failed == "open" || failed == "openat") << failed.constData();
    }
    EXPECT_TRUE(names.contains("write") && names.contains("fsync") && names.contains("close"));
}

TEST(FailingCalls, stagedFiles_getTheirNamesOnlyWhenAllIsOnTheDisk)
{
    CallNames names;
    for (int number = 1; number < mostCalls; ++number) {
        const TemporaryTree tree;
        QByteArray failed;
        const NSError error = finishStaged(tree, number, &failed);
        names.insert(failed);
        EXPECT_EQ(tree.exists("disc.bin"), tree.exists("disc.cue"));
        if (tree.exists("disc.bin")) {
            EXPECT_EQ(tree.contents("disc.cue").size(), 62 + 8) << failed.constData();
            EXPECT_TRUE(error.isNull() || error.localizedDescription().contains(QStringLiteral("is whole")));
        } else {
            expectNameAndRemedy(error, tree, failed);
        }
        if (failed.isEmpty())
            break;
    }
    EXPECT_TRUE(names.contains("write") && names.contains("fsync"));
}

} // namespace Tessaron::Testing
