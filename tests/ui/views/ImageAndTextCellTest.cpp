#include <QApplication>
#include <QIcon>
#include <QItemEditorFactory>
#include <QLineEdit>
#include <QPainter>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include <TessaronClassesUI/ImageAndTextCell.h>
#include <algorithm>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

QImage colouredImage(int width, int height, const QColor &colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

/// The smallest rectangle that holds all pixels of a colour.
QRect whereColourIs(const QImage &picture, const QColor &colour)
{
    QRect found;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y) == colour)
                found |= QRect(x, y, 1, 1);
    return found;
}

/// A tree of one item with the text "name".
class ImageAndTextCellTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_model.appendRow(new QStandardItem(QStringLiteral("name")));
        m_view.setModel(&m_model);
        m_view.setItemDelegate(&m_cell);
        m_view.setHeaderHidden(true);
        m_view.setRootIsDecorated(false);
        m_view.resize(200, 100);
    }

    [[nodiscard]] QModelIndex index() const { return m_model.index(0, 0); }

    [[nodiscard]] QStyleOptionViewItem option(const QRect &frame = {0, 0, 100, 21}) const
    {
        QStyleOptionViewItem result;
        result.initFrom(&m_view);
        result.widget = &m_view;
        result.rect = frame;
        result.decorationSize = QSize(16, 16);
        return result;
    }

    /// A cell drawn at (0, 0), in coordinates that count downwards or upwards.
    [[nodiscard]] QImage drawn(const QRect &frame, bool upwards = false) const
    {
        QImage picture(frame.size(), QImage::Format_ARGB32);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        if (upwards) {
            painter.translate(0, frame.height());
            painter.scale(1, -1);
        }
        m_cell.paint(&painter, option(frame), index());
        return picture;
    }

    QStandardItemModel m_model;
    QTreeView m_view;
    ImageAndTextCell m_cell;
};

} // namespace

TEST_F(ImageAndTextCellTest, imageFrame_is3PointsFromTheLeftAndCentredRoundedUp)
{
    m_cell.setImage(colouredImage(16, 16, Qt::red));
    EXPECT_EQ(m_cell.imageFrameForCellFrame({10, 20, 100, 20}), QRectF(13, 22, 16, 16));
    EXPECT_EQ(m_cell.imageFrameForCellFrame({10, 20, 100, 21}), QRectF(13, 23, 16, 16));
    EXPECT_EQ(m_cell.imageFrameForCellFrame({0, 0, 100, 11}), QRectF(3, -2, 16, 16)) << "an image that is too high";
}

TEST_F(ImageAndTextCellTest, imageFrame_isNull_withoutAnImage)
{
    EXPECT_EQ(m_cell.imageFrameForCellFrame({10, 20, 100, 20}), QRectF());
    m_cell.setImage(colouredImage(16, 16, Qt::red));
    m_cell.setImage({});
    EXPECT_EQ(m_cell.imageFrameForCellFrame({10, 20, 100, 20}), QRectF());
}

TEST_F(ImageAndTextCellTest, imageFrame_isInPoints_whenTheImageHasMorePixels)
{
    QImage image = colouredImage(32, 32, Qt::red);
    image.setDevicePixelRatio(2);
    m_cell.setImage(image);
    EXPECT_EQ(m_cell.imageFrameForCellFrame({0, 0, 100, 20}), QRectF(3, 2, 16, 16));
}

TEST_F(ImageAndTextCellTest, cellSize_is3PointsWiderThanThatOfTheBaseClass_withoutAnImage)
{
    const QStyledItemDelegate base;
    EXPECT_EQ(m_cell.cellSize(option(), index()), base.sizeHint(option(), index()) + QSize(3, 0));
    EXPECT_EQ(m_cell.sizeHint(option(), index()), m_cell.cellSize(option(), index()));
}

TEST_F(ImageAndTextCellTest, cellSize_isWiderByTheImageAnd3Points)
{
    const QStyledItemDelegate base;
    m_cell.setImage(colouredImage(40, 16, Qt::red));
    EXPECT_EQ(m_cell.cellSize(option(), index()), base.sizeHint(option(), index()) + QSize(43, 0));
}

TEST_F(ImageAndTextCellTest, copy_hasTheSameImage_andKeepsItWhenTheOtherGetsANewOne)
{
    const QImage red = colouredImage(4, 4, Qt::red);
    m_cell.setImage(red);
    const std::unique_ptr<ImageAndTextCell> copy = m_cell.copy();
    m_cell.setImage(colouredImage(4, 4, Qt::blue));
    EXPECT_EQ(copy->image(), red);
    EXPECT_EQ(m_cell.image().pixelColor(0, 0), QColor(Qt::blue));
}

