#include "tests/tools/BurnFixture.h"
#include "tests/tools/WriteGate.h"

#include <QFile>
#include <QJsonArray>

#include <csignal>

namespace Tessaron::Testing
{

namespace
{

class BurnToDrive : public BurnFixture
{
protected:
    BurnToDrive() { makeOrdinaryTree(); }

    [[nodiscard]] static QString kindOfError(const QJsonObject &report)
    {
        return report[u"error"].toObject()[u"kind"].toString();
    }
};

class BurnKinds : public BurnToDrive, public testing::WithParamInterface<KindOfDisc>
{
};

TEST_P(BurnKinds, blankDisc_isWrittenClosedAndCompared)
{
    insert(GetParam().profile, GetParam().blocks);
    const QJsonObject report = burnt(0, {"--verify"});
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_TRUE(
        report[u"disc"].toObject()[u"profileName"].toString().startsWith(QString::fromUtf8(GetParam().profileName)));
    EXPECT_EQ(report[u"differenceCount"], 0);
    EXPECT_TRUE(disc().isOverwritable() || disc().status == FakeDisc::Status::Complete);
}

INSTANTIATE_TEST_SUITE_P(BurnKinds, BurnKinds,
                         testing::Values(KindOfDisc{"CDR", FakeProfile::CDR, cdBlocks, "CD-R"},
                                         KindOfDisc{"CDRW", FakeProfile::CDRW, cdBlocks, "CD-RW"},
                                         KindOfDisc{"DVDPlusR", FakeProfile::DVDPlusR, dvdPlusBlocks, "DVD+R"},
                                         KindOfDisc{"DVDPlusRW", FakeProfile::DVDPlusRW, dvdPlusBlocks, "DVD+RW"},
                                         KindOfDisc{"DVDMinusR", FakeProfile::DVDMinusR, dvdMinusBlocks, "DVD-R"},
                                         KindOfDisc{"DVDMinusRW", FakeProfile::DVDMinusRW, dvdMinusBlocks, "DVD-RW"},
                                         KindOfDisc{"DVDMinusRWOverwritable", FakeProfile::DVDMinusRWOverwrite,
                                                    dvdMinusBlocks, "DVD-RW"},
                                         KindOfDisc{"BDR", FakeProfile::BDR, 11'826'176, "BD-R"},
                                         KindOfDisc{"BDRE", FakeProfile::BDRE, 11'826'176, "BD-RE"}),
                         nameOfTest<KindOfDisc>);

TEST_F(BurnToDrive, sound_isSentAtOnce_withItsCueSheet)
{
    const QByteArray sound = QByteArray(qsizetype(2352) * 700, '\1') + QByteArray(qsizetype(2352) * 800, '\2');
    m_tree.makeFile("album.bin", sound);
    m_tree.makeFile("album.cue",
                    "CATALOG 4012345678901\nFILE \"album.bin\" BINARY\n"
                    "  TRACK 01 AUDIO\n    ISRC DEABC2400001\n    INDEX 01 00:00:00\n"
                    "  TRACK 02 AUDIO\n    INDEX 00 00:09:25\n    INDEX 01 00:10:00\n    INDEX 02 00:15:00\n");
    insert(FakeProfile::CDR, cdBlocks);
    const ChildResult result = runWithDrive({"burn", "--drive", "/dev/sr0", "--json", m_tree.path("album.cue")});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"tracks"], 2);
    EXPECT_EQ(sectors(0, 1500, 2352), sound);
    ASSERT_EQ(disc().tracks.size(), 2u);
    EXPECT_TRUE(disc().tracks[1].isAudio);
    EXPECT_EQ(disc().tracks[1].start, 750);
    // Entries of 8 bytes: the catalogue number in two, the ISRC in two, and index 2 of track 2 at 00:17:00.
    const std::string sheet = disc().cueSheet;
    EXPECT_EQ(sheet.substr(0, 32), "02343031323334350236373839303100");
    EXPECT_EQ(sheet.substr(48, 32), "03014445414243320301343030303031");
    EXPECT_NE(sheet.find("0102020000001100"), std::string::npos) << sheet;
}

