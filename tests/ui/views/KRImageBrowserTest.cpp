#include "platform/foundation/FileSystemRepresentation.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QListView>
#include <QPixmap>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <TessaronClassesUI/KRImageBrowserItem.h>
#include <TessaronClassesUI/KRImageBrowserModel.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

using namespace Tessaron;

namespace
{

class KRImageBrowserTest : public testing::Test
{
protected:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

    QString writePicture(const QString &name, QSize size, const QColor &colour) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        EXPECT_TRUE(image.save(path(name), "PNG"));
        return path(name);
    }

    [[nodiscard]] static QPixmap shown(const KRImageBrowserModel &model, int row)
    {
        return model.data(model.index(row), Qt::DecorationRole).value<QPixmap>();
    }

    /// Asks for the thumbnail of a row and waits for it.
    [[nodiscard]] static QImage thumbnail(KRImageBrowserModel &model, int row)
    {
        QSignalSpy changed(&model, &KRImageBrowserModel::dataChanged);
        (void)shown(model, row);
        EXPECT_TRUE(changed.wait());
        return shown(model, row).toImage();
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(KRImageBrowserTest, item_isNull_whereThereIsNoFile)
{
    EXPECT_EQ(KRImageBrowserItem::initWithPath(path(QStringLiteral("missing"))), nullptr);
    EXPECT_EQ(KRImageBrowserItem::initWithPath({}), nullptr);
}

TEST_F(KRImageBrowserTest, title_isTheName_orTheDisplayNameOfTheFile)
{
    const auto item = KRImageBrowserItem::initWithPath(writePicture(QStringLiteral("a.png"), {4, 4}, Qt::red));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->imageTitle(), QStringLiteral("a.png"));
    item->setName(QStringLiteral("My picture"));
    EXPECT_EQ(item->imageTitle(), QStringLiteral("My picture"));
    item->setName({});
    EXPECT_EQ(item->imageTitle(), QStringLiteral("a.png"));
}

TEST_F(KRImageBrowserTest, uid_isANumberOfItsOwn)
{
    const QString picture = writePicture(QStringLiteral("a.png"), {4, 4}, Qt::red);
    const auto first = KRImageBrowserItem::initWithPath(picture);
    const auto second = KRImageBrowserItem::initWithPath(picture);
    bool isNumber = false;
    first->imageUID().toUInt(&isNumber);
    EXPECT_TRUE(isNumber);
    EXPECT_NE(first->imageUID(), second->imageUID());
    EXPECT_EQ(first->imageUID(), first->imageUID());
}

TEST_F(KRImageBrowserTest, representation_isThePathOfTheFile)
{
    const QString picture = writePicture(QStringLiteral("a.png"), {4, 4}, Qt::red);
    const auto item = KRImageBrowserItem::initWithPath(picture);
    EXPECT_EQ(item->imageRepresentationType(), IKImageBrowserPathRepresentationType);
    EXPECT_EQ(item->imageRepresentation(), picture);
    const auto moved = KRImageBrowserItem::initWithPath(picture);
    EXPECT_TRUE(QFile::rename(picture, path(QStringLiteral("b.png"))));
    EXPECT_EQ(moved->imageRepresentation(), path(QStringLiteral("b.png")));
}

TEST_F(KRImageBrowserTest, plainProperties_areKept)
{
    const auto item = KRImageBrowserItem::initWithPath(writePicture(QStringLiteral("a.png"), {4, 4}, Qt::red));
    EXPECT_FALSE(item->comesFromiPhoto());
    EXPECT_TRUE(item->temporaryConvertedJpegPath().isNull());
    item->setComesFromiPhoto(true);
    item->setTemporaryConvertedJpegPath(QStringLiteral("/tmp/a.jpg"));
    EXPECT_TRUE(item->comesFromiPhoto());
    EXPECT_EQ(item->temporaryConvertedJpegPath(), QStringLiteral("/tmp/a.jpg"));
}

TEST_F(KRImageBrowserTest, model_givesABlankFirst_andTheThumbnailLater)
{
    KRImageBrowserModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QString wide = writePicture(QStringLiteral("wide.png"), {1000, 500}, Qt::red);
    model.setItems({KRImageBrowserItem::initWithPath(wide), nullptr});
    ASSERT_EQ(model.rowCount(), 1);
    model.setThumbnailSize({100, 100});
    EXPECT_EQ(shown(model, 0).size(), QSize(100, 100));
    EXPECT_EQ(shown(model, 0).toImage().pixelColor(50, 50).alpha(), 0);
    const QImage made = thumbnail(model, 0);
    EXPECT_EQ(made.size(), QSize(100, 100));
    EXPECT_EQ(made.pixelColor(50, 50), QColor(Qt::red));
    EXPECT_EQ(made.pixelColor(50, 24).alpha(), 0) << "twice as wide as high, in the middle";
    EXPECT_EQ(made.pixelColor(0, 26), QColor(Qt::red));
    EXPECT_EQ(made.pixelColor(99, 73), QColor(Qt::red));
}

TEST_F(KRImageBrowserTest, thumbnail_isNeverLargerThanThePicture)
{
    KRImageBrowserModel model;
    model.setItems({KRImageBrowserItem::initWithPath(writePicture(QStringLiteral("a.png"), {10, 10}, Qt::red))});
    const QImage made = thumbnail(model, 0);
    EXPECT_EQ(made.pixelColor(64, 64), QColor(Qt::red));
    EXPECT_EQ(made.pixelColor(58, 64).alpha(), 0);
}

TEST_F(KRImageBrowserTest, thumbnail_hasMorePixels_whereAPointHas)
{
    KRImageBrowserModel model;
    model.setThumbnailSize({50, 50}, 2);
    model.setItems({KRImageBrowserItem::initWithPath(writePicture(QStringLiteral("a.png"), {500, 500}, Qt::red))});
    EXPECT_EQ(thumbnail(model, 0).size(), QSize(100, 100));
    EXPECT_EQ(shown(model, 0).deviceIndependentSize(), QSizeF(50, 50));
}

TEST_F(KRImageBrowserTest, fileWithoutAPicture_isToldInTheToolTip_andNotReadAgain)
{
    QFile text(path(QStringLiteral("text.png")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("no picture");
    text.close();
    KRImageBrowserModel model;
    model.setItems({KRImageBrowserItem::initWithPath(text.fileName())});
    EXPECT_EQ(thumbnail(model, 0).pixelColor(64, 64).alpha(), 0);
    EXPECT_TRUE(
        model.data(model.index(0), Qt::ToolTipRole).toString().startsWith(QStringLiteral("The picture cannot")));
    QSignalSpy changed(&model, &KRImageBrowserModel::dataChanged);
    (void)shown(model, 0);
    EXPECT_FALSE(changed.wait(50));
}

TEST_F(KRImageBrowserTest, pipe_doesNotHoldTheThumbnailsUp)
{
    const QString pipe = path(QStringLiteral("pipe.png"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    KRImageBrowserModel model;
    model.setItems({KRImageBrowserItem::initWithPath(pipe)});
    EXPECT_EQ(thumbnail(model, 0).pixelColor(64, 64).alpha(), 0);
    EXPECT_EQ(model.data(model.index(0), Qt::ToolTipRole).toString(),
              QStringLiteral("This is not a file with a picture."));
}

TEST_F(KRImageBrowserTest, nameThatIsNotUtf8_isReadLikeAnyOther)
{
    const QByteArray bytes = QFile::encodeName(m_folder.path()) + "/caf\xe9.png";
    const QString picture = writePicture(QStringLiteral("a.png"), {200, 200}, Qt::red);
    ASSERT_EQ(::rename(QFile::encodeName(picture).constData(), bytes.constData()), 0);
    KRImageBrowserModel model;
    model.setItems({KRImageBrowserItem::initWithPath(stringWithFileSystemRepresentation(bytes))});
    EXPECT_EQ(thumbnail(model, 0).pixelColor(64, 64), QColor(Qt::red));
}

TEST_F(KRImageBrowserTest, modelThatEnds_whileThumbnailsAreMade_leavesNothingBehind)
{
    std::vector<std::shared_ptr<KRImageBrowserItem>> items;
    items.reserve(300);
    for (int number = 0; number < 300; ++number)
        items.push_back(
            KRImageBrowserItem::initWithPath(writePicture(QStringLiteral("%1.png").arg(number), {300, 300}, Qt::red)));
    const auto threadCount = [] { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); };
    std::jthread([] {}).join(); // with its first one, ThreadSanitizer starts a thread of its own
    const qsizetype before = threadCount();
    for (int round = 0; round < 5; ++round) {
        KRImageBrowserModel model;
        model.setItems(items);
        for (int row = 0; row < model.rowCount(); ++row)
            (void)shown(model, row);
        QTest::qWait(round);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return threadCount() == before; })) << "the system takes a moment to forget them";
}

TEST_F(KRImageBrowserTest, requestsThatWereDroppedWhileScrolling_areMadeWhenTheirItemsAreShownAgain)
{
    const QString picture = writePicture(QStringLiteral("a.png"), {20, 20}, Qt::red);
    std::vector<std::shared_ptr<KRImageBrowserItem>> items;
    items.reserve(600);
    for (int number = 0; number < 600; ++number)
        items.push_back(KRImageBrowserItem::initWithPath(picture));
    KRImageBrowserModel model;
    model.setItems(items);
    for (int row = 0; row < model.rowCount(); ++row)
        (void)shown(model, row);
    for (int row = 0; row < model.rowCount(); ++row)
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown(model, row).toImage().pixelColor(64, 64) == QColor(Qt::red); }));
}

TEST_F(KRImageBrowserTest, listView_showsTheThumbnails)
{
    KRImageBrowserModel model;
    model.setItems({KRImageBrowserItem::initWithPath(writePicture(QStringLiteral("a.png"), {300, 300}, Qt::red))});
    QListView view;
    view.setViewMode(QListView::IconMode);
    view.setIconSize(model.thumbnailSize());
    view.setModel(&model);
    view.resize(300, 300);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    const auto showsRed = [&] {
        const QImage picture = view.grab().toImage();
        return picture.pixelColor(view.visualRect(model.index(0)).center() - QPoint(0, 10)) == QColor(Qt::red);
    };
    EXPECT_TRUE(QTest::qWaitFor(showsRed));
}
