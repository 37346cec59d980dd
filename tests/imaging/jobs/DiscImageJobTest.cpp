#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <QTimer>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

using ImageRun = Testing::JobRun<DiscImageJob, DiscImageResult>;
using Names = std::set<std::string>;

class DiscImageJobs : public testing::Test
{
protected:
    DiscImageJobs()
    {
        m_tree.makeFile("source/letter.txt", "Dear reader,\n");
        m_tree.makeFile("source/folder/deep", QByteArray(100000, 'd'));
        m_tree.makeFolder("out");
    }

    DiscImageOrder order(const QByteArray &output = "out/disc.iso") const
    {
        DiscImageOrder order;
        order.sources = {m_tree.path("source")};
        order.output = m_tree.path(output);
        return order;
    }

    Names outNames() const
    {
        Names result;
        for (const auto &entry : std::filesystem::directory_iterator(m_tree.path("out").toStdString()))
            result.insert(entry.path().filename().string());
        return result;
    }

    /// What another program reads of a file.
    QByteArray contentsIn(const QByteArray &image, const char *path) const
    {
        return Testing::runProgram("isoinfo", {"-R", "-x", path, "-i", m_tree.path(image)}).output;
    }
    QByteArray letterIn(const QByteArray &image) const { return contentsIn(image, "/letter.txt"); }

    std::shared_ptr<KRFileHierarchyItem> item(const QByteArray &relative, const char *name = nullptr) const
    {
        const auto reference = KRFileReference::initWithPath(m_tree.pathText(relative));
        if (name)
            reference->setDesiredName(QString::fromUtf8(name));
        return KRFileHierarchyItem::fileHierarchyItemWithFileReference(reference);
    }

    /// A disc that lies on no disk like this: a folder of its own with a renamed file, and another folder's file.
    DiscImageOrder treeOrder() const
    {
        const auto root = KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::virtualFolderWithName(QStringLiteral("disc")));
        const auto mine = KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::virtualFolderWithName(QStringLiteral("mine")));
        root->addItem(mine);
        mine->addItem(item("source/letter.txt", "greeting.txt"));
        const auto folder = item("source/folder");
        folder->addItem(item("source/folder/deep"));
        folder->addItem(item("source/letter.txt"));
        root->addItem(folder);
        DiscImageOrder made = order();
        made.sources.clear();
        made.tree = root;
        return made;
    }

    void makeBigSource() const { m_tree.makeFile("source/big", QByteArray(64 << 20, 'b')); }

    const Testing::TemporaryTree m_tree;
};

TEST_F(DiscImageJobs, job_makesTheImage_andTellsPhasesInOrder)
{
    DiscImageJob job(order());
    const ImageRun run(job);
    EXPECT_EQ(run.endings, 1);
    EXPECT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
    EXPECT_TRUE(run.result.isComplete());
    EXPECT_EQ(run.result.files, 2u);
    EXPECT_EQ(run.result.folders, 1u);
    EXPECT_EQ(run.result.volumeName, QStringLiteral("source"));
    EXPECT_EQ(run.result.imagePath, m_tree.path("out/disc.iso"));
    EXPECT_EQ(run.result.bytes, std::filesystem::file_size(m_tree.path("out/disc.iso").toStdString()));
    EXPECT_EQ(letterIn("out/disc.iso"), "Dear reader,\n");
    ASSERT_GE(run.phases.size(), 2u);
    EXPECT_EQ(run.phases.front(), DiscJobPhase::Preparing);
    EXPECT_EQ(run.phases.back(), DiscJobPhase::Done);
    EXPECT_TRUE(std::is_sorted(run.phases.begin(), run.phases.end()));
    EXPECT_EQ(run.told.back().percent(), 100);
    EXPECT_EQ(run.told.back().bytesTotal, run.result.bytes);
}

TEST_F(DiscImageJobs, tree_isStoredAsItIsArranged_underItsOwnNames)
{
    DiscImageOrder given = treeOrder();
    given.volumeName = QStringLiteral("arranged");
    DiscImageJob job(given);
    const ImageRun run(job);
    EXPECT_TRUE(run.result.isComplete()) << run.result.error.localizedDescription().toStdString();
    EXPECT_EQ(run.result.files, 3u);
    EXPECT_EQ(run.result.folders, 2u);
    EXPECT_EQ(run.result.volumeName, QStringLiteral("arranged"));
    EXPECT_EQ(contentsIn("out/disc.iso", "/mine/greeting.txt"), "Dear reader,\n");
    EXPECT_EQ(contentsIn("out/disc.iso", "/folder/letter.txt"), "Dear reader,\n");
    EXPECT_EQ(contentsIn("out/disc.iso", "/folder/deep"), QByteArray(100000, 'd'));
    EXPECT_EQ(letterIn("out/disc.iso"), "");
}

