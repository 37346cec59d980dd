#include "platform/disctracks/SectorForm.h"

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(SectorForm, userDataPart_liesWhereTheStandardsPutIt)
{
    const struct {
        TrackKind kind;
        SectorForm form;
        SectorPart part;
    } rows[] = {
        {TrackKind::Audio, SectorForm::Raw, {0, 2352}},
        {TrackKind::Audio, SectorForm::RawWithSubchannel, {0, 2352}},
        {TrackKind::Mode1, SectorForm::UserData, {0, 2048}},
        {TrackKind::Mode1, SectorForm::Raw, {16, 2048}},
        {TrackKind::Mode1, SectorForm::RawWithSubchannel, {16, 2048}},
        {TrackKind::Mode2Formless, SectorForm::WithoutHeader, {0, 2336}},
        {TrackKind::Mode2Formless, SectorForm::Raw, {16, 2336}},
        {TrackKind::Mode2Form1, SectorForm::UserData, {0, 2048}},
        {TrackKind::Mode2Form1, SectorForm::WithoutHeader, {8, 2048}},
        {TrackKind::Mode2Form1, SectorForm::Raw, {24, 2048}},
        {TrackKind::Mode2Form2, SectorForm::Form2UserData, {0, 2324}},
        {TrackKind::Mode2Form2, SectorForm::Form2WithSubheader, {8, 2324}},
        {TrackKind::Mode2Form2, SectorForm::Raw, {24, 2324}},
        {TrackKind::Mode2Mixed, SectorForm::WithoutHeader, {8, 2048}},
        {TrackKind::Mode2Mixed, SectorForm::RawWithSubchannel, {24, 2048}},
        {TrackKind::Unstated, SectorForm::UserData, {0, 2048}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(userDataPart(row.kind, row.form), row.part) << int(row.kind) << " in " << unsigned(row.form);
}

TEST(SectorForm, userDataPart_hasNoValue_whenTheFormCannotHoldTheKind)
{
    EXPECT_FALSE(userDataPart(TrackKind::Audio, SectorForm::UserData));
    EXPECT_FALSE(userDataPart(TrackKind::Audio, SectorForm::WithoutHeader));
    EXPECT_FALSE(userDataPart(TrackKind::Mode1, SectorForm::WithoutHeader));
    EXPECT_FALSE(userDataPart(TrackKind::Mode1, SectorForm::Form2WithSubheader));
    EXPECT_FALSE(userDataPart(TrackKind::Mode2Formless, SectorForm::UserData));
    EXPECT_FALSE(userDataPart(TrackKind::Mode2Formless, SectorForm::Form2WithSubheader));
    EXPECT_FALSE(userDataPart(TrackKind::Mode2Form2, SectorForm::UserData));
    EXPECT_FALSE(userDataPart(TrackKind::Unstated, SectorForm::Raw));
}

TEST(SectorForm, sectorFormOfSize_knowsSixSizes)
{
    for (const std::uint64_t size : {2048u, 2324u, 2332u, 2336u, 2352u, 2448u})
        EXPECT_EQ(sectorFormOfSize(size), SectorForm(size));
    for (const std::uint64_t size : {0ull, 512ull, 2047ull, 2056ull, 2368ull, 4096ull, (1ull << 32) + 2048})
        EXPECT_FALSE(sectorFormOfSize(size)) << size;
}
