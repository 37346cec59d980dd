#include "tests/tools/BurnFixture.h"

#include "tests/support/RunProgram.h"

#include <QFile>

namespace Tessaron::Testing
{

BurnFixture::BurnFixture()
{
    m_tree.makeFolder("drive");
}

ChildResult BurnFixture::burnToFile(const QList<QByteArray> &options) const
{
    return runTessaron(QList<QByteArray>({"burn", "--drive", "stdio:" + file()}) + options
                       + QList<QByteArray>({m_tree.path("source")}));
}

void BurnFixture::insert(FakeProfile profile, int capacity, const std::vector<FakeFault> &faults) const
{
    FakeDisc disc;
    disc.profile = profile;
    disc.capacity = capacity;
    disc.isFormatted = disc.isOverwritable();
    disc.faults = faults;
    insert(disc);
}

void BurnFixture::insert(const FakeDisc &disc) const
{
    disc.save(driveFolder().toStdString());
}

FakeDisc BurnFixture::disc() const
{
    return FakeDisc::load(driveFolder().toStdString());
}

QByteArray BurnFixture::sectors(int first, int count, int size) const
{
    constexpr int sectorSize = 2352;
    QFile file(QFile::decodeName(driveFolder() + "/sectors"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray result;
    for (int sector = first; sector < first + count; ++sector) {
        file.seek(qint64(sector) * sectorSize);
        result += file.read(size).leftJustified(size, '\0');
    }
    return result;
}

QByteArray BurnFixture::mediumFile() const
{
    constexpr int dataSize = 2048;
    return m_tree.makeFile("medium.img", sectors(0, disc().endOfTracks(), dataSize));
}

void BurnFixture::addForeignSession(const QByteArray &image) const
{
    constexpr int sectorSize = 2352;
    constexpr int dataSize = 2048;
    FakeDisc disc = this->disc();
    FakeTrack track;
    track.session = disc.sessions() + 1;
    track.number = track.session;
    track.start = disc.nextBlock();
    track.length = int((image.size() + dataSize - 1) / dataSize);
    QFile file(QFile::decodeName(driveFolder() + "/sectors"));
    EXPECT_TRUE(file.open(QIODevice::ReadWrite));
    for (int block = 0; block < track.length; ++block) {
        file.seek(qint64(track.start + block) * sectorSize);
        file.write(image.mid(qsizetype(block) * dataSize, dataSize));
    }
    disc.tracks.push_back(track);
    disc.status = FakeDisc::Status::Appendable;
    insert(disc);
}

ChildSettings BurnFixture::withDrive(const QList<QByteArray> &words) const
{
    ChildSettings settings = tessaron(words);
    settings.environment = {"TESSARON_FAKE_DRIVE=" + driveFolder()};
    // A sanitizer's library has to stay the first one.
    const QByteArray others = qgetenv("LD_PRELOAD");
    settings.environment << "LD_PRELOAD=" + (others.isEmpty() ? QByteArray() : others + ':')
            + TESSARON_FAKE_DRIVE_OBJECT;
    settings.environment << "ASAN_OPTIONS=verify_asan_link_order=0";
    return settings;
}

ChildResult BurnFixture::runWithDrive(const QList<QByteArray> &words) const
{
    return runChild(withDrive(words));
}

QJsonObject BurnFixture::burnt(int expectedStatus, const QList<QByteArray> &options) const
{
    return burntTo("/dev/sr0", options + QList<QByteArray>({m_tree.path("source")}), expectedStatus);
}

QJsonObject BurnFixture::burntTo(const QByteArray &drive, const QList<QByteArray> &words, int expectedStatus) const
{
    const ChildResult result = runWithDrive(QList<QByteArray>({"burn", "--drive", drive, "--json"}) + words);
    EXPECT_EQ(result.exitStatus, expectedStatus) << result.errors.constData();
    return jsonOf(result.output);
}

std::set<std::string> BurnFixture::namesListed(const QByteArray &medium, int session)
{
    const ProgramRun run = runProgram("isoinfo", {"-T", QByteArray::number(session), "-R", "-f", "-i", medium});
    EXPECT_EQ(run.status, 0) << run.errors.constData();
    std::set<std::string> names;
    for (const QByteArray &line : run.output.split('\n')) {
        if (line.startsWith('/'))
            names.insert(line.toStdString());
    }
    return names;
}

void BurnFixture::extractWith(const QByteArray &medium, int session) const
{
    const ProgramRun run = runProgram("xorriso",
                                      {"-load", "sbsector", QByteArray::number(session), "-indev", "stdio:" + medium,
                                       "-osirrox", "on", "-extract", "/", m_tree.path("taken")});
    EXPECT_EQ(run.status, 0) << run.errors.constData();
}

} // namespace Tessaron::Testing