TEST_F(DiscImageJobs, tree_takesItsVolumeNameFromTheOutput_whenItIsGivenNone)
{
    DiscImageJob job(treeOrder());
    const ImageRun run(job);
    EXPECT_TRUE(run.result.isComplete());
    EXPECT_EQ(run.result.volumeName, QStringLiteral("disc"));
}

TEST_F(DiscImageJobs, output_isRefused_whenItWouldReplaceAFileOfTheTree)
{
    DiscImageOrder given = treeOrder();
    given.output = m_tree.path("source/letter.txt");
    DiscImageJob job(given);
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Destination));
    EXPECT_EQ(m_tree.contents("source/letter.txt"), "Dear reader,\n");
}

TEST_F(DiscImageJobs, tree_isAnError_besideSources)
{
    DiscImageOrder given = treeOrder();
    given.sources = {m_tree.path("source")};
    DiscImageJob job(given);
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::InvalidOrder));
    EXPECT_EQ(outNames(), Names());
}

TEST_F(DiscImageJobs, tree_isIncomplete_andAnErrorWhereThatIsStrict_whenAFileOfItIsGone)
{
    DiscImageOrder given = treeOrder();
    m_tree.remove("source/folder/deep");
    DiscImageJob job(given);
    const ImageRun run(job);
    EXPECT_FALSE(run.result.error);
    EXPECT_FALSE(run.result.isComplete());
    EXPECT_EQ(run.result.report->lostCount(), 1u);

    given.output = m_tree.path("out/strict.iso");
    given.isStrict = true;
    DiscImageJob strict(given);
    const ImageRun strictRun(strict);
    EXPECT_TRUE(isDiscJobError(strictRun.result.error, DiscJobErrorCode::NotStored));
    EXPECT_EQ(outNames(), Names({"disc.iso"}));
}

TEST_F(DiscImageJobs, everySource_isStored_alsoAFoldersIconByItself)
{
    DiscImageOrder alone = order();
    alone.sources = {m_tree.makeFile("icons/Icon\r", "icon"), m_tree.path("source/letter.txt"),
                     m_tree.makeSymbolicLink("link", "icons/Icon\r")};
    DiscImageJob job(alone);
    const ImageRun run(job);
    EXPECT_TRUE(run.result.isComplete()) << run.result.error.localizedDescription().toStdString();
    EXPECT_EQ(run.result.files, 3u);
    EXPECT_EQ(letterIn("out/disc.iso"), "Dear reader,\n");
    EXPECT_EQ(contentsIn("out/disc.iso", "/link"), "icon");
    EXPECT_EQ(contentsIn("out/disc.iso", "/Icon\r"), "icon");
}

TEST_F(DiscImageJobs, job_endsInAnError_andLeavesNothing_whenASourceIsMissing)
{
    DiscImageOrder wrong = order();
    wrong.sources.append(m_tree.path("missing"));
    DiscImageJob job(wrong);
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Source));
    EXPECT_TRUE(run.result.error.localizedDescription().contains(QStringLiteral("missing")));
    EXPECT_EQ(outNames(), Names());
    EXPECT_NE(run.phases.back(), DiscJobPhase::Done);
}

TEST_F(DiscImageJobs, job_makesBothFiles_whenTheFormatIsBin)
{
    DiscImageOrder bin = order("out/disc.bin");
    bin.format = DiscFormat::BIN;
    DiscImageJob job(bin);
    const ImageRun run(job);
    EXPECT_TRUE(run.result.isComplete());
    EXPECT_EQ(run.result.cueSheetPath, m_tree.path("out/disc.cue"));
    EXPECT_EQ(outNames(), Names({"disc.bin", "disc.cue"}));
}

TEST_F(DiscImageJobs, cueSheet_hasANameOfItsOwn_whenTheImageIsCalledCue)
{
    DiscImageOrder bin = order("out/disc.cue");
    bin.format = DiscFormat::BIN;
    DiscImageJob job(bin);
    const ImageRun run(job);
    EXPECT_TRUE(run.result.isComplete());
    EXPECT_EQ(run.result.cueSheetPath, m_tree.path("out/disc.cue.cue"));
    EXPECT_EQ(outNames(), Names({"disc.cue", "disc.cue.cue"}));
    EXPECT_EQ(m_tree.contents("out/disc.cue").size(), qsizetype(run.result.bytes));
}