TEST_F(ImageAndTextCellTest, copy_makesTheSameEditors)
{
    QItemEditorFactory factory;
    m_cell.setItemEditorFactory(&factory);
    EXPECT_EQ(m_cell.copy()->itemEditorFactory(), &factory);
}

TEST_F(ImageAndTextCellTest, paint_putsTheImageInItsFrame)
{
    m_cell.setImage(colouredImage(16, 16, Qt::red));
    EXPECT_EQ(whereColourIs(drawn({0, 0, 100, 20}), Qt::red), QRect(3, 2, 16, 16));
    EXPECT_EQ(whereColourIs(drawn({0, 0, 100, 21}), Qt::red), QRect(3, 3, 16, 16));
}

TEST_F(ImageAndTextCellTest, paint_roundsTheLowerEdge_ofAnImageOfHalfPoints)
{
    QImage image = colouredImage(31, 31, Qt::red);
    image.setDevicePixelRatio(2);
    m_cell.setImage(image);
    const auto drawnAtTwice = [&](bool upwards) {
        QImage picture(200, 42, QImage::Format_ARGB32);
        picture.setDevicePixelRatio(2);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        if (upwards) {
            painter.translate(0, 21);
            painter.scale(1, -1);
        }
        m_cell.paint(&painter, option(), index());
        painter.end();
        return whereColourIs(picture, Qt::red);
    };
    // 21 points high, the image 15.5: the lower edge at ceil(18.25) points from above, or at ceil(2.75) from below.
    EXPECT_EQ(drawnAtTwice(false), QRect(6, 7, 31, 31)) << "in pixels of half a point";
    EXPECT_EQ(drawnAtTwice(true), QRect(6, 5, 31, 31));
}

