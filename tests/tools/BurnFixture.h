#pragma once

#include "tests/fakedrive/FakeDisc.h"
#include "tests/tools/ImageFixture.h"

#include <ostream>
#include <set>
#include <string>

namespace Tessaron::Testing
{

/// Sizes of discs, in blocks: a CD of 80 minutes, DVD+R and DVD+RW, DVD-R and DVD-RW.
inline constexpr int cdBlocks = 359'849;
inline constexpr int dvdPlusBlocks = 2'295'104;
inline constexpr int dvdMinusBlocks = 2'298'496;

/// Operation codes (MMC-5 6).
inline constexpr int writeCommand = 0x2A;
inline constexpr int closeCommand = 0x5B;

/// A kind of disc that tests are repeated for.
struct KindOfDisc {
    const char *name; ///< of the test
    FakeProfile profile;
    int blocks;
    const char *profileName = ""; ///< how the drive's name for it begins
};

/// For lists of tests and their failures.
inline void PrintTo(const KindOfDisc &kind, std::ostream *out)
{
    *out << kind.name;
}

/// The last part of the name of a test that is repeated, each time with such a parameter.
template <typename Parameter>
std::string nameOfTest(const testing::TestParamInfo<Parameter> &info)
{
    return info.param.name;
}

/// Discs written to a file, or to the fake drive with a disc of a test's choice in it. See SystemCalls.cpp for what
/// that drive shows and what it does not.
class BurnFixture : public ImageTest
{
protected:
    BurnFixture();

    /// The file that stands for a drive.
    [[nodiscard]] QByteArray file() const { return m_tree.path("out/disc.iso"); }
    /// `tessaron burn --drive stdio:…` of "source".
    [[nodiscard]] ChildResult burnToFile(const QList<QByteArray> &options = {}) const;

    /// Puts a disc into the fake drive.
    void insert(FakeProfile profile, int capacity, const std::vector<FakeFault> &faults = {}) const;
    void insert(const FakeDisc &disc) const;
    /// The disc as the drive has it now.
    [[nodiscard]] FakeDisc disc() const;
    /// The user data of blocks, or sound, as they are on the disc.
    [[nodiscard]] QByteArray sectors(int first, int count, int size) const;

    /// The data of the disc from its first block on, 2048 bytes a block, as a file that other programs can read.
    [[nodiscard]] QByteArray mediumFile() const;
    /// Puts data onto the disc in the drive as if another program had written them: a closed session at its next block.
    void addForeignSession(const QByteArray &image) const;

    /// The command with the fake drive as /dev/sr0.
    [[nodiscard]] ChildSettings withDrive(const QList<QByteArray> &words) const;
    [[nodiscard]] ChildResult runWithDrive(const QList<QByteArray> &words) const;
    /// `tessaron burn --drive /dev/sr0 --json` of "source"; the report.
    [[nodiscard]] QJsonObject burnt(int expectedStatus, const QList<QByteArray> &options = {}) const;
    /// `tessaron burn` to any drive; the report.
    QJsonObject burntTo(const QByteArray &drive, const QList<QByteArray> &words, int expectedStatus) const;

    /// What isoinfo lists by Rock Ridge in the session that begins at that block.
    [[nodiscard]] static std::set<std::string> namesListed(const QByteArray &medium, int session = 0);
    /// Has xorriso take the files of that session out, into "taken".
    void extractWith(const QByteArray &medium, int session = 0) const;

    [[nodiscard]] QByteArray driveFolder() const { return m_tree.path("drive"); }
};

} // namespace Tessaron::Testing
