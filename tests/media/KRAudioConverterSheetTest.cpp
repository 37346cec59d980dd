#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "tests/media/AudioConverterFixture.h"

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// A window that keeps what is done to it.
class RecordedInterface final : public KRAudioConverterInterface
{
public:
    explicit RecordedInterface(std::vector<std::string> &steps)
        : m_steps(steps)
    {
    }
    void beginSheet(QObject &) override { m_steps.emplace_back("begin"); }
    void endSheetAndClose() override { m_steps.emplace_back("end"); }
    [[nodiscard]] bool isIndeterminate() const override { return m_isIndeterminate; }
    void setIndeterminate(bool isIndeterminate) override
    {
        m_isIndeterminate = isIndeterminate;
        m_steps.emplace_back(isIndeterminate ? "indeterminate" : "determinate");
    }
    void setDoubleValue(double value) override { m_steps.push_back(std::to_string(value).substr(0, 5)); }
    void setCancelButtonEnabled(bool isEnabled) override { m_steps.emplace_back(isEnabled ? "enable" : "disable"); }

private:
    std::vector<std::string> &m_steps;
    bool m_isIndeterminate = false;
};

class AudioConverterSheet : public AudioConverter
{
};

const QString one = QStringLiteral("one.flac"), other = QStringLiteral("other.flac");
const QString outOne = QStringLiteral("out/one.wav"), outOther = QStringLiteral("out/other.wav");

} // namespace

TEST_F(AudioConverterSheet, isLoadedOnceAndShowsTheProgress)
{
    const PrivateBus bus;
    std::vector<std::string> steps;
    int loads = 0;
    QObject window;
    converter->setInterfaceLoader([&](KRAudioConverter &owner) {
        EXPECT_EQ(&owner, converter.get());
        ++loads;
        return std::make_unique<RecordedInterface>(steps);
    });
    converter->setUseStandardUI(true);
    converter->setSheetModal(&window);
    makeQrlMov2Wav("printf %s \"$5\" >\"$2\".name; while [ ! -e \"$2\".go ]; do sleep 0.02; done");
    convert({one, other}, {outOne, outOther}, 0);
    EXPECT_EQ(steps, (std::vector<std::string>{"begin", "indeterminate", "enable"}));
    ASSERT_TRUE(runEventLoopUntil(
        [&] { return tree.exists("out/one.wav.name") && !tree.contents("out/one.wav.name").isEmpty(); }));
    EXPECT_FALSE(NSDistributedNotificationCenter::defaultCenter().postNotificationName(
        QString::fromUtf8(tree.contents("out/one.wav.name")), {}, {{QStringLiteral("progress"), 0.5}}));
    ASSERT_TRUE(runEventLoopUntil([&] { return steps.size() == 5; }));
    tree.makeFile("out/one.wav.go");
    tree.makeFile("out/other.wav.go");
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(steps, (std::vector<std::string>{"begin", "indeterminate", "enable", "determinate", "0.250", "end"}));
    EXPECT_TRUE(progress.empty()) << "the sheet shows it";
    EXPECT_EQ(loads, 1);

    steps.clear();
    convert({one}, {outOne}, 0);
    converter->abort();
    EXPECT_EQ(steps, (std::vector<std::string>{"begin", "indeterminate", "enable", "disable", "end"}));
    ASSERT_TRUE(waitForEvent(2));
    EXPECT_EQ(events, (std::vector<std::string>{"end", "abort"}));
}

TEST_F(AudioConverterSheet, beginsOnItsWindow_andStays_withoutTheStandardInterface)
{
    std::vector<std::string> steps;
    QObject window;
    makeQrlMov2Wav("echo x >\"$2\"");
    converter->setInterfaceLoader([&](KRAudioConverter &) { return std::make_unique<RecordedInterface>(steps); });
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(steps, (std::vector<std::string>{"indeterminate", "enable"})) << "it is loaded, and shown nowhere";

    steps.clear();
    const std::shared_ptr<KRAudioConverter> second = KRAudioConverter::init();
    second->setDelegate(delegate);
    second->setInterfaceLoader([&](KRAudioConverter &) { return std::make_unique<RecordedInterface>(steps); });
    second->setSheetModal(&window);
    second->convertAudioFiles(QStringList{tree.pathText("one.flac")}, QStringList{tree.pathText("out/one.wav")}, 0);
    ASSERT_TRUE(waitForEvent(2));
    EXPECT_EQ(steps, (std::vector<std::string>{"begin", "indeterminate", "enable"})) << "only the standard one ends";
}

TEST_F(AudioConverterSheet, endsWithAFailure)
{
    std::vector<std::string> steps;
    QObject window;
    converter->setInterfaceLoader([&](KRAudioConverter &) { return std::make_unique<RecordedInterface>(steps); });
    converter->setUseStandardUI(true);
    converter->setSheetModal(&window);
    convert({one}, {QStringLiteral("missing/one.wav")}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(steps, (std::vector<std::string>{"begin", "indeterminate", "enable", "end"}));
}

TEST_F(AudioConverterSheet, withoutAWindow_isMissedInTheLog)
{
    makeQrlMov2Wav("echo x >\"$2\"");
    converter->setUseStandardUI(true);
    testing::internal::CaptureStderr();
    convert({one, other}, {outOne, outOther}, 0);
    const bool hasEnded = waitForEvent();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error no sheet modal in audio converter\n") << "once";
    EXPECT_TRUE(hasEnded);
}

TEST_F(AudioConverterSheet, whoseInterfaceIsMissing_isNoMissingWindow)
{
    QObject window;
    makeQrlMov2Wav("echo x >\"$2\"");
    converter->setUseStandardUI(true);
    converter->setSheetModal(&window);
    converter->setInterfaceLoader([](KRAudioConverter &) { return nullptr; });
    testing::internal::CaptureStderr();
    convert({one}, {outOne}, 0);
    const bool hasEnded = waitForEvent();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "what loads it tells what is wrong";
    EXPECT_TRUE(hasEnded);
}
