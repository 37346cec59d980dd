#include "app/FileDrops.h"

#include <QMimeData>
#include <QUrl>

#include <gtest/gtest.h>

using namespace Tessaron::Desktop;

namespace
{

QList<QByteArray> pathsOfList(const QByteArray &list)
{
    QMimeData data;
    data.setData(QStringLiteral("text/uri-list"), list);
    return pathsOfFiles(data);
}

} // namespace

TEST(FileDrops, paths_keepBlanksUmlautsAndBytesThatAreNoText)
{
    EXPECT_EQ(pathsOfList("file:///a%20b/%C3%BC\r\nfile:///bad%FF%2Fname\r\n"),
              QList<QByteArray>({"/a b/\xC3\xBC", "/bad\xFF/name"}));
}

TEST(FileDrops, paths_leaveOutWhatIsNotOnThisMachine)
{
    EXPECT_EQ(pathsOfList("https://example.org/a\r\nfile://elsewhere.example/b\r\n# a comment\r\n"
                          "file://localhost/c\r\nfile:relative\r\nfile:///nul%00byte\r\nfile:/short\r\n"),
              QList<QByteArray>({"/c", "/short"}));
}

TEST(FileDrops, paths_comeOnce_andWithoutSlashesBehind)
{
    EXPECT_EQ(pathsOfList("file:///a/\r\nfile:///a\r\nfile:///\r\n"), QList<QByteArray>({"/a", "/"}));
}

TEST(FileDrops, holdsFiles_isFalse_forText)
{
    QMimeData text;
    text.setText(QStringLiteral("file:///a"));
    EXPECT_FALSE(holdsFiles(text));
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/a"))});
    EXPECT_TRUE(holdsFiles(files));
}
