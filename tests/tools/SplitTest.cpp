#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

class Split : public ImageTest
{
protected:
    void makeParts(const QList<QByteArray> &names) const
    {
        for (const QByteArray &name : names)
            m_tree.makeFile("source/" + name, QByteArray(1'000'000, 'x'));
    }
    /// Room for two of these files, with all filesystems.
    [[nodiscard]] ChildResult split(const QList<QByteArray> &options = {}) const
    {
        return runTessaron(imageArguments(QList<QByteArray>{"--split", "2900k"} + options));
    }
};

TEST_F(Split, images_areMadeForAsManyDiscsAsAreNeeded)
{
    makeParts({"a/1", "a/2", "b"});
    const ChildResult result = split({"--json"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(outNames(), (std::set<std::string>{"disc-1.iso", "disc-2.iso"}));
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("done"));
    const QJsonArray images = object[QStringLiteral("images")].toArray();
    ASSERT_EQ(images.size(), 2);
    EXPECT_EQ(images[0][QStringLiteral("paths")].toArray(), QJsonArray{QStringLiteral("/a")});
    EXPECT_EQ(images[1][QStringLiteral("paths")].toArray(), QJsonArray{QStringLiteral("/b")});
    EXPECT_EQ(images[1][QStringLiteral("volumeName")].toString(), QStringLiteral("source 2"));
    for (const auto &image : images)
        EXPECT_LE(image[QStringLiteral("bytes")].toInteger(), 2'900'000);
    const QByteArray first = outputOf("isoinfo", {"-f", "-R", "-i", m_tree.path("out/disc-1.iso")});
    EXPECT_TRUE(first.contains("/a/1\n/a/2\n")) << first.constData();
    EXPECT_FALSE(first.contains("/b"));
}

TEST_F(Split, fileThatNoDiscHolds_isNamed_beforeAnythingIsWritten)
{
    makeParts({"a", "b"});
    m_tree.makeSparseFile("source/film", 5'000'000);
    const ChildResult result = split();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("/film takes 4.8 MB")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("no file is cut")) << result.errors.constData();
    EXPECT_TRUE(outNames().empty());
}

TEST_F(Split, severalPaths_lieSideBySide_andOneDiscIsEnough)
{
    makeParts({"a/1", "b/2"});
    const ChildResult result = runTessaron({"image", "--split", "cd", "-n", "Both", "-o", m_tree.path("out/x.iso"),
                                            m_tree.path("source/a"), m_tree.path("source/b/2")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(outNames(), (std::set<std::string>{"x-1.iso"}));
    const QByteArray list = outputOf("isoinfo", {"-f", "-R", "-i", m_tree.path("out/x-1.iso")});
    EXPECT_TRUE(list.contains("/a/1\n")) << list.constData();
    EXPECT_TRUE(list.contains("/2\n"));
    EXPECT_TRUE(outputOf("isoinfo", {"-d", "-i", m_tree.path("out/x-1.iso")}).contains("Volume id: BOTH")
                || outputOf("isoinfo", {"-d", "-i", m_tree.path("out/x-1.iso")}).contains("Volume id: Both"));
}

TEST_F(Split, failureOfAnImage_keepsThoseBefore)
{
    makeParts({"a", "b", "c"});
    m_tree.makeFolder("out/disc-2.iso");
    const ChildResult result = split();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("1 image was made before and stays")) << result.errors.constData();
    EXPECT_TRUE(m_tree.exists("out/disc-1.iso"));
}

} // namespace

} // namespace Tessaron::Testing
