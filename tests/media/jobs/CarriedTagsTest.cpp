#include "media/jobs/CarriedTags.h"

#include "platform/quicktime/SoundHelpers.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRProcess.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

std::ptrdiff_t helpersThatRun()
{
    const auto processes = KRProcess::processList();
    EXPECT_TRUE(processes);
    return std::ranges::count_if(*processes, [](const std::shared_ptr<KRProcess> &process) {
        return process->parentPID() == ::getpid() && process->name() == QStringLiteral("DummyRedbook");
    });
}

} // namespace

TEST(CarriedTags, ofAllFiles_areReadByOneHelper)
{
    const TemporaryTree tree;
    tree.makeFile("plain.wav", waveFile(tone(1000)));
    ffmpeg("-i " + tree.path("plain.wav") + " -metadata title=First " + tree.path("tagged.flac"));
    SoundHelpers helpers;
    for (int round = 0; round < 3; ++round) {
        const CarriedTags tags = carriedTags(tree.path("tagged.flac"), helpers, {});
        EXPECT_TRUE(tags.bytes.startsWith("ID3") && tags.bytes.contains("First"));
        EXPECT_TRUE(tags.notes.isEmpty());
        EXPECT_EQ(helpersThatRun(), 1) << "it waits for the next file";
    }
    EXPECT_TRUE(carriedTags(tree.path("plain.wav"), helpers, {}).bytes.isEmpty());
    helpers.endIdle();
    EXPECT_EQ(helpersThatRun(), 0);
}

TEST(CarriedTags, ofWhatCannotBeRead_areANote)
{
    const TemporaryTree tree;
    SoundHelpers helpers;
    const CarriedTags tags = carriedTags(tree.makeFile("text.flac", "text"), helpers, {});
    EXPECT_TRUE(tags.bytes.isEmpty());
    ASSERT_EQ(tags.notes.size(), 1);
    EXPECT_TRUE(tags.notes[0].contains(QStringLiteral("cannot be read"))) << tags.notes[0].toStdString();
}
