#include "app/FileDrops.h"

#include <QDropEvent>
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

/// Whether a drag of the data that may be dropped by these actions is taken.
bool isAccepted(const QMimeData &data, Qt::DropActions possible)
{
    QDragEnterEvent event({}, possible, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    acceptFiles(event);
    return event.isAccepted() && event.dropAction() == Qt::CopyAction;
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

TEST(FileDrops, lentFiles_areOfferedToBeCopied_byTheirBytes)
{
    const QList<QByteArray> paths = {"/a b/\xC3\xBC", "/bad\xFF#name"};
    const std::unique_ptr<QMimeData> offer = offerOfLentFiles(paths);
    EXPECT_TRUE(holdsFiles(*offer));
    EXPECT_TRUE(holdsLentFiles(*offer));
    EXPECT_EQ(pathsOfFiles(*offer), paths);
    EXPECT_EQ(offer->data(QStringLiteral("text/uri-list")), "file:///a%20b/%C3%BC\r\nfile:///bad%FF%23name\r\n");
    EXPECT_EQ(offer->data(QStringLiteral("x-special/gnome-copied-files")),
              "copy\nfile:///a%20b/%C3%BC\nfile:///bad%FF%23name");
}

TEST(FileDrops, files_areAccepted_asCopiesAlone)
{
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/a"))});
    EXPECT_TRUE(isAccepted(files, Qt::CopyAction | Qt::MoveAction));
    EXPECT_FALSE(isAccepted(files, Qt::MoveAction));
    QMimeData text;
    text.setText(QStringLiteral("/a"));
    EXPECT_FALSE(isAccepted(text, Qt::CopyAction));
    EXPECT_FALSE(isAccepted(*offerOfLentFiles({"/a"}), Qt::CopyAction)) << "it stays for a while only";
}

TEST(FileDrops, takeDroppedFile_isTheFirstOfThem)
{
    QMimeData data;
    data.setData(QStringLiteral("text/uri-list"), "https://example.org/a\r\nfile:///b\r\nfile:///c\r\n");
    QDropEvent event({}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.setDropAction(Qt::MoveAction);
    EXPECT_EQ(takeDroppedFile(event), "/b");
    EXPECT_EQ(event.dropAction(), Qt::CopyAction);
    data.setData(QStringLiteral("text/uri-list"), "https://example.org/a\r\n");
    EXPECT_TRUE(takeDroppedFile(event).isNull());
}
