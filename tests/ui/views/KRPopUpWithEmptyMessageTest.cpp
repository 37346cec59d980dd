#include <QAbstractItemView>
#include <QTest>

#include <TessaronClassesUI/KRPopUpWithEmptyMessage.h>
#include <algorithm>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

class KRPopUpWithEmptyMessageTest : public testing::Test
{
protected:
    void SetUp() override { m_popUp.resize(200, 26); }

    void addItems(int count)
    {
        for (int number = 1; number <= count; ++number)
            m_popUp.addItem(QStringLiteral("Item %1").arg(number));
    }

    [[nodiscard]] bool opensWhenClicked()
    {
        m_popUp.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&m_popUp));
        QTest::mouseClick(&m_popUp, Qt::LeftButton, {}, m_popUp.rect().center());
        const bool isOpen = m_popUp.view()->isVisible();
        m_popUp.hidePopup();
        return isOpen;
    }

    /// The part of the button that is not of its background.
    [[nodiscard]] QRect drawn()
    {
        QImage picture(m_popUp.size(), QImage::Format_ARGB32);
        picture.fill(Qt::white);
        m_popUp.render(&picture, {}, {}, {});
        QRect found;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixelColor(x, y) != QColor(Qt::white))
                    found |= QRect(x, y, 1, 1);
        return found;
    }

    KRPopUpWithEmptyMessage m_popUp;
};

} // namespace

TEST_F(KRPopUpWithEmptyMessageTest, click_opensTheMenu_fromTwoItemsOn)
{
    EXPECT_FALSE(opensWhenClicked());
    addItems(1);
    EXPECT_FALSE(opensWhenClicked());
    m_popUp.clear();
    addItems(2);
    EXPECT_TRUE(opensWhenClicked());
}

TEST_F(KRPopUpWithEmptyMessageTest, message_isDrawnInTheMiddle_withoutItems)
{
    m_popUp.setEmptyMessage(QStringLiteral("No drive"));
    const QRect text = drawn();
    ASSERT_TRUE(text.isValid());
    EXPECT_NEAR(text.center().x(), 100, 3);
    EXPECT_NEAR(text.center().y(), 13, 3);
    m_popUp.setEmptyMessage({});
    EXPECT_FALSE(drawn().isValid()) << "neither a frame nor arrows";
}

TEST_F(KRPopUpWithEmptyMessageTest, titleOfTheOnlyItem_isDrawnAtTheLeft_withoutArrows)
{
    m_popUp.setEmptyMessage(QStringLiteral("No drive"));
    addItems(1);
    const QRect text = drawn();
    ASSERT_TRUE(text.isValid());
    EXPECT_GE(text.left(), 5);
    EXPECT_LE(text.left(), 8);
    EXPECT_GE(text.top(), 3);
    EXPECT_LT(text.right(), 100) << "no arrows at the right";
}

TEST_F(KRPopUpWithEmptyMessageTest, texts_haveTheColourOfThePalette_alsoOfADarkOne)
{
    QPalette dark;
    dark.setColor(QPalette::WindowText, Qt::white);
    dark.setColor(QPalette::Window, Qt::black);
    m_popUp.setPalette(dark);
    m_popUp.setEmptyMessage(QStringLiteral("IIIII"));
    const auto whitest = [this] {
        QImage picture(m_popUp.size() * 2, QImage::Format_ARGB32);
        picture.setDevicePixelRatio(2);
        picture.fill(Qt::black);
        m_popUp.render(&picture, {}, {}, {});
        int most = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                most = std::max(most, qGray(picture.pixel(x, y)));
        return most;
    };
    EXPECT_GT(whitest(), 200);
    m_popUp.addItem(QStringLiteral("IIIII"));
    EXPECT_GT(whitest(), 200);
    m_popUp.setItemText(0, {});
    EXPECT_EQ(whitest(), 0) << "neither a frame nor arrows";
}

TEST_F(KRPopUpWithEmptyMessageTest, textThatIsTooLong_staysWithinTheButton)
{
    m_popUp.resize(60, 26);
    m_popUp.addItem(QStringLiteral("A title that is far too long for the button"));
    EXPECT_LT(drawn().right(), 55);
    m_popUp.clear();
    m_popUp.setEmptyMessage(QStringLiteral("A message that is far too long for the button"));
    EXPECT_LT(drawn().right(), 58);
}

TEST_F(KRPopUpWithEmptyMessageTest, twoItems_areDrawnAsByTheBaseClass)
{
    addItems(2);
    QComboBox other;
    other.resize(m_popUp.size());
    other.addItems({QStringLiteral("Item 1"), QStringLiteral("Item 2")});
    EXPECT_EQ(m_popUp.grab().toImage(), other.grab().toImage());
}

TEST_F(KRPopUpWithEmptyMessageTest, emptyMessage_isAProperty)
{
    EXPECT_TRUE(m_popUp.setProperty("emptyMessage", QStringLiteral("Nothing")));
    EXPECT_EQ(m_popUp.emptyMessage(), QStringLiteral("Nothing"));
}