TEST_F(ImageAndTextCellTest, paint_writesInTheColourOfADarkPalette)
{
    QPalette dark;
    dark.setColor(QPalette::Text, Qt::white);
    dark.setColor(QPalette::Base, Qt::black);
    m_view.setPalette(dark);
    m_cell.setImage(colouredImage(16, 16, Qt::black));
    QImage picture(100, 21, QImage::Format_ARGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    m_cell.paint(&painter, option(), index());
    painter.end();
    int most = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            most = std::max(most, qGray(picture.pixel(x, y)));
    EXPECT_GT(most, 150);
}

TEST_F(ImageAndTextCellTest, paint_cutsAnImageThatIsWiderThanTheCell)
{
    m_cell.setImage(colouredImage(60, 4, Qt::red));
    QImage picture(80, 20, QImage::Format_ARGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    m_cell.paint(&painter, option({0, 0, 40, 20}), index());
    painter.end();
    EXPECT_EQ(whereColourIs(picture, Qt::red), QRect(3, 8, 37, 4));
    EXPECT_EQ(m_cell.textFrameForCellFrame({0, 0, 40, 20}), QRectF(40, 0, 0, 20));
}

TEST_F(ImageAndTextCellTest, checkBox_isClickedWhereItIsDrawn)
{
    m_model.item(0)->setCheckable(true);
    m_cell.setImage(colouredImage(60, 16, Qt::red));
    m_view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
    const QRect cell = m_view.visualRect(index());
    QTest::mouseClick(m_view.viewport(), Qt::LeftButton, {}, QPoint(cell.left() + 10, cell.center().y()));
    EXPECT_EQ(m_model.item(0)->checkState(), Qt::Unchecked) << "the image is there";
    QTest::mouseClick(m_view.viewport(), Qt::LeftButton, {}, QPoint(cell.left() + 63 + 10, cell.center().y()));
    EXPECT_EQ(m_model.item(0)->checkState(), Qt::Checked);
}

TEST_F(ImageAndTextCellTest, paint_putsTheImageUprightOneRowHigher_whereYCountsUpwards)
{
    QImage image = colouredImage(16, 16, Qt::red);
    image.setPixelColor(0, 0, Qt::blue);
    m_cell.setImage(image);
    const QImage picture = drawn({0, 0, 100, 21}, true);
    EXPECT_EQ(whereColourIs(picture, Qt::red), QRect(3, 2, 16, 16)) << "3 rows below it, 2 above";
    EXPECT_EQ(whereColourIs(picture, Qt::blue), QRect(3, 2, 1, 1));
}

TEST_F(ImageAndTextCellTest, paint_leavesTheTextRightOfTheImage)
{
    m_model.item(0)->setForeground(QBrush(Qt::black));
    m_cell.setImage(colouredImage(60, 4, Qt::red));
    const QImage picture = drawn({0, 0, 160, 20});
    for (int x = 0; x < 63; ++x)
        for (int y = 0; y < picture.height(); ++y)
            ASSERT_TRUE(picture.pixelColor(x, y) == QColor(Qt::white) || picture.pixelColor(x, y) == QColor(Qt::red));
    m_cell.setImage(colouredImage(60, 4, Qt::white));
    QImage withoutText(picture.size(), picture.format());
    withoutText.fill(Qt::white);
    EXPECT_NE(drawn({0, 0, 160, 20}), withoutText) << "the text is drawn, too";
}

TEST_F(ImageAndTextCellTest, paint_fillsTheSliceBesideTheImageWithTheBackground)
{
    m_model.item(0)->setBackground(QBrush(Qt::green));
    m_cell.setImage(colouredImage(16, 16, Qt::red));
    const QImage picture = drawn({0, 0, 100, 20});
    EXPECT_EQ(picture.pixelColor(0, 0), QColor(Qt::green));
    EXPECT_EQ(picture.pixelColor(10, 19), QColor(Qt::green));
    EXPECT_EQ(picture.pixelColor(10, 10), QColor(Qt::red));
    EXPECT_EQ(picture.pixelColor(99, 19), QColor(Qt::green));
}

TEST_F(ImageAndTextCellTest, paint_isThatOfTheBaseClass_withoutAnImage)
{
    const QImage mine = drawn({0, 0, 100, 20});
    QImage theirs(mine.size(), mine.format());
    theirs.fill(Qt::white);
    QPainter painter(&theirs);
    QStyledItemDelegate().paint(&painter, option({0, 0, 100, 20}), index());
    painter.end();
    EXPECT_EQ(mine, theirs);
}

TEST_F(ImageAndTextCellTest, paint_takesTheImageOfTheModel_whileNoneIsSet)
{
    m_model.item(0)->setIcon(QIcon(QPixmap::fromImage(colouredImage(16, 16, Qt::red))));
    EXPECT_EQ(whereColourIs(drawn({0, 0, 100, 20}), Qt::red), QRect(3, 2, 16, 16));
    m_cell.setImage(colouredImage(8, 8, Qt::blue));
    EXPECT_EQ(whereColourIs(drawn({0, 0, 100, 20}), Qt::red), QRect());
    EXPECT_EQ(whereColourIs(drawn({0, 0, 100, 20}), Qt::blue), QRect(3, 6, 8, 8));
}

TEST_F(ImageAndTextCellTest, editing_happensBesideTheImage)
{
    m_cell.setImage(colouredImage(16, 16, Qt::red));
    m_model.item(0)->setEditable(true);
    m_view.setEditTriggers(QAbstractItemView::DoubleClicked);
    m_view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
    const QRect cell = m_view.visualRect(index());
    QTest::mouseClick(m_view.viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(m_view.viewport(), Qt::LeftButton, {}, cell.center());
    auto *const editor = m_view.viewport()->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    EXPECT_GE(editor->geometry().left(), cell.left() + 19);
    QTest::keyClicks(editor, QStringLiteral("another"));
    QTest::keyClick(editor, Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return index().data().toString() == QStringLiteral("another"); }));
}

TEST_F(ImageAndTextCellTest, editAndSelectWithFrame_placeTheEditorOverTheText)
{
    m_cell.setImage(colouredImage(16, 16, Qt::red));
    m_view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
    auto *const editor = new QLineEdit(QStringLiteral("some text"));
    m_cell.editWithFrame({10, 20, 100, 21}, *m_view.viewport(), *editor);
    EXPECT_EQ(editor->parentWidget(), m_view.viewport());
    EXPECT_EQ(editor->geometry(), QRect(29, 20, 81, 21));
    EXPECT_TRUE(editor->isVisible());
    m_cell.selectWithFrame({0, 0, 100, 21}, *m_view.viewport(), *editor, 5, 4);
    EXPECT_EQ(editor->geometry(), QRect(19, 0, 81, 21));
    EXPECT_EQ(editor->selectedText(), QStringLiteral("text"));
    m_cell.selectWithFrame({0, 0, 100, 21}, *m_view.viewport(), *editor, 2, 0);
    EXPECT_FALSE(editor->hasSelectedText());
    EXPECT_EQ(editor->cursorPosition(), 2);
    QImage image = colouredImage(31, 31, Qt::red);
    image.setDevicePixelRatio(2);
    m_cell.setImage(image);
    m_cell.editWithFrame({10, 20, 100, 21}, *m_view.viewport(), *editor);
    EXPECT_EQ(editor->geometry(), QRect(29, 20, 81, 21)) << "15.5 points wide: the edge goes away from it";
    m_cell.setImage({});
    m_cell.editWithFrame({10, 20, 100, 21}, *m_view.viewport(), *editor);
    EXPECT_EQ(editor->geometry(), QRect(10, 20, 100, 21));
}
