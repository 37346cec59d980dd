#include "platform/disctracks/CDTextPacks.h"

#include "platform/disctracks/Subchannel.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}

CDText album()
{
    CDText result;
    CDTextBlock block;
    block.texts[CDTextKind::Title] = {text("Album with a rather long title"), text("One"), text("Same"), text("Same"),
                                      text("")};
    block.texts[CDTextKind::Performer] = {text("Somebody"), text("Other"), text("Other"), text("Other"),
                                          text("Caf\xE9")};
    block.texts[CDTextKind::Genre] = {text("Waltz")};
    block.texts[CDTextKind::Codes] = {text("4006381333931"), text("DEA123456789"), text("DEA123456790"),
                                      text("DEA123456791"), text("DEA123456792")};
    block.genreCode = 7;
    block.copyright = 3;
    result.blocks.push_back(block);
    return result;
}

/// The texts with the empty ones at their ends dropped: they do not come back from packs.
CDText trimmed(CDText from)
{
    for (CDTextBlock &block : from.blocks) {
        for (auto &[kind, texts] : block.texts) {
            while (!texts.empty() && texts.back().isEmpty())
                texts.pop_back();
        }
    }
    return from;
}

QByteArray correctedPack(const char *hex)
{
    QByteArray pack = QByteArray::fromHex(hex);
    const std::uint16_t checksum = subchannelChecksum(reinterpret_cast<const std::uint8_t *>(pack.constData()), 16);
    return pack.append(char(checksum >> 8)).append(char(checksum & 0xFF));
}

QString failureOf(const CDText &texts, std::uint32_t lastTrack)
{
    const Result<QByteArray> packs = cdTextPacks(texts, lastTrack);
    return packs ? QString() : packs.error().localizedFailureReason();
}

} // namespace

TEST(CDTextPacks, checksum_isTheOneOnDiscs)
{
    EXPECT_EQ(correctedPack("8F 00 2A 00 01 01 03 00 06 05 04 05 07 06 01 02").last(2).toHex(), "4865");
}

TEST(CDTextPacks, packs_areLaidOutAsTheStandardSays)
{
    CDText texts;
    CDTextBlock block;
    block.texts[CDTextKind::Title] = {text("Disc title"), text("A long first track"), text("B"), text("B")};
    texts.blocks.push_back(block);
    const Result<QByteArray> packs = cdTextPacks(texts, 3);
    ASSERT_TRUE(packs);
    ASSERT_EQ(packs->size(), 18 * (3 + 3));
    const auto pack = [&](int number) { return packs->sliced(qsizetype{18} * number, 16).toHex(' ').toUpper(); };
    EXPECT_EQ(pack(0), "80 00 00 00 44 69 73 63 20 74 69 74 6C 65 00 41"); // "Disc title", "A"
    EXPECT_EQ(pack(1), "80 01 01 01 20 6C 6F 6E 67 20 66 69 72 73 74 20"); // one character was in front
    EXPECT_EQ(pack(2), "80 01 02 0D 74 72 61 63 6B 00 42 00 42 00 00 00"); // thirteen were
    EXPECT_EQ(pack(3), "8F 00 03 00 00 01 03 00 03 00 00 00 00 00 00 00");
    EXPECT_EQ(pack(4), "8F 01 04 00 00 00 00 00 00 00 00 03 05 00 00 00");
    EXPECT_EQ(pack(5), "8F 02 05 00 00 00 00 00 09 00 00 00 00 00 00 00");
}

TEST(CDTextPacks, texts_comeBack)
{
    const Result<QByteArray> packs = cdTextPacks(album(), 4);
    ASSERT_TRUE(packs) << packs.error().localizedDescription().toStdString();
    const Result<CDText> back = cdTextOfPacks(*packs);
    ASSERT_TRUE(back) << back.error().localizedDescription().toStdString();
    EXPECT_EQ(*back, trimmed(album()));
    // As a drive gives them, and as some files end.
    EXPECT_EQ(*cdTextOfPacks(QByteArray::fromHex("00fe0000") + *packs), *back);
    EXPECT_EQ(*cdTextOfPacks(*packs + QByteArray(1, '\0')), *back);
}

