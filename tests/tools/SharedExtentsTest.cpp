#include "tests/tools/ImageFixture.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>

namespace Tessaron::Testing
{

namespace
{

/// A filesystem that shares extents, made in a file and mounted at "shared", where the test may.
class SharedExtents : public ImageTest
{
protected:
    SharedExtents()
    {
        m_tree.makeFolder("shared");
        m_tree.makeSparseFile("filesystem", qint64(1) << 30);
        m_isMounted = runs("mkfs.xfs", {"-q", "-m", "reflink=1", m_tree.path("filesystem")})
            && runs("mount", {"-o", "loop", m_tree.path("filesystem"), m_tree.path("shared")});
    }
    ~SharedExtents() override
    {
        if (m_isMounted) {
            EXPECT_TRUE(runs("umount", {m_tree.path("shared")}));
        }
    }

    static bool runs(const QByteArray &program, const QList<QByteArray> &arguments)
    {
        ChildSettings settings;
        settings.program = program;
        settings.arguments = arguments;
        return runChild(settings).exitStatus == 0;
    }

    std::uint64_t freeBytes() const
    {
        EXPECT_TRUE(runs("sync", {"-f", m_tree.path("shared")}));
        struct statvfs space = {};
        EXPECT_EQ(::statvfs(m_tree.path("shared").constData(), &space), 0);
        return std::uint64_t(space.f_bfree) * space.f_frsize;
    }

    bool m_isMounted = false;
};

TEST_F(SharedExtents, image_takesNoRoom_whereItCanShareThatOfItsSources)
{
    if (!m_isMounted)
        GTEST_SKIP() << "this user or this system cannot mount an XFS";
    constexpr std::uint64_t size = 64 << 20;
    makeBigFile("shared/source/big", size);
    const std::uint64_t before = freeBytes();
    const QByteArray image = m_tree.path("shared/disc.iso");
    const ChildResult result = runTessaron({"image", "-o", image, m_tree.path("shared/source")});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    const std::uint64_t after = freeBytes();
    EXPECT_LT(before - after, size / 16) << "the contents were copied";
    EXPECT_EQ(outputOf("isoinfo", {"-R", "-x", "/big", "-i", image}), m_tree.contents("shared/source/big"));
}

} // namespace

} // namespace Tessaron::Testing
