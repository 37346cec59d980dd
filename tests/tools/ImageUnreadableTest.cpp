#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// Folders that the system does not list, whatever their permissions.
class ImageUnreadable : public ImageTest
{
protected:
    ImageUnreadable()
    {
        m_tree.makeFile("source/a/kept");
        m_tree.makeFile("source/broken/lost");
        m_tree.makeFile("source/z/kept too");
    }

    /// Runs the command with the first opening of the folder of this name failing like a disk that is worn out.
    ChildResult runWithBrokenFolder(const QByteArray &name, const QList<QByteArray> &arguments) const
    {
        ChildSettings settings = tessaron(arguments);
        settings.arguments = QList<QByteArray>{"-f",
                                               "-qq",
                                               "-o",
                                               "/dev/null",
                                               "-P",
                                               name,
                                               "-e",
                                               "trace=openat",
                                               "-e",
                                               "inject=openat:error=EIO",
                                               settings.program}
            + settings.arguments;
        settings.program = "strace";
        // In a build with AddressSanitizer: its search for leaks traces the process, too, which only one can do.
        settings.environment.append("ASAN_OPTIONS=detect_leaks=0");
        return runChild(settings);
    }

    static bool canTrace()
    {
        ChildSettings settings;
        settings.program = "strace";
        settings.arguments = {"-qq", "-o", "/dev/null", "true"};
        return runChild(settings).exitStatus == 0;
    }
};

TEST_F(ImageUnreadable, folder_isNamed_whenItsListingFails)
{
    if (!canTrace())
        GTEST_SKIP() << "this user may not trace a process";
    const ChildResult result = runWithBrokenFolder("broken", imageArguments({"--json"}));
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("source/broken")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("Input/output error")) << result.errors.constData();
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("incomplete"));
    const QJsonArray unreadable = object[QStringLiteral("unreadable")].toArray();
    ASSERT_EQ(unreadable.size(), 1);
    EXPECT_EQ(unreadable[0][QStringLiteral("path")].toString(), m_tree.pathText("source/broken"));
    const QByteArray listing = outputOf("isoinfo", {"-R", "-f", "-i", image()});
    EXPECT_TRUE(listing.contains("/z/kept too")) << listing.constData();
    EXPECT_TRUE(outputOf("7z", {"l", "-tudf", image()}).contains("kept too"));
}

TEST_F(ImageUnreadable, folderWithoutPermission_isNamed_andTheRestIsSound)
{
    m_tree.setMode("source/broken", 0);
    m_tree.setMode("", 0755);
    m_tree.setMode("out", 0777);
    ChildSettings settings = tessaron(imageArguments());
    settings.withoutRootRights = true;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 3) << result.errors.constData();
    // Once, and with the reason that the system gives.
    EXPECT_TRUE(result.errors.contains("source/broken” cannot be listed: Permission denied"))
        << result.errors.constData();
    EXPECT_EQ(result.errors.count("source/broken"), 1) << result.errors.constData();
    for (const QByteArray type : {"-tudf", "-tiso"}) {
        const QByteArray listing = outputOf("7z", {"l", type, image()});
        EXPECT_TRUE(listing.contains("kept too")) << listing.constData();
        EXPECT_FALSE(listing.contains("Warning")) << listing.constData();
    }
    const ChildResult inspected = runTessaron({"inspect", image()});
    EXPECT_EQ(inspected.exitStatus, 0) << inspected.errors.constData();
    m_tree.setMode("source/broken", 0755); // for the tree's end
}

TEST_F(ImageUnreadable, strict_fails_whenAListingFails)
{
    if (!canTrace())
        GTEST_SKIP() << "this user may not trace a process";
    const ChildResult result = runWithBrokenFolder("broken", imageArguments({"--strict"}));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("source/broken")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("--strict")) << result.errors.constData();
    EXPECT_TRUE(outNames().empty());
}

TEST_F(ImageUnreadable, thereIsNoImage_whenTheSourceItselfCannotBeListed)
{
    if (!canTrace())
        GTEST_SKIP() << "this user may not trace a process";
    const ChildResult result = runWithBrokenFolder(m_tree.path("source"), imageArguments());
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("cannot be listed: Input/output error")) << result.errors.constData();
    EXPECT_TRUE(outNames().empty());
}

TEST_F(ImageUnreadable, scan_namesTheFolder)
{
    if (!canTrace())
        GTEST_SKIP() << "this user may not trace a process";
    const ChildResult result = runWithBrokenFolder("broken", {"scan", "-q", m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.errors.contains("source/broken")) << result.errors.constData();
}

TEST_F(ImageUnreadable, reason_isTold_whenAFolderAboveMayNotBeEntered)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can put a process where it could not go by itself";
    m_tree.setMode("", 0700);
    for (const QByteArray path : {".", "a/kept"}) {
        ChildSettings settings = tessaron({"scan", path});
        settings.folder = m_tree.path("source");
        settings.withoutRootRights = true;
        const ChildResult result = runChild(settings);
        EXPECT_EQ(result.exitStatus, 1) << path.constData();
        EXPECT_TRUE(result.errors.contains("cannot be reached: Permission denied")) << result.errors.constData();
    }
}

TEST_F(ImageUnreadable, lackOfDescriptors_isToldAsWhatItIs)
{
    if (!runsWithoutDescriptors)
        GTEST_SKIP() << "the sanitizer looks at objects through a pipe, for which there are no descriptors here";
    runTessaronWithEverMoreDescriptors(imageArguments(), [this](const ChildResult &result, quint64 limit) {
        EXPECT_TRUE(result.errors.contains("oo many")) << limit << result.errors.constData();
        EXPECT_FALSE(result.errors.contains("Choose another place")) << limit << result.errors.constData();
        EXPECT_EQ(result.exitStatus == 3, !outNames().empty()) << limit << result.errors.constData();
        std::filesystem::remove(image().toStdString());
    });
}

TEST_F(ImageUnreadable, nothingIsLost_whenDescriptorsAreFew)
{
    QByteArray deep = "source";
    for (int level = 0; level < 300; ++level)
        deep += "/n";
    m_tree.makeFile(deep + "/file");
    ChildSettings settings = tessaron(imageArguments());
    settings.descriptorLimit = 64;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("4 files, 303 folders")) << result.errors.constData();
}

} // namespace

} // namespace Tessaron::Testing
