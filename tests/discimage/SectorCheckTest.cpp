#include "platform/discimage/ImageCheck.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "tests/discimage/SampleImages.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr qsizetype sectorSize = 2352;

/// The sample image in the sectors of a track.
QByteArray codedSample(TrackKind kind, SectorForm form)
{
    const QByteArray plain = sampleImage(DRFilesystemInclusionMaskISO9660);
    const auto blocks = std::size_t(plain.size() / 2048);
    QByteArray coded(qsizetype(blocks * std::size_t(form)), Qt::Uninitialized);
    SectorEncoder::encoderFor(kind, form)->encode(plain.constData(), blocks, BlockAddress(0), coded.data());
    return coded;
}

QByteArray trailerOf(const TableOfContents &contents)
{
    Result<QByteArray> trailer = vantTrailer(contents);
    EXPECT_TRUE(trailer);
    return std::move(trailer).valueOr(QByteArray());
}

QByteArray asVANT(const QByteArray &blocks, TrackKind kind, SectorForm form, std::uint64_t behind = 0)
{
    DiscTrack data;
    data.kind = kind;
    data.blockSize = std::uint32_t(form);
    data.length = std::uint64_t(blocks.size()) / data.blockSize;
    TableOfContents contents = TableOfContents::withTrack(data);
    if (behind > 0) {
        DiscTrack audio;
        audio.kind = TrackKind::Audio;
        audio.blockSize = 2352;
        audio.length = behind;
        contents.sessions.front().tracks.push_back(audio);
        contents.numberTracks();
    }
    return blocks + QByteArray(qsizetype(behind * 2352), 'a') + trailerOf(contents);
}

QByteArray flipped(QByteArray image, qsizetype offset)
{
    image[offset] = char(image[offset] ^ 0x04);
    return image;
}

} // namespace

TEST(SectorCheck, soundSectors_haveNoProblems_inEachForm)
{
    const QByteArray raw = codedSample(TrackKind::Mode1, SectorForm::Raw);
    EXPECT_EQ(problemsOf(raw), QStringList());
    for (const SectorForm form : {SectorForm::Raw, SectorForm::RawWithSubchannel}) {
        EXPECT_EQ(problemsOf(asVANT(codedSample(TrackKind::Mode1, form), TrackKind::Mode1, form)), QStringList());
        EXPECT_EQ(problemsOf(asVANT(codedSample(TrackKind::Mode2Mixed, form), TrackKind::Mode2Mixed, form)),
                  QStringList());
    }
    const QByteArray headless = codedSample(TrackKind::Mode2Mixed, SectorForm::WithoutHeader);
    EXPECT_EQ(problemsOf(asVANT(headless, TrackKind::Mode2Mixed, SectorForm::WithoutHeader)), QStringList());
    EXPECT_EQ(problemsOf(asVANT(raw, TrackKind::Mode1, SectorForm::Raw, 200)), QStringList()) << "audio behind it";
}

TEST(SectorCheck, aFlippedBitAnywhereInASector_isTold_withItsSector)
{
    const QByteArray raw = codedSample(TrackKind::Mode1, SectorForm::Raw);
    constexpr qsizetype sector = 5; // of the system area, so that no filesystem tells
    for (qsizetype offset = 0; offset < sectorSize; ++offset) {
        const QStringList problems = problemsOf(flipped(raw, sector * sectorSize + offset));
        ASSERT_EQ(problems.size(), 1) << offset << ": " << problems.join(u';').toStdString();
        ASSERT_TRUE(problems.first().startsWith(QStringLiteral("sector 5: wrong in it: "))) << offset;
    }
    EXPECT_EQ(problemsOf(flipped(raw, sector * sectorSize + 2100)).first(),
              QStringLiteral("sector 5: wrong in it: its P parity (at byte 10240)"));
    EXPECT_FALSE(problemsOf(flipped(raw, 13)).isEmpty()) << "the address of the first sector";
}

TEST(SectorCheck, sectorsWithoutErrorCorrection_arePassedOver)
{
    QByteArray raw = codedSample(TrackKind::Mode1, SectorForm::Raw);
    for (qsizetype sector = 0; sector < raw.size() / sectorSize; ++sector)
        std::fill_n(raw.data() + sector * sectorSize + 2064, 288, '\0');
    EXPECT_EQ(problemsOf(raw), QStringList());
    EXPECT_EQ(problemsOf(flipped(raw, 5 * sectorSize + 14)).size(), 1) << "the address";
}

TEST(SectorCheck, manyWrongSectors_areTenAndANumber)
{
    QByteArray raw = codedSample(TrackKind::Mode1, SectorForm::Raw);
    for (qsizetype sector = 0; sector < 50; ++sector)
        raw[sector * sectorSize + 2300] = char(raw[sector * sectorSize + 2300] ^ 1);
    const QStringList problems = problemsOf(raw);
    ASSERT_EQ(problems.size(), 11);
    EXPECT_TRUE(problems.last().contains(QStringLiteral("50 sectors in all")));
}

} // namespace Tessaron::Testing
