#include "platform/foundation/NSError.h"
#include <TessaronClasses/TessaronLayoutCreationManager.h>
#include <TessaronClasses/TessaronPanel.h>

#include <QImage>

#include <gtest/gtest.h>

// The application's part of the contract.
class Tessaron::TessaronPanelDelegate
{
};

using namespace Tessaron;

namespace
{

/// Overrides nothing but its size.
class SizedPanel final : public TessaronPanel
{
public:
    explicit SizedPanel(std::uint64_t size)
        : m_size(size)
    {
    }
    std::uint64_t bestSizeApproximation() override { return m_size; }

private:
    const std::uint64_t m_size;
};

class TessaronPanelDefaults : public testing::Test
{
protected:
    TessaronPanel panel;
};

} // namespace

TEST_F(TessaronPanelDefaults, panelWillLoad_isTrue)
{
    EXPECT_TRUE(panel.panelWillLoad());
}

TEST_F(TessaronPanelDefaults, panelShouldUnload_isTrue)
{
    EXPECT_TRUE(panel.panelShouldUnload());
}

TEST_F(TessaronPanelDefaults, view_isNull)
{
    EXPECT_EQ(panel.view(), nullptr);
}

TEST_F(TessaronPanelDefaults, buttonTypes_isNone)
{
    EXPECT_EQ(panel.buttonTypes(), 0u);
}

TEST_F(TessaronPanelDefaults, delegate_isNull)
{
    EXPECT_EQ(panel.delegate(), nullptr);
}

TEST_F(TessaronPanelDefaults, actionMenuTypes_isNone)
{
    EXPECT_EQ(panel.actionMenuTypes(), 0u);
}

TEST_F(TessaronPanelDefaults, customActionMenuItems_isEmpty)
{
    EXPECT_TRUE(panel.customActionMenuItems().isEmpty());
}

TEST_F(TessaronPanelDefaults, actionMenuItemIsEnabled_isFalse)
{
    EXPECT_FALSE(panel.actionMenuItemIsEnabled(nullptr));
}

TEST_F(TessaronPanelDefaults, handledDiscImageFormats_isNone)
{
    EXPECT_EQ(panel.handledDiscImageFormats(), 0);
}

TEST_F(TessaronPanelDefaults, icon_isNull)
{
    EXPECT_TRUE(TessaronPanel::icon().isNull());
}

TEST_F(TessaronPanelDefaults, localizedName_isNull)
{
    EXPECT_TRUE(TessaronPanel::localizedName().isNull());
}

TEST_F(TessaronPanelDefaults, canCreateLayoutAsync_isFalse)
{
    EXPECT_FALSE(panel.canCreateLayoutAsync());
}

TEST_F(TessaronPanelDefaults, createLayoutAsync_isFalse)
{
    EXPECT_FALSE(panel.createLayoutAsyncAndNotifyLayoutCreationManager({}));
}

TEST_F(TessaronPanelDefaults, cancelLayoutCreationAsync_isFalse)
{
    EXPECT_FALSE(panel.cancelLayoutCreationAsync());
}

TEST_F(TessaronPanelDefaults, createLayoutSync_isNullWithoutAnError)
{
    NSError error;
    EXPECT_TRUE(isNullLayout(panel.createLayoutSync(&error)));
    EXPECT_TRUE(error.isNull());
    EXPECT_TRUE(isNullLayout(panel.createLayoutSync(nullptr)));
}

TEST_F(TessaronPanelDefaults, bestSizeApproximation_isZero)
{
    EXPECT_EQ(panel.bestSizeApproximation(), 0u);
}

TEST_F(TessaronPanelDefaults, enableBurnButton_isFalse)
{
    EXPECT_FALSE(panel.enableBurnButton());
}

TEST_F(TessaronPanelDefaults, enableInfoButton_isFalse)
{
    EXPECT_FALSE(panel.enableInfoButton());
}

TEST_F(TessaronPanelDefaults, accessoryViewForType_isNull)
{
    EXPECT_EQ(panel.accessoryViewForType(1), nullptr);
}

TEST_F(TessaronPanelDefaults, emptyDiscInformationMessage_isNull)
{
    EXPECT_TRUE(panel.emptyDiscInformationMessage().isNull());
}

TEST_F(TessaronPanelDefaults, acceptsMediaOfType_isTrueForEachType)
{
    for (const TessaronMediaType type : {-1, 0, 1, 1000})
        EXPECT_TRUE(panel.acceptsMediaOfType(type));
}

TEST_F(TessaronPanelDefaults, arrayOfCDTextBlocks_isEmpty)
{
    EXPECT_TRUE(panel.arrayOfCDTextBlocks().isEmpty());
}

TEST_F(TessaronPanelDefaults, hasCustomSizeTextFormat_isFalse)
{
    EXPECT_FALSE(panel.hasCustomSizeTextFormat());
}

TEST_F(TessaronPanelDefaults, customSizeText_isNull)
{
    EXPECT_TRUE(panel.customSizeText().isNull());
}

TEST_F(TessaronPanelDefaults, operationsWithoutAResult_changeNothing)
{
    panel.panelDidLoad();
    panel.performButtonAction(nullptr);
    panel.performActionMenuItemAction(nullptr);
    panel.getInfo();
    panel.panelDidUnload();
    EXPECT_EQ(panel.delegate(), nullptr);
    EXPECT_FALSE(panel.enableBurnButton());
    EXPECT_TRUE(panel.panelWillLoad());
}

TEST(TessaronPanel, enableBurnButton_testsTheWholeEstimate)
{
    EXPECT_TRUE(SizedPanel(1).enableBurnButton());
    EXPECT_TRUE(SizedPanel(std::uint64_t(1) << 32).enableBurnButton());
    EXPECT_TRUE(SizedPanel(std::uint64_t(7) << 61).enableBurnButton());
    EXPECT_FALSE(SizedPanel(0).enableBurnButton());
}

TEST(TessaronPanel, delegate_isReturnedAsLongAsItLives)
{
    TessaronPanel panel;
    auto delegate = std::make_shared<TessaronPanelDelegate>();
    panel.setDelegate(delegate);
    EXPECT_EQ(panel.delegate(), delegate);
    EXPECT_EQ(delegate.use_count(), 1) << "it is not owned";
    delegate.reset();
    EXPECT_EQ(panel.delegate(), nullptr);
}
