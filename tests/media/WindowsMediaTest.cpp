#include "media/WindowsMedia.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

QString text(const char *bytes)
{
    return QString::fromUtf8(bytes);
}

} // namespace

TEST(WindowsMedia, isToldByTheExtension_whenNothingElseIsKnown)
{
    for (const char *const path : {"/a/b.wmv", "/a/B.WMV", "c.asf", "c.Asf"})
        EXPECT_TRUE(isWindowsMedia(text(path), {}, {})) << path;
    for (const char *const path : {"/a.wmv/b", "/a/wmv", "/a/.wmv", "c.wma", "d.mov", ""})
        EXPECT_FALSE(isWindowsMedia(text(path), {}, {})) << path;
    EXPECT_FALSE(isWindowsMedia(QString(), {}, {})) << "no path at all";
    EXPECT_FALSE(isWindowsMedia(QString(), QStringList{text("Windows Media Audio")}, {}));
}

TEST(WindowsMedia, isToldByCodecsAndTypes_whateverTheExtensionSays)
{
    EXPECT_TRUE(isWindowsMedia(text("a.mov"), QStringList{text("AAC"), text("Windows Media Video 9")}, {}));
    EXPECT_FALSE(isWindowsMedia(text("a.wmv"), QStringList{text("H.264")}, {}));
    EXPECT_TRUE(isWindowsMedia(text("a"), QStringList{text("AAC")}, QStringList{text("com.microsoft.wmv")}));
    EXPECT_FALSE(isWindowsMedia(text("a.asf"), {}, QStringList{text("video/quicktime")}));
}

TEST(WindowsMedia, typesOfContent_areThoseOfTheName)
{
    const std::optional<QStringList> types = contentTypeTree(text("/nowhere/A.WMV"));
    ASSERT_TRUE(types) << "the shared MIME database is a package of the tests";
    EXPECT_FALSE(types->filter(text("com.microsoft.")).isEmpty()) << qPrintable(types->join(u' '));
    EXPECT_TRUE(contentTypeTree(text("a.mov"))->contains(text("video/quicktime")));
    EXPECT_FALSE(contentTypeTree(text("/a.mov/b")));
    EXPECT_FALSE(contentTypeTree(text("a.unheardof")));
}
