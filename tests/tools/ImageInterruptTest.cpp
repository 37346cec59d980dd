#include "tests/tools/ImageFixture.h"
#include "tests/tools/WriteGate.h"

#include <chrono>
#include <csignal>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

using Names = std::set<std::string>;

class ImageInterrupt : public ImageTest
{
protected:
    ImageInterrupt() { m_tree.makeFile("out/disc.iso", "older image"); }

    void expectInterrupted(const ChildResult &result) const
    {
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.exitStatus, 130) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("interrupted")) << result.errors.constData();
        expectPlaceAsItWas();
    }

    void expectPlaceAsItWas() const
    {
        EXPECT_EQ(outNames(), Names({"disc.iso"}));
        EXPECT_EQ(m_tree.contents("out/disc.iso"), "older image");
    }

    /// A run that waits in the middle of its writing until the gate opens.
    void makeGatedTree()
    {
        makeBigFile("source/a gate", 1 << 20);
        makeBigFile("source/b", 4 << 20);
    }
};

class ImageInterruptSignals : public ImageInterrupt, public testing::WithParamInterface<int>
{
};

TEST_P(ImageInterruptSignals, signal_leavesThePlaceAsItWas_whileWriting)
{
    makeGatedTree();
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(tessaron(imageArguments()));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
    process.sendSignal(GetParam());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    gate.open();
    expectInterrupted(process.finish());
}

INSTANTIATE_TEST_SUITE_P(Signals, ImageInterruptSignals, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(ImageInterrupt, secondSignal_endsAtOnce_evenWhenAReadHangs)
{
    makeGatedTree();
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(tessaron(imageArguments()));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
    process.sendSignal(SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    process.sendSignal(SIGINT);
    EXPECT_EQ(process.finish().exitStatus, 130);
    EXPECT_TRUE(gate.somebodyWaits() || gate.isClosed()); // it did not wait for the gate
    expectPlaceAsItWas();
}

TEST_F(ImageInterrupt, json_saysCancelled)
{
    makeGatedTree();
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(tessaron(imageArguments({"--json"})));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); }));
    process.sendSignal(SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    gate.open();
    const ChildResult result = process.finish();
    expectInterrupted(result);
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("cancelled"));
    EXPECT_EQ(object[QStringLiteral("error")][QStringLiteral("kind")].toString(), QStringLiteral("interrupted"));
}

TEST_F(ImageInterrupt, signal_leavesAllOrNothing_atAnyMoment)
{
    makeManyFiles(3000);
    int interrupted = 0;
    for (int milliseconds = 0; milliseconds < 120; milliseconds += 4) {
        m_tree.makeFile("out/disc.iso", "older image");
        ChildProcess process(tessaron(imageArguments({"--progress", "json"})));
        // From the first line on it listens.
        ASSERT_TRUE(process.waitUntil([&process] { return !process.errorsSoFar().isEmpty(); }));
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        process.sendSignal(milliseconds % 8 == 0 ? SIGINT : SIGTERM);
        const ChildResult result = process.finish();
        if (result.exitStatus == 130) {
            ++interrupted;
            expectPlaceAsItWas();
        } else {
            EXPECT_EQ(result.exitStatus, 0) << result.errors.constData(); // it had ended its work
            EXPECT_EQ(outNames(), Names({"disc.iso"}));
            EXPECT_GT(m_tree.contents("out/disc.iso").size(), 1000000);
        }
    }
    EXPECT_GT(interrupted, 3);
}

TEST_F(ImageInterrupt, killedProcess_leavesNoTrace)
{
    makeGatedTree();
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(tessaron(imageArguments()));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); }));
    if (outNames() != Names({"disc.iso"}))
        GTEST_SKIP() << "the filesystem of the temporary folder knows no files without a name";
    process.sendSignal(SIGKILL);
    gate.open();
    EXPECT_EQ(process.finish().signal, SIGKILL);
    expectPlaceAsItWas();
}

TEST_F(ImageInterrupt, signal_isIgnored_whenItWasIgnoredBefore)
{
    makeGatedTree();
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildSettings settings;
    settings.program = "nohup";
    settings.arguments = QList<QByteArray>({TESSARON_PROGRAM}) + imageArguments();
    ChildProcess process(settings);
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); }));
    process.sendSignal(SIGHUP);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    gate.open();
    EXPECT_EQ(process.finish().exitStatus, 0);
    EXPECT_GT(m_tree.contents("out/disc.iso").size(), 5 << 20);
}

} // namespace

} // namespace Tessaron::Testing