TEST_F(DiscImageJobs, cancel_leavesTheOlderImage)
{
    makeBigSource();
    m_tree.makeFile("out/disc.iso", "older");
    DiscImageJob job(order());
    QObject::connect(&job, &DiscJob::phaseChanged, &job, [&job](DiscJobPhase phase) {
        if (phase == DiscJobPhase::Planning || phase == DiscJobPhase::Writing)
            job.cancel();
    });
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_EQ(outNames(), Names({"disc.iso"}));
    EXPECT_EQ(m_tree.contents("out/disc.iso"), "older");
}

TEST_F(DiscImageJobs, cancel_isHeard_whenItComesRightAfterTheStart)
{
    DiscImageJob job(order());
    QTimer::singleShot(0, &job, [&job] { job.cancel(); });
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_EQ(outNames(), Names());
}

TEST_F(DiscImageJobs, cancelBeforeTheStart_endsIt_withoutAnImage)
{
    DiscImageJob job(order());
    job.cancel();
    EXPECT_TRUE(job.isCancelled());
    EXPECT_FALSE(job.isRunning());
    const ImageRun run(job);
    EXPECT_EQ(run.endings, 1);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_EQ(outNames(), Names());
}

TEST_F(DiscImageJobs, destroying_cancels_andNothingFollows)
{
    makeBigSource();
    int endings = 0;
    QEventLoop loop;
    auto job = std::make_unique<DiscImageJob>(order());
    QObject::connect(job.get(), &DiscImageJob::finished, &loop, [&endings](const DiscImageResult &) { ++endings; });
    job->start();
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        job.reset();
        loop.quit();
    });
    for (const int milliseconds : {30, 50}) { // while it runs, and for what would follow
        timer.start(milliseconds);
        loop.exec();
    }
    EXPECT_LE(endings, 1); // 1 where the image was whole within the 30 ms
    EXPECT_EQ(outNames(), endings == 1 ? Names({"disc.iso"}) : Names());
}

TEST_F(DiscImageJobs, pipe_takesTheImage)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    QByteArray received;
    std::jthread reader([&] {
        char buffer[65536];
        for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;)
            received.append(buffer, count);
    });
    DiscImageOrder streamed = order();
    streamed.output.clear();
    streamed.outputDescriptor = ends[1];
    {
        DiscImageJob job(streamed);
        const ImageRun run(job);
        EXPECT_TRUE(run.result.isComplete()) << run.result.error.localizedDescription().toStdString();
        EXPECT_TRUE(run.result.imagePath.isEmpty());
    }
    ::close(ends[1]);
    reader.join();
    ::close(ends[0]);
    m_tree.makeFile("received.iso", received);
    EXPECT_EQ(letterIn("received.iso"), "Dear reader,\n");
}

TEST_F(DiscImageJobs, namedPipe_isWaitedForUntilACancel)
{
    m_tree.makeFifo("out/pipe");
    DiscImageJob job(order("out/pipe"));
    QTimer::singleShot(100, &job, [&job] { job.cancel(); });
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_EQ(outNames(), Names({"pipe"}));
}

TEST_F(DiscImageJobs, stream_isRefused_whenItCannotTakeAnImage)
{
    DiscImageOrder streamed = order();
    streamed.output.clear();
    const QByteArray full = m_tree.makeFile("full", "something");
    const UniqueDescriptor file(::open(full.constData(), O_WRONLY | O_APPEND | O_CLOEXEC));
    const UniqueDescriptor readOnly(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    for (const int descriptor : {file.get(), readOnly.get()}) {
        streamed.outputDescriptor = descriptor;
        DiscImageJob job(streamed);
        const ImageRun run(job);
        EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Destination));
        EXPECT_TRUE(run.result.error.localizedDescription().startsWith(QStringLiteral("the output")));
    }
    EXPECT_EQ(m_tree.contents("full"), "something");
    streamed.outputDescriptor = readOnly.get();
    streamed.format = DiscFormat::BIN;
    DiscImageJob job(streamed);
    const ImageRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::InvalidOrder));
}

TEST_F(DiscImageJobs, environment_isRefused_whenItsTimeMeansNothing)
{
    for (const char *const value : {"yesterday", " 1", "1 ", "99999999999999999999", "-1", "253402300800"}) {
        qputenv("SOURCE_DATE_EPOCH", value);
        DiscImageJob job(order());
        const ImageRun run(job);
        EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::InvalidOrder)) << value;
    }
    qputenv("SOURCE_DATE_EPOCH", "253402300800");
    DiscImageJob late(order());
    EXPECT_TRUE(ImageRun(late).result.error.localizedDescription().contains(QStringLiteral("after the year 9999")));
    qunsetenv("SOURCE_DATE_EPOCH");
    EXPECT_EQ(outNames(), Names());
}

} // namespace

} // namespace Tessaron