TEST(CDTextPacks, aRepeatedText_isATab)
{
    const Result<QByteArray> packs = cdTextPacks(album(), 4);
    ASSERT_TRUE(packs);
    EXPECT_TRUE(packs->contains('\t'));
    EXPECT_EQ(cdTextOfPacks(*packs)->blocks[0].texts.at(CDTextKind::Title)[3], text("Same"));
}

TEST(CDTextPacks, severalLanguages_haveBlocksOfTheirOwn)
{
    CDText texts = album();
    CDTextBlock japanese;
    japanese.language = 0x69;
    japanese.encoding = CDTextEncoding::ShiftJis;
    japanese.texts[CDTextKind::Title] = {QStringLiteral(u"\u6771\u4eac\u306e\u3046\u305f"), QStringLiteral(u"\u4e00"),
                                         QStringLiteral(u"\u4e8c\u4e8c"), QStringLiteral(u"\u4e8c\u4e8c"),
                                         QStringLiteral(u"\u56db")};
    texts.blocks.push_back(japanese);
    const Result<QByteArray> packs = cdTextPacks(texts, 4);
    ASSERT_TRUE(packs) << packs.error().localizedDescription().toStdString();
    EXPECT_EQ(*cdTextOfPacks(*packs), trimmed(texts));
    texts.blocks[1].texts[CDTextKind::Title][1] = text("A 1");
    const Result<CDText> wide = cdTextOfPacks(*cdTextPacks(texts, 4));
    EXPECT_EQ(wide->blocks[1].texts.at(CDTextKind::Title)[1], QStringLiteral(u"\uff21\u3000\uff11"));
}

TEST(CDTextPacks, packs_fail_whenTheTextsDoNotFit)
{
    CDText long99;
    CDTextBlock block;
    block.texts[CDTextKind::Title].resize(100);
    for (int index = 0; index < 100; ++index)
        block.texts[CDTextKind::Title][std::size_t(index)] = QString(60, QChar(u'a' + index % 26));
    long99.blocks.push_back(block);
    EXPECT_TRUE(failureOf(long99, 99).contains(QStringLiteral("256")));
    long99.blocks[0].texts[CDTextKind::Title].resize(40);
    EXPECT_TRUE(failureOf(long99, 99).isEmpty());
    EXPECT_FALSE(failureOf(long99, 30).isEmpty()) << "texts for tracks that are not there";

    CDText foreign = album();
    foreign.blocks[0].texts[CDTextKind::Title][1] = QStringLiteral(u"\u6771");
    EXPECT_TRUE(failureOf(foreign, 4).contains(QStringLiteral(u"\u6771")));
    foreign.blocks[0].texts[CDTextKind::Title][1] = text("two\nlines");
    EXPECT_FALSE(failureOf(foreign, 4).isEmpty());
    CDText nine;
    nine.blocks.resize(9);
    EXPECT_FALSE(failureOf(nine, 4).isEmpty());
}

TEST(CDTextPacks, cdTextOfPacks_fails_whenAPackIsWrong)
{
    const QByteArray sound = *cdTextPacks(album(), 4);
    EXPECT_FALSE(cdTextOfPacks(sound.chopped(2)));
    for (qsizetype at = 0; at < sound.size(); ++at) {
        QByteArray damaged = sound;
        damaged[at] = char(damaged[at] ^ 4);
        const Result<CDText> read = cdTextOfPacks(damaged);
        ASSERT_FALSE(read) << at;
        EXPECT_TRUE(read.error().localizedFailureReason().contains(QString::number(at / 18 + 1)));
    }
    EXPECT_FALSE(cdTextOfPacks(sound.last(18) + sound.first(18))) << "out of order";
    EXPECT_TRUE(cdTextOfPacks({})->isEmpty());
}
