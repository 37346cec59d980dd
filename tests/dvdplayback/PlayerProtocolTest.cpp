#include "platform/dvdplayback/PlayerProtocol.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

DVDDescription someDescription()
{
    DVDDescription disc;
    disc.identity = QByteArray("\0\1\2\3\4\5\6\7", 8);
    disc.volumeName = QStringLiteral("FILM");
    disc.provider = QStringLiteral("Müller");
    disc.prohibitedRegions = 0xfd;
    disc.drive = DVDDriveRegion{0xfe, 4};
    DVDTitle title;
    title.number = 1;
    title.titleSet = 2;
    title.numberInSet = 1;
    title.length = milliseconds(61'500);
    title.angles = 3;
    title.video = {DVDVideoStandard::PAL, true, 704, 576, true, false};
    title.chapters = {{milliseconds(0), milliseconds(60'000)}, {milliseconds(60'000), milliseconds(1500)}};
    title.audio = {{DVDAudioFormat::LPCM, 2, 48'000, 20, "fr", DVDStreamPurpose::Comments}};
    title.subtitles = {{"de", DVDStreamPurpose::Forced}, {{}, DVDStreamPurpose::Unstated}};
    title.damage = QStringLiteral("chapter 3 leads nowhere");
    disc.titles = {title};
    disc.menus = {{DVDMenuKind::Root, 2, "en"}};
    disc.notes = {QStringLiteral("a note")};
    return disc;
}

TEST(PlayerProtocol, description_isTheSame_whenItHasTravelled)
{
    EXPECT_EQ(decodedDescription(encodedDescription(someDescription())), someDescription());
}

TEST(PlayerProtocol, description_isRefused_whenItIsCutOrLonger)
{
    const QByteArray bytes = encodedDescription(someDescription());
    for (qsizetype length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(decodedDescription(bytes.first(length))) << length;
    EXPECT_FALSE(decodedDescription(bytes + '\0'));
}

TEST(PlayerProtocol, description_isRefused_whenItHasMoreThanADiscCan)
{
    DVDDescription disc = someDescription();
    disc.titles.assign(100, disc.titles.front());
    EXPECT_FALSE(decodedDescription(encodedDescription(disc)));
    disc = someDescription();
    disc.titles.front().chapters.resize(1000);
    EXPECT_FALSE(decodedDescription(encodedDescription(disc)));
    disc = someDescription();
    disc.titles.front().angles = 10;
    EXPECT_FALSE(decodedDescription(encodedDescription(disc)));
    disc = someDescription();
    disc.titles.front().length = milliseconds(-1);
    EXPECT_FALSE(decodedDescription(encodedDescription(disc)));
}

TEST(PlayerProtocol, state_isTheSame_whenItHasTravelled)
{
    PlayerState state;
    state.playback = 2;
    state.isOnMenu = true;
    state.title = 99;
    state.chapter = 999;
    state.elapsed = 0xfffffffe;
    state.aspect = 3;
    state.format = 2;
    state.height = 576;
    state.buttons = 36;
    state.selectedButton = 7;
    state.sound = 2;
    state.soundStreams = 8;
    state.soundStream = 3;
    state.subtitleStreams = 32;
    state.subtitleStream = 31;
    state.place = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(decodedState(encodedState(state)), state);
    EXPECT_FALSE(decodedState(encodedState(state).chopped(1)));
}

TEST(PlayerProtocol, reply_isTheSame_whenItHasTravelled)
{
    const std::optional<PlayerReply> reply =
        decodedReply(encodedReply({-70024, QStringLiteral("no region is left"), QByteArray("\0x", 2)}));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, -70024);
    EXPECT_EQ(reply->text, QStringLiteral("no region is left"));
    EXPECT_EQ(reply->payload, QByteArray("\0x", 2));
}

TEST(PlayerProtocol, messages_areTakenOffTheStream_howeverItIsCut)
{
    const QByteArray whole = encodedMessage({PlayerMessageKind::Open, 7, "/disc"})
        + encodedMessage({PlayerMessageKind::Reply, 7, {}}) + encodedMessage({PlayerMessageKind::State, 0, "x"});
    for (qsizetype piece = 1; piece <= whole.size(); ++piece) {
        QByteArray stream;
        std::vector<PlayerMessage> messages;
        for (qsizetype at = 0; at < whole.size(); at += piece) {
            stream += whole.sliced(at, std::min(piece, whole.size() - at));
            PlayerMessage message;
            while (takeMessage(&stream, &message) == StreamBegin::Message)
                messages.push_back(message);
        }
        ASSERT_EQ(messages.size(), 3U) << piece;
        EXPECT_EQ(messages[0].kind, PlayerMessageKind::Open);
        EXPECT_EQ(messages[0].sequence, 7U);
        EXPECT_EQ(messages[0].payload, "/disc");
        EXPECT_EQ(messages[2].payload, "x");
        EXPECT_TRUE(stream.isEmpty());
    }
}

TEST(PlayerProtocol, takeMessage_refusesKindsAndLengthsThatDoNotExist)
{
    PlayerMessage message;
    for (const std::uint32_t kind : {0U, 23U, 99U, 106U, 0xffffffffU}) {
        QByteArray stream = encodedMessage({static_cast<PlayerMessageKind>(kind), 1, {}});
        EXPECT_EQ(takeMessage(&stream, &message), StreamBegin::Nonsense) << kind;
    }
    QByteArray stream = encodedMessage({PlayerMessageKind::Play, 1, {}});
    stream[11] = 1; // 16 MiB follow
    EXPECT_EQ(takeMessage(&stream, &message), StreamBegin::Nonsense);
}

} // namespace

} // namespace Tessaron
