#include "app/AudioPanel.h"

#include "tests/app/BurnDialogFixture.h"
#include "tests/app/Waves.h"
#include <TessaronClasses/DiscJobErrors.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class BurnSoundDialogTest : public BurnDialogFixture
{
protected:
    BurnSoundDialogTest()
    {
        tree.makeFile("a.wav", waveOf(5, 1));
        tree.makeFile("b.wav", waveOf(6, 2));
        window.audioPanel().addFiles({tree.path("a.wav"), tree.path("b.wav")});
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.audioPanel().isLooking(); }));
    }
    [[nodiscard]] BurnSubject sound() const
    {
        const std::optional<BurnSubject> found = window.audioPanel().burnSubject();
        EXPECT_TRUE(found);
        return found.value_or(BurnSubject());
    }
};

} // namespace

TEST_F(BurnSoundDialogTest, tracks_areWrittenWithoutAnImage_andCompared)
{
    insert(FakeProfile::CDR, cdBlocks);
    BurnDiscOrder settings;
    settings.drive = drivePath;
    settings.verifies = true;
    window.burnDisc(sound(), settings, DiscFamily::CDR);
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("compared"))) << outcome->summary.toStdString();
    const FakeDisc written = disc();
    EXPECT_EQ(written.status, FakeDisc::Status::Complete);
    ASSERT_EQ(written.tracks.size(), 2u);
    EXPECT_TRUE(written.tracks[0].isAudio);
    EXPECT_EQ(written.tracks[0].start, 0);
    // From the first sample of one file to the last of the other, as they are.
    constexpr qsizetype frames = 75;
    constexpr qsizetype frameSize = 2352;
    EXPECT_TRUE(tree.contents("drive/sectors").startsWith(QByteArray(5 * frames * frameSize, 1)));
    const FakeTrack &last = written.tracks[1];
    EXPECT_EQ(tree.contents("drive/sectors").mid((last.start + last.length - frames) * frameSize),
              QByteArray(frames * frameSize, 2));
}

TEST_F(BurnSoundDialogTest, soundThatChanges_neverEndsAsWrittenWell)
{
    insert(FakeProfile::CDR, cdBlocks);
    const BurnSubject subject = sound();
    tree.makeFile("b.wav", "not a sound any more");
    BurnDiscOrder settings;
    settings.drive = drivePath;
    window.burnDisc(subject, settings, DiscFamily::CDR);
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Source)) << outcome->summary.toStdString();
    EXPECT_NE(disc().status, FakeDisc::Status::Complete);
}

TEST_F(BurnSoundDialogTest, otherDiscs_areRefused_andSmallOnesTold)
{
    insert(FakeProfile::DVDPlusRW, dvdBlocks);
    const auto shownFor = [this] {
        auto shown = std::make_unique<BurnDialog>(sound());
        DriveFacts facts;
        facts.drive.path = drivePath;
        shown->showDrives({facts});
        waitFor(*shown);
        return shown;
    };
    const std::unique_ptr<BurnDialog> wrong = shownFor();
    EXPECT_FALSE(wrong->burnButton().isEnabled());
    EXPECT_TRUE(wrong->text().contains(QStringLiteral("CD-R"))) << wrong->text().toStdString();
    EXPECT_FALSE(wrong->openBox().isVisibleTo(wrong.get()));
    insert(FakeProfile::CDR, 600);
    EXPECT_TRUE(shownFor()->text().contains(QStringLiteral("too small")));
    insert(FakeProfile::CDR, 2'000);
    const std::unique_ptr<BurnDialog> right = shownFor();
    EXPECT_TRUE(right->burnButton().isEnabled());
    EXPECT_FALSE(right->text().contains(QStringLiteral("too small"))) << right->text().toStdString();
}
