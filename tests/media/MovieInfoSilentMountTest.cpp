// A file system that never answers, as a network mount whose server is gone.

#include "platform/foundation/NSError.h"
#include "platform/foundation/OSStatus.h"
#include "tests/quicktime/Atoms.h"
#include "tests/support/EventLoop.h"
#include "tests/support/SilentMount.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRMovieInfo.h>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Testing;
using namespace std::chrono_literals;

namespace
{

class Listener final : public KRMovieInfoReceiver
{
public:
    void KRMovieInfoDidGetInfo(const QVariantMap &info) override { results.push_back(info); }
    [[nodiscard]] NSError error(std::size_t index) const
    {
        return results.at(index).value(QStringLiteral("error")).value<NSError>();
    }

    std::vector<QVariantMap> results;
};

class MovieInfoSilentMount : public testing::Test
{
protected:
    void ask(const char *relative, const std::shared_ptr<Listener> &listener) const
    {
        info->getInfoForMovieAtPath(tree.pathText(relative), listener);
    }

    const std::shared_ptr<KRMovieInfo> info = KRMovieInfo::sharedInstance();
    const TemporaryTree tree;
    SilentMount silent{tree.makeFolder("silent")};
};

} // namespace

TEST_F(MovieInfoSilentMount, filesOnIt_areGivenUp_andTheOthersAreRead)
{
    tree.makeFile("good.mov", movieAtom(plainSoundTrack()));
    if (!silent.mount())
        GTEST_SKIP() << "this user, or this system, may not mount what the test needs";
    info->setPatience(200ms);
    const auto first = std::make_shared<Listener>(), beside = std::make_shared<Listener>(),
               good = std::make_shared<Listener>();
    ask("silent/a.mov", first);
    ask("silent/folder/b.WMV", beside);
    ask("good.mov", good);
    ASSERT_TRUE(runEventLoopUntil([&] { return !good->results.empty(); }));
    ASSERT_EQ(first->results.size(), 1u);
    EXPECT_EQ(first->error(0).code(), ioErr);
    EXPECT_TRUE(first->error(0).localizedDescription().contains(QStringLiteral("has not answered")))
        << qPrintable(first->error(0).localizedDescription());
    ASSERT_EQ(beside->results.size(), 1u);
    EXPECT_TRUE(beside->error(0).localizedDescription().contains(QStringLiteral("another file on")))
        << qPrintable(beside->error(0).localizedDescription());
    EXPECT_FALSE(good->error(0));
    EXPECT_EQ(good->results[0].value(fZelTracksInfoKey).toList().size(), 1);

    // Once the mount fails instead of being silent, its files are asked for again, and the failure is told.
    silent.answer();
    ASSERT_TRUE(runEventLoopUntil([&] {
        beside->results.clear();
        ask("silent/folder/b.WMV", beside);
        return runEventLoopUntil([&] { return !beside->results.empty(); })
            && !beside->error(0).localizedDescription().contains(QStringLiteral("another file on"));
    }));
    EXPECT_TRUE(beside->error(0)) << "a mount without its program has no files";
    EXPECT_EQ(first->results.size(), 1u) << "nothing more comes of what was given up";
}
