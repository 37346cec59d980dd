#include "platform/discrecording/burn/BlockSink.h"
#include "platform/discrecording/drives/DRDevice.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/OSStatus.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

TEST(DriveSink, fileThatIsAddedTo_staysAsItWas_whenTheDiskIsTooSmall)
{
    const TemporaryTree tree;
    constexpr std::uint64_t kept = 64; // blocks
    const QByteArray before(qsizetype(kept) * 2048, 'k');
    const QByteArray path = tree.makeFile("disc.iso", before);
    const Result<std::shared_ptr<DRDevice>> device = DRDevice::open("stdio:" + path, false);
    ASSERT_TRUE(device) << device.error().localizedDescription().toStdString();
    DRBurnOptions options;
    options.leavesOpen = true;
    options.growth = DriveGrowth{kept, false};
    (*device)->setBurnOptions(options);
    DiscTrack track;
    track.length = 0xFFFF'0000; // nearly eight tebibytes
    TableOfContents contents = TableOfContents::withTrack(track);
    contents.sessions.front().firstBlock = BlockAddress(std::int64_t(kept));
    const std::stop_source neverStopped;
    const std::shared_ptr<BlockSink> sink = (*device)->sinkForBurn(neverStopped.get_token());
    const NSError refused = sink->beginDisc(contents);
    EXPECT_EQ(refused.code(), dskFulErr) << refused.localizedDescription().toStdString();
    EXPECT_EQ(sink->abandonDisc(refused).code(), dskFulErr);
    EXPECT_EQ((*device)->conditionAfterBurn(), QStringLiteral("unchanged"));
    EXPECT_TRUE(tree.contents("disc.iso") == before);
}

} // namespace

} // namespace Tessaron::Testing