TEST_F(BurnToDrive, dataBeforeSound_isWrittenTrackByTrack_andTheLossIsSaid)
{
    m_tree.makeFile("mixed.bin", QByteArray(qsizetype(2048) * 400, '\3') + QByteArray(qsizetype(2352) * 700, '\4'));
    m_tree.makeFile("mixed.toc",
                    "CD_ROM\nTRACK MODE1\nDATAFILE \"mixed.bin\" 00:05:25\n"
                    "TRACK AUDIO\nISRC \"DEABC2400001\"\nFILE \"mixed.bin\" #819200 0 00:09:25\n");
    insert(FakeProfile::CDR, cdBlocks);
    const ChildResult result = runWithDrive({"burn", "--drive", "/dev/sr0", "--json", m_tree.path("mixed.toc")});
    EXPECT_EQ(result.exitStatus, 3) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("ISRC of track 2 is left out")) << result.errors.constData();
    ASSERT_EQ(disc().tracks.size(), 2u);
    EXPECT_FALSE(disc().tracks[0].isAudio);
    EXPECT_TRUE(disc().tracks[1].isAudio);
}

TEST_F(BurnToDrive, tooLargeADisc_isRefused_beforeTheFirstBlock)
{
    insert(FakeProfile::CDR, 320);
    const QJsonObject report = burnt(1);
    EXPECT_EQ(kindOfError(report), QStringLiteral("space"));
    EXPECT_EQ(report[u"fault"], QStringLiteral("full"));
    EXPECT_EQ(report[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().log.find("2a"), std::string::npos) << disc().log;
}

TEST_F(BurnToDrive, overburning_isRefused_byName_withHowMuchIsTooMuch)
{
    insert(FakeProfile::CDR, 320);
    const QJsonObject report = burnt(1, {"--overburn"});
    const QJsonObject error = report[u"error"].toObject();
    EXPECT_EQ(error[u"kind"], QStringLiteral("space"));
    EXPECT_TRUE(error[u"message"].toString().contains(QStringLiteral("blocks) too much")));
    EXPECT_TRUE(error[u"advice"].toString().contains(QStringLiteral("libburn")));
    EXPECT_EQ(report[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().log.find("2a"), std::string::npos) << disc().log;
    insert(FakeProfile::CDR, cdBlocks);
    EXPECT_EQ(burnt(0, {"--overburn"})[u"condition"], QStringLiteral("written")); // what fits is not an overburning
}

TEST_F(BurnToDrive, noDisc_andBusyAndForbiddenDrives_areToldApart)
{
    insert(FakeProfile::None, 0);
    EXPECT_EQ(burnt(1)[u"fault"], QStringLiteral("no-disc"));
    insert(FakeProfile::CDR, cdBlocks);
    m_tree.makeFile("drive/busy");
    EXPECT_EQ(burnt(1)[u"fault"], QStringLiteral("busy"));
    m_tree.remove("drive/busy");
    m_tree.makeFile("drive/locked");
    const QString fault = burnt(1)[u"fault"].toString();
    EXPECT_TRUE(fault == QStringLiteral("not-permitted") || fault == QStringLiteral("absent")) << fault.toStdString();
    EXPECT_EQ(disc().log.find("2a"), std::string::npos);
}

TEST_F(BurnToDrive, simulation_leavesTheDiscAsItWas)
{
    insert(FakeProfile::CDRW, cdBlocks);
    EXPECT_EQ(burnt(0, {"--simulate"})[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().status, FakeDisc::Status::Blank);
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    EXPECT_EQ(burnt(1, {"--simulate"})[u"fault"], QStringLiteral("wrong-disc"));
}

TEST_F(BurnToDrive, closedDisc_isWrittenAgain_onlyAfterBlanking)
{
    insert(FakeProfile::CDRW, cdBlocks);
    ASSERT_EQ(burnt(0)[u"condition"], QStringLiteral("written"));
    const QJsonObject refused = burnt(1);
    EXPECT_EQ(refused[u"condition"], QStringLiteral("unchanged"));
    EXPECT_TRUE(refused[u"error"].toObject()[u"advice"].toString().contains(QStringLiteral("blank")));
    const ChildResult blanking = runWithDrive({"blank", "--drive", "/dev/sr0", "--json"});
    ASSERT_EQ(blanking.exitStatus, 0) << blanking.errors.constData();
    EXPECT_EQ(jsonOf(blanking.output)[u"after"].toObject()[u"state"], QStringLiteral("blank"));
    EXPECT_EQ(burnt(0)[u"condition"], QStringLiteral("written"));
}

TEST_F(BurnToDrive, blank_refuses_whatCannotBeBlanked)
{
    insert(FakeProfile::CDR, cdBlocks);
    const ChildResult result = runWithDrive({"blank", "--drive", "/dev/sr0"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("cannot be blanked")) << result.errors.constData();
    EXPECT_EQ(disc().log.find("a1"), std::string::npos);
}

TEST_F(BurnToDrive, drives_tellsOfADisc_onlyWhenTheDriveIsNamed)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    const ChildResult result = runWithDrive({"drives", "--json", "/dev/sr0"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject drive = jsonOf(result.output)[u"drives"].toArray().first().toObject();
    EXPECT_EQ(drive[u"disc"].toObject()[u"state"], QStringLiteral("blank"));
    EXPECT_EQ(drive[u"disc"].toObject()[u"freeBlocks"], dvdPlusBlocks);
    EXPECT_EQ(drive[u"disc"].toObject()[u"profileName"], QStringLiteral("DVD+R"));
}

struct FaultCase {
    const char *name;
    FakeProfile profile;
    FakeFault fault;
    const char *told; ///< as the report names it
    const char *condition;
};

void PrintTo(const FaultCase &one, std::ostream *out)
{
    *out << one.name;
}

class BurnFaults : public BurnToDrive, public testing::WithParamInterface<FaultCase>
{
};

TEST_P(BurnFaults, fault_isTold_withWhatTheDiscIsWorth)
{
    const FaultCase &one = GetParam();
    insert(one.profile, one.profile == FakeProfile::CDR || one.profile == FakeProfile::CDRW ? cdBlocks : dvdPlusBlocks,
           {one.fault});
    const QJsonObject report = burnt(1);
    EXPECT_EQ(report[u"fault"], QString::fromUtf8(one.told));
    EXPECT_EQ(report[u"condition"], QString::fromUtf8(one.condition));
    EXPECT_FALSE(report[u"error"].toObject()[u"advice"].toString().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    BurnFaults, BurnFaults,
    testing::Values(
        FaultCase{"writeErrorOnCDR", FakeProfile::CDR, {writeCommand, 3, 0, 3, 0x0C, 0}, "write-error", "spoiled"},
        FaultCase{
            "writeErrorOnCDRW", FakeProfile::CDRW, {writeCommand, 3, 0, 3, 0x0C, 0}, "write-error", "needs-blanking"},
        FaultCase{"writeErrorOnDVDPlusRW",
                  FakeProfile::DVDPlusRW,
                  {writeCommand, 3, 0, 3, 0x0C, 0},
                  "write-error",
                  "overwritable"},
        FaultCase{"underrun", FakeProfile::CDRW, {writeCommand, 3, 0, 3, 0x0C, 9}, "underrun", "needs-blanking"},
        FaultCase{"calibration", FakeProfile::CDR, {writeCommand, 0, 0, 3, 0x73, 3}, "calibration", "unchanged"},
        FaultCase{"calibrationAreaFull",
                  FakeProfile::CDR,
                  {writeCommand, 0, 0, 3, 0x73, 1},
                  "calibration-area-full",
                  "unchanged"},
        FaultCase{
            "closeError", FakeProfile::DVDPlusR, {closeCommand, 0, 0, 3, 0x72, 0}, "close-error", "written-not-closed"},
        FaultCase{"discTakenOutOfCDR", FakeProfile::CDR, {writeCommand, 3, 0, 2, 0x3A, 0}, "no-disc", "unknown"},
        FaultCase{
            "writeProtected", FakeProfile::CDRW, {writeCommand, 0, 0, 7, 0x27, 0}, "write-protected", "unchanged"},
        FaultCase{"driveBroken", FakeProfile::CDR, {writeCommand, 3, 0, 4, 0x44, 0}, "hardware", "spoiled"},
        FaultCase{
            "discFullBeforeItsStatedEnd", FakeProfile::DVDPlusR, {writeCommand, 3, 0, 5, 0x21, 0}, "full", "spoiled"},
        FaultCase{"cablePulled", FakeProfile::CDR, {writeCommand, 3, 0, 0, 0, 0}, "gone", "unknown"}),
    nameOfTest<FaultCase>);

TEST_F(BurnToDrive, oneReset_isOvercome)
{
    insert(FakeProfile::DVDPlusRW, dvdPlusBlocks, {{writeCommand, 2, 1, 6, 0x29, 0}});
    EXPECT_EQ(burnt(0, {"--verify"})[u"condition"], QStringLiteral("written"));
}

TEST_F(BurnToDrive, unreadableBlock_isFound_byTheComparison)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks, {{0x28, 0, 0, 3, 0x11, 0}, {0xA8, 0, 0, 3, 0x11, 0}});
    const QJsonObject report = burnt(1, {"--verify"});
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
}

TEST_F(BurnToDrive, interruption_leavesADefinedState_andSaysWhatTheDiscIsWorth)
{
    makeBigFile("source/a gate", 1 << 20);
    makeBigFile("source/b", 24 << 20);
    insert(FakeProfile::CDRW, cdBlocks);
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(withDrive({"burn", "--drive", "/dev/sr0", "--json", m_tree.path("source")}));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
    process.sendSignal(SIGTERM);
    gate.open();
    const ChildResult result = process.finish();
    EXPECT_EQ(result.exitStatus, 130) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("unchanged"));
    EXPECT_TRUE(result.errors.contains("as it was")) << result.errors.constData();
    EXPECT_EQ(disc().status, FakeDisc::Status::Blank);
}

TEST_F(BurnToDrive, interruption_whileTheDriveWrites_stopsIt_andSaysWhatTheDiscIsWorth)
{
    makeBigFile("source/b", 40 << 20); // more than fits into all buffers
    makeBigFile("source/c gate", 1 << 20);
    insert(FakeProfile::CDRW, cdBlocks);
    WriteGate gate(m_tree.path("source/c gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(withDrive({"burn", "--drive", "/dev/sr0", "--json", m_tree.path("source")}));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
    process.sendSignal(SIGINT);
    gate.open();
    const ChildResult result = process.finish();
    EXPECT_EQ(result.exitStatus, 130) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("needs-blanking"));
    EXPECT_TRUE(result.errors.contains("blank it in full")) << result.errors.constData();
}

/// At the command of that opcode the drive waits until the signal has been sent.
class BurnHeld : public BurnToDrive
{
protected:
    ChildResult interruptedAt(const QByteArray &opcode, const QList<QByteArray> &words) const
    {
        const QByteArray hold = m_tree.makeFile("drive/hold-" + opcode);
        ChildProcess process(withDrive(words));
        const QByteArray held = "drive/held-" + opcode;
        EXPECT_TRUE(process.waitUntil([&] { return m_tree.exists(held); })) << process.errorsSoFar().constData();
        process.sendSignal(SIGTERM);
        QFile::remove(QFile::decodeName(hold));
        return process.finish();
    }
};

TEST_F(BurnHeld, interruption_whileTheSessionIsClosed_waitsForItsEnd)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    const ChildResult result = interruptedAt("5b", {"burn", "--drive", "/dev/sr0", "--json", m_tree.path("source")});
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("written")) << result.errors.constData();
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(disc().status, FakeDisc::Status::Complete);
}

TEST_F(BurnHeld, interruption_atTheFirstBlock_saysWhatTheDiscIsWorth)
{
    insert(FakeProfile::CDRW, cdBlocks);
    makeBigFile("source/big", 24 << 20);
    const ChildResult result = interruptedAt("2a", {"burn", "--drive", "/dev/sr0", "--json", m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 130) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("needs-blanking"));
}

TEST_F(BurnHeld, interruption_ofBlanking_waitsForTheDrive_whichCannotBeStopped)
{
    insert(FakeProfile::CDRW, cdBlocks);
    ASSERT_EQ(burnt(0)[u"condition"], QStringLiteral("written"));
    const ChildResult result = interruptedAt("a1", {"blank", "--drive", "/dev/sr0", "--json"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"after"].toObject()[u"state"], QStringLiteral("blank"));
}

TEST_F(BurnToDrive, failingBlanking_saysWhatTheDiscIsWorth)
{
    insert(FakeProfile::CDRW, cdBlocks);
    ASSERT_EQ(burnt(0)[u"condition"], QStringLiteral("written"));
    FakeDisc written = disc();
    written.faults = {{0xA1, 0, 0, 3, 0x51, 0}};
    insert(written);
    const ChildResult result = runWithDrive({"blank", "--drive", "/dev/sr0", "--json"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("blank it in full")) << result.errors.constData();
}

TEST_F(BurnToDrive, failingAppend_leavesWhatTheDiscHad)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    ASSERT_EQ(burnt(0, {"--multi"})[u"condition"], QStringLiteral("written"));
    FakeDisc written = disc();
    written.faults = {{writeCommand, 2, 0, 3, 0x0C, 0}};
    insert(written);
    const QJsonObject report = burnt(1, {"--multi"});
    EXPECT_EQ(report[u"condition"], QStringLiteral("only-kept"));
    EXPECT_TRUE(report[u"error"].toObject()[u"advice"].toString().contains(QStringLiteral("can be read as before")));
}

TEST_F(BurnToDrive, openDisc_staysOpen)
{
    insert(FakeProfile::CDR, cdBlocks);
    ASSERT_EQ(burnt(0, {"--multi"})[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(disc().status, FakeDisc::Status::Appendable);
    EXPECT_EQ(burnt(1)[u"condition"], QStringLiteral("unchanged")); // to add to it takes the option again
    EXPECT_EQ(disc().tracks.size(), 1u);
}

} // namespace

} // namespace Tessaron::Testing
