// How a track writer understands what a burn says of itself.

#include "tests/discrecording/burn/TestProducer.h"
#include "tests/imaging/trackwriter/RecordingDelegate.h"
#include "tests/support/TemporaryTree.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace Tessaron::Testing
{

namespace
{

class KRTrackWriterStatus : public testing::Test
{
protected:
    KRTrackWriterStatus()
    {
        // The delegate is kept although there is no file to open; then the file appears.
        (void)writer->writeTrackAndNotifyDelegate(delegate.callbacks());
        m_tree.makeFile("image", "partly written");
    }
    void writeProgress(const QString &state, const QVariant &percent)
    {
        writer->writeStatus({{DRStatusStateKey, state}, {DRStatusPercentCompleteKey, percent}});
    }
    void writeFailure(const QVariantMap &error)
    {
        writer->writeStatus({{DRStatusStateKey, DRStatusStateFailed}, {DRErrorStatusKey, error}});
    }
    [[nodiscard]] bool isFileThere() const { return m_tree.exists("image"); }

private:
    const TemporaryTree m_tree;

protected:
    RecordingDelegate delegate;
    const std::shared_ptr<KRTrackWriter> writer = KRTrackWriter::trackWriterWithTrack(
        trackOfProducer(std::make_shared<TestProducer>(), 1), m_tree.pathText("image"));
};

const QString sentence = QStringLiteral("The disk is full.");

} // namespace

TEST_F(KRTrackWriterStatus, progress_isAQuarterOfThePreparing)
{
    writeProgress(DRStatusStatePreparing, 0.5);
    writeProgress(DRStatusStatePreparing, 1.0);
    EXPECT_EQ(delegate.progress, (std::vector<float>{0.125f, 0.25f}));
}

TEST_F(KRTrackWriterStatus, progress_startsAtAThirdInTheWriting_andNeverExceedsOne)
{
    writeProgress(DRStatusStateTrackWrite, 0.001);
    writeProgress(DRStatusStateTrackWrite, 0.5);
    writeProgress(DRStatusStateTrackWrite, 0.889);
    writeProgress(DRStatusStateTrackWrite, 0.89);
    writeProgress(DRStatusStateTrackWrite, 1.0);
    EXPECT_EQ(delegate.progress,
              (std::vector<float>{float(0.001 * 0.75 + 0.333), float(0.5 * 0.75 + 0.333), float(0.889 * 0.75 + 0.333),
                                  1.0f, 1.0f}));
}

TEST_F(KRTrackWriterStatus, progress_isKeptInOtherStates)
{
    writeProgress(QStringLiteral("SomeOtherState"), 0.4);
    writer->writeStatus({{DRStatusPercentCompleteKey, 0.6}}); // no state at all
    writeProgress(QStringLiteral("SomeOtherState"), 7.0);
    EXPECT_EQ(delegate.progress, (std::vector<float>{0.4f, 0.6f, 1.0f}));
}

TEST_F(KRTrackWriterStatus, progress_isNotSent_withoutAFractionAboveZero)
{
    for (const QString &state : {DRStatusStatePreparing, DRStatusStateTrackWrite, QString()}) {
        writeProgress(state, 0.0);
        writeProgress(state, -1.0);
        writeProgress(state, std::numeric_limits<double>::quiet_NaN());
        writer->writeStatus({{DRStatusStateKey, state}});
    }
    writer->writeStatus({});
    EXPECT_EQ(delegate.heard, QStringList());
    EXPECT_TRUE(isFileThere());
}

TEST_F(KRTrackWriterStatus, done_endsTheWriting_andKeepsTheFile)
{
    writer->writeStatus({{DRStatusStateKey, DRStatusStateDone}});
    EXPECT_EQ(delegate.heard, QStringList{QStringLiteral("end")});
    EXPECT_TRUE(isFileThere());
}

TEST_F(KRTrackWriterStatus, failure_carriesCodeAndInformation_andRemovesTheFileFirst)
{
    bool wasThere = true;
    delegate.onEnd = [&](KRTrackWriter &) { wasThere = isFileThere(); };
    writeFailure({{DRErrorStatusErrorKey, -34},
                  {DRErrorStatusErrorStringKey, QStringLiteral("general")},
                  {DRErrorStatusErrorInfoStringKey, sentence}});
    EXPECT_EQ(delegate.heard, QStringList{QStringLiteral("failure")});
    EXPECT_EQ(delegate.error, NSError(NSOSStatusErrorDomain, -34, {{NSLocalizedFailureReasonErrorKey, sentence}}));
    EXPECT_FALSE(wasThere);
}

TEST_F(KRTrackWriterStatus, failure_hasACodeOf32Bits)
{
    writeFailure({{DRErrorStatusErrorKey, 0x80020063u}, {DRErrorStatusErrorInfoStringKey, sentence}});
    EXPECT_EQ(delegate.error.code(), -2147352477);
}

TEST_F(KRTrackWriterStatus, failure_takesTheGeneralText_whenThereIsNoInformation)
{
    writeFailure({{DRErrorStatusErrorKey, -34}, {DRErrorStatusErrorStringKey, sentence}});
    EXPECT_EQ(delegate.error.localizedFailureReason(), sentence);
}

TEST_F(KRTrackWriterStatus, failure_countsAsCancel_whenTheMessageBeginsWith0x)
{
    writeFailure({{DRErrorStatusErrorKey, -34}, {DRErrorStatusErrorInfoStringKey, QStringLiteral("0x80020063, 5")}});
    EXPECT_EQ(delegate.heard, QStringList{QStringLiteral("cancel")});
    EXPECT_FALSE(isFileThere());
}

TEST_F(KRTrackWriterStatus, failure_countsAsCancel_whenTheGeneralTextBeginsWith0x)
{
    writeFailure({{DRErrorStatusErrorKey, -34}, {DRErrorStatusErrorStringKey, QStringLiteral("0x80020063")}});
    EXPECT_EQ(delegate.heard, QStringList{QStringLiteral("cancel")});
}

TEST_F(KRTrackWriterStatus, failure_countsAsCancel_withoutMessageOrCode)
{
    writeFailure({{DRErrorStatusErrorKey, -34}});
    writeFailure({{DRErrorStatusErrorInfoStringKey, sentence}});
    writeFailure({});
    EXPECT_EQ(delegate.heard,
              (QStringList{QStringLiteral("cancel"), QStringLiteral("cancel"), QStringLiteral("cancel")}));
}

TEST_F(KRTrackWriterStatus, failure_countsAsCancel_withTheCodeOfACancel)
{
    writeFailure({{DRErrorStatusErrorKey, -2147352474}, {DRErrorStatusErrorInfoStringKey, sentence}});
    writeFailure({{DRErrorStatusErrorKey, 0x80020066u}, {DRErrorStatusErrorInfoStringKey, sentence}});
    EXPECT_EQ(delegate.heard, (QStringList{QStringLiteral("cancel"), QStringLiteral("cancel")}));
}

TEST_F(KRTrackWriterStatus, failure_countsAsFailure_when0xStandsElsewhere)
{
    writeFailure({{DRErrorStatusErrorKey, -34}, {DRErrorStatusErrorInfoStringKey, QStringLiteral("Error 0x80020063")}});
    EXPECT_EQ(delegate.heard, QStringList{QStringLiteral("failure")});
}

TEST_F(KRTrackWriterStatus, failure_isNotReported_withoutErrorRecord)
{
    writer->writeStatus({{DRStatusStateKey, DRStatusStateFailed}});
    EXPECT_EQ(delegate.heard, QStringList());
    EXPECT_FALSE(isFileThere()) << "but the file is removed";
}

TEST_F(KRTrackWriterStatus, nothingIsSent_toADelegateThatAnswersNothing)
{
    const TemporaryTree tree;
    const auto other = KRTrackWriter::trackWriterWithTrack(trackOfProducer(std::make_shared<TestProducer>(), 1),
                                                           tree.pathText("missing"));
    (void)other->writeTrackAndNotifyDelegate({});
    other->writeStatus({{DRStatusStateKey, DRStatusStateTrackWrite}, {DRStatusPercentCompleteKey, 0.5}});
    other->writeStatus({{DRStatusStateKey, DRStatusStateDone}});
    other->writeStatus({{DRStatusStateKey, DRStatusStateFailed}, {DRErrorStatusKey, QVariantMap()}});
    EXPECT_EQ(delegate.heard, QStringList());
}

} // namespace Tessaron::Testing
