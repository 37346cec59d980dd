#include "imaging/ImageFinisher.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/vant/VANTReader.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/TemporaryTree.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// Stands for a full disk: while it lives, no file grows beyond the size.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const struct rlimit limit = {bytes, m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    struct rlimit m_before = {};
};

ImageFinisher finisher(TessaronDiscImageFormat format, std::uint64_t bytes)
{
    return ImageFinisher(format, contentsOfPlainImage(bytes));
}

/// An image of some blocks and a cue sheet under temporary names, to be called disc.bin and disc.cue.
class StagedImage
{
public:
    explicit StagedImage(const TemporaryTree &tree, const QByteArray &blocks = QByteArray(qsizetype{3} * 2048, 'x'))
        : m_tree(tree)
        , m_image(open(tree.makeFile("image.part", blocks), O_RDWR))
        , m_cueSheet(open(tree.makeFile("sheet.part"), O_RDWR))
        , m_folder(open(tree.path(), O_PATH))
    {
        unfinished.path = tree.path("disc.bin");
        unfinished.descriptor = m_image.get();
        unfinished.cueSheet = m_cueSheet.get();
        unfinished.folder = m_folder.get();
        unfinished.giveNames = [this] { return giveNames(); };
    }

    UnfinishedImage unfinished;
    int namesGiven = 0;
    int naming = 0; ///< what giving the names answers

private:
    static UniqueDescriptor open(const QByteArray &path, int flags)
    {
        return UniqueDescriptor(::open(path.constData(), flags | O_CLOEXEC));
    }
    int giveNames()
    {
        ++namesGiven;
        EXPECT_EQ(m_tree.contents("sheet.part").isEmpty(), false) << "all is in the files before they get names";
        if (naming == 0) {
            EXPECT_EQ(std::rename(m_tree.path("image.part").constData(), m_tree.path("disc.bin").constData()), 0);
            EXPECT_EQ(std::rename(m_tree.path("sheet.part").constData(), m_tree.path("disc.cue").constData()), 0);
        }
        return naming;
    }

    const TemporaryTree &m_tree;
    const UniqueDescriptor m_image;
    const UniqueDescriptor m_cueSheet;
    const UniqueDescriptor m_folder;
};

} // namespace

TEST(ImageFinisher, pathOfCueSheet_replacesTheExtension)
{
    EXPECT_EQ(pathOfCueSheet("/a/disc.bin"), "/a/disc.cue");
    EXPECT_EQ(pathOfCueSheet("/a/disc"), "/a/disc.cue");
    EXPECT_EQ(pathOfCueSheet("/a.b/disc"), "/a.b/disc.cue");
    EXPECT_EQ(pathOfCueSheet("/a/disc.one.bin"), "/a/disc.one.cue");
    EXPECT_EQ(pathOfCueSheet("/a/.bin"), "/a/.bin.cue");
    EXPECT_EQ(pathOfCueSheet("/a/d\xFF.bin"), "/a/d\xFF.cue");
}

TEST(ImageFinisher, pathOfCueSheet_isNeverTheImage)
{
    EXPECT_EQ(pathOfCueSheet("/a/disc.cue"), "/a/disc.cue.cue");
}

TEST(ImageFinisher, finishInPlace_keepsTheBytesOfTheName_inTheCueSheet)
{
    const TemporaryTree tree;
    tree.makeFile("M\xC3\xBCll \xFF.bin");
    EXPECT_TRUE(finisher(TessaronDiscImageFormatBIN, 0).finishInPlace(tree.path("M\xC3\xBCll \xFF.bin")).isNull());
    EXPECT_TRUE(tree.contents("M\xC3\xBCll \xFF.cue").startsWith("FILE \"M\xC3\xBCll \xFF.bin\" BINARY\r\n"));
}

TEST(ImageFinisher, finishInPlace_replacesAnOlderCueSheet)
{
    const TemporaryTree tree;
    tree.makeFile("disc.cue", QByteArray(500, 'o'));
    EXPECT_TRUE(finisher(TessaronDiscImageFormatBIN, 2048).finishInPlace(tree.path("disc.bin")).isNull());
    EXPECT_EQ(tree.contents("disc.cue").size(), 62 + 8);
}

TEST(ImageFinisher, finishInPlace_leavesNoCueSheet_whenTheDiskIsFull)
{
    const TemporaryTree tree;
    NSError error;
    {
        const FileSizeLimit limit(10);
        error = finisher(TessaronDiscImageFormatBIN, 2048).finishInPlace(tree.path("disc.bin"));
    }
    EXPECT_EQ(error.filePath(), tree.pathText("disc.cue"));
    EXPECT_EQ(error.localizedDescription(),
              QStringLiteral("Writing to “%1” failed: File too large.").arg(tree.pathText("disc.cue")));
    EXPECT_FALSE(error.localizedRecoverySuggestion().isEmpty());
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST(ImageFinisher, finishInPlace_fails_whereNoCueSheetCanBeMade)
{
    const TemporaryTree tree;
    const ImageFinisher bin = finisher(TessaronDiscImageFormatBIN, 2048);
    EXPECT_EQ(bin.finishInPlace(tree.path("missing/disc.bin")).code(), fnfErr);
    tree.makeFolder("disc.cue");
    EXPECT_EQ(bin.finishInPlace(tree.path("disc.bin")).filePath(), tree.pathText("disc.cue"));
    tree.makeFifo("fifo.cue");
    EXPECT_EQ(bin.finishInPlace(tree.path("fifo.bin")).code(), nsvErr) << "it has no reader";
    EXPECT_TRUE(tree.exists("fifo.cue"));
}

TEST(ImageFinisher, finishInPlace_countsWholeBlocks_whenTheSizeIsNoMultiple)
{
    const TemporaryTree tree;
    tree.makeFile("disc.vant", QByteArray(3 * 2048 + 100, 'x'));
    EXPECT_TRUE(finisher(TessaronDiscImageFormatVANT, 3 * 2048 + 100).finishInPlace(tree.path("disc.vant")).isNull());
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText("disc.vant"));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    EXPECT_EQ(read.image->sessions.at(0).tracks.at(0).length, 3u);
    EXPECT_EQ(read.image->trailerOffset, 3u * 2048 + 100);
}

TEST(ImageFinisher, finishInPlace_leavesTheImageWithoutTrailer_whenTheDiskIsFull)
{
    const TemporaryTree tree;
    const QByteArray blocks(qsizetype{2} * 2048, 'x');
    tree.makeFile("disc.vant", blocks);
    NSError error;
    {
        const FileSizeLimit limit(2 * 2048 + 50);
        error = finisher(TessaronDiscImageFormatVANT, std::uint64_t{2} * 2048).finishInPlace(tree.path("disc.vant"));
    }
    EXPECT_EQ(error.filePath(), tree.pathText("disc.vant"));
    EXPECT_EQ(tree.contents("disc.vant"), blocks);
}

TEST(ImageFinisher, finishInPlace_makesNoImage_whenThereIsNone)
{
    const TemporaryTree tree;
    const ImageFinisher vant = finisher(TessaronDiscImageFormatVANT, 2048);
    EXPECT_EQ(vant.finishInPlace(tree.path("disc.vant")).code(), fnfErr);
    EXPECT_FALSE(tree.exists("disc.vant"));
    EXPECT_FALSE(vant.finishInPlace("/dev/null").isNull()) << "nothing can be appended to it";
}

TEST(ImageFinisher, finishInPlace_addsNothing_toFormatsThatNeedNothing)
{
    const TemporaryTree tree;
    tree.makeFile("disc.iso", "blocks");
    EXPECT_TRUE(finisher(TessaronDiscImageFormatISO, 6).finishInPlace(tree.path("disc.iso")).isNull());
    EXPECT_EQ(tree.contents("disc.iso"), "blocks");
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST(ImageFinisher, finish_givesTheNames_whenAllIsInTheFiles)
{
    const TemporaryTree tree;
    StagedImage staged(tree);
    EXPECT_TRUE(finisher(TessaronDiscImageFormatBIN, std::uint64_t{3} * 2048).finish(staged.unfinished).isNull());
    EXPECT_EQ(staged.namesGiven, 1);
    EXPECT_TRUE(tree.contents("disc.cue").startsWith("FILE \"disc.bin\" BINARY\r\n"));
    EXPECT_EQ(tree.contents("disc.bin").size(), 3 * 2048);
}

TEST(ImageFinisher, finish_saysTheReason_whenTheNamesCannotBeGiven)
{
    const TemporaryTree tree;
    StagedImage staged(tree);
    staged.naming = EROFS;
    const NSError error = finisher(TessaronDiscImageFormatBIN, std::uint64_t{3} * 2048).finish(staged.unfinished);
    EXPECT_EQ(error.code(), wPrErr);
    EXPECT_EQ(error.localizedDescription(),
              QStringLiteral("The image is made, but cannot get its name “%1”: Read-only file system.")
                  .arg(tree.pathText("disc.bin")));
    EXPECT_FALSE(error.localizedRecoverySuggestion().isEmpty());
}

TEST(ImageFinisher, finish_givesNoName_toAnImageOfAnotherLength)
{
    const TemporaryTree tree;
    StagedImage staged(tree);
    const NSError error = finisher(TessaronDiscImageFormatBIN, std::uint64_t{4} * 2048).finish(staged.unfinished);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("another length")));
    EXPECT_EQ(error.filePath(), tree.pathText("disc.bin"));
    EXPECT_EQ(staged.namesGiven, 0);
}

TEST(ImageFinisher, finish_givesNoName_whenTheTrailerDoesNotFit)
{
    const TemporaryTree tree;
    StagedImage staged(tree);
    const FileSizeLimit limit(3 * 2048 + 50);
    const NSError error = finisher(TessaronDiscImageFormatVANT, std::uint64_t{3} * 2048).finish(staged.unfinished);
    EXPECT_EQ(error.filePath(), tree.pathText("disc.bin"));
    EXPECT_EQ(staged.namesGiven, 0);
}

TEST(ImageFinisher, finish_refuses_whatACueSheetOrATrailerCannotSay)
{
    const TemporaryTree tree;
    StagedImage staged(tree);
    TableOfContents audio = contentsOfPlainImage(std::uint64_t{3} * 2048);
    audio.sessions[0].tracks[0].kind = TrackKind::Audio;
    ASSERT_EQ(audio.sessions[0].tracks[0].blockSize, 2048u) << "audio has blocks of 2352 bytes alone";
    const NSError noSheet = ImageFinisher(TessaronDiscImageFormatBIN, audio).finish(staged.unfinished);
    EXPECT_EQ(noSheet.code(), paramErr);
    EXPECT_EQ(
        noSheet.localizedDescription(),
        QStringLiteral("No cue sheet can describe the tracks of “%1”: A cue sheet has no mode for track 1 with its "
                       "blocks of 2048 bytes.")
            .arg(tree.pathText("disc.bin")));
    EXPECT_EQ(noSheet.localizedRecoverySuggestion(), QStringLiteral("Save the disc as a VANT image."));
    UnfinishedImage empty;
    empty.path = tree.path("disc.vant");
    EXPECT_EQ(ImageFinisher(TessaronDiscImageFormatVANT, TableOfContents()).finish(empty).code(), paramErr);
    EXPECT_EQ(staged.namesGiven, 0);
}

namespace
{

/// A data track of raw sectors with a pregap, then audio in a second session.
TableOfContents mixedContents()
{
    TableOfContents contents = contentsOfPlainImage(0);
    DiscTrack &data = contents.sessions[0].tracks[0];
    data.recording = {};
    data.blockSize = 2352;
    data.length = 4;
    data.pregap = {150, false};
    DiscTrack audio;
    audio.kind = TrackKind::Audio;
    audio.blockSize = 2352;
    audio.length = 6;
    audio.indexPoints = {2};
    audio.copyState = CopyState::ProtectedOriginal;
    contents.sessions.push_back({{}, {audio}});
    contents.numberTracks();
    contents.joinSessions();
    return contents;
}

} // namespace

TEST(ImageFinisher, isOnePlainTrack_isFalse_whenAnythingIsBesides)
{
    EXPECT_TRUE(isOnePlainTrack(contentsOfPlainImage(std::uint64_t{5} * 2048)));
    const auto isPlainWith = [](const std::function<void(DiscTrack &)> &change) {
        TableOfContents contents = contentsOfPlainImage(std::uint64_t{5} * 2048);
        change(contents.sessions[0].tracks[0]);
        return isOnePlainTrack(contents);
    };
    EXPECT_TRUE(isPlainWith([](DiscTrack &track) { track.recording.trackMode = 5; }));
    EXPECT_TRUE(isPlainWith([](DiscTrack &track) { track.kind = TrackKind::Unstated; }));
    EXPECT_FALSE(isPlainWith([](DiscTrack &track) { track.kind = TrackKind::Mode2Form1; }));
    EXPECT_FALSE(isPlainWith([](DiscTrack &track) { track.blockSize = 2352; }));
    EXPECT_FALSE(isPlainWith([](DiscTrack &track) { track.pregap.length = 150; }));
    EXPECT_FALSE(isPlainWith([](DiscTrack &track) { track.postgap = {1, true}; }));
    EXPECT_FALSE(isPlainWith([](DiscTrack &track) { track.indexPoints = {2}; }));
    EXPECT_FALSE(isOnePlainTrack(mixedContents()));
}

TEST(ImageFinisher, finish_writesACueSheetOfAllTracks)
{
    const TemporaryTree tree;
    StagedImage staged(tree, QByteArray(qsizetype{10} * 2352, 'x'));
    const ImageFinisher bin(TessaronDiscImageFormatBIN, mixedContents());
    EXPECT_TRUE(bin.finish(staged.unfinished).isNull());
    EXPECT_EQ(tree.contents("disc.cue"),
              "FILE \"disc.bin\" BINARY\r\n"
              "  REM SESSION 01\r\n"
              "  TRACK 01 MODE1/2352\r\n"
              "    PREGAP 00:02:00\r\n"
              "    INDEX 01 00:00:00\r\n"
              "  REM SESSION 02\r\n"
              "  TRACK 02 AUDIO\r\n"
              "    INDEX 01 00:00:04\r\n"
              "    INDEX 02 00:00:06\r\n");
    EXPECT_EQ(bin.lost(), QStringList{QStringLiteral("that a track is a protected original")});
}

TEST(ImageFinisher, finish_describesAllTracksInTheTrailer)
{
    const TemporaryTree tree;
    const QByteArray path = tree.makeFile("disc.vant", QByteArray(qsizetype{10} * 2352, 'x'));
    TableOfContents contents = mixedContents();
    contents.mediaCatalogNumber = "0123456789012";
    const ImageFinisher vant(TessaronDiscImageFormatVANT, contents);
    EXPECT_TRUE(vant.finishInPlace(path).isNull());
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText("disc.vant"));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    TableOfContents said = tableOfContentsOfVANT(*read.image);
    ASSERT_EQ(said.sessions.size(), 2u);
    EXPECT_EQ(said.track(1)->pregap, (TrackGap{150, false}));
    EXPECT_EQ(said.track(2)->indexPoints, (std::vector<std::uint64_t>{2}));
    EXPECT_EQ(said.track(2)->copyState, CopyState::ProtectedOriginal);
    EXPECT_EQ(vant.lost(), QStringList{QStringLiteral("the disc's catalogue number")});
}

TEST(ImageFinisher, finish_putsTheTrailerBehindTheBlocks_ofAStream)
{
    const TemporaryTree tree;
    std::array<int, 2> ends = {-1, -1};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueDescriptor from(ends[0]);
    const UniqueDescriptor to(ends[1]);
    UnfinishedImage stream;
    stream.descriptor = to.get();
    EXPECT_TRUE(finisher(TessaronDiscImageFormatVANT, 2048).finish(stream).isNull());
    std::array<char, 4096> bytes;
    EXPECT_GT(::read(from.get(), bytes.data(), bytes.size()), 64);
}

TEST(ImageFinisher, finish_waitsForTheFolder_whichMayNotBeListed)
{
    const TemporaryTree tree;
    StagedImage staged(tree);
    staged.unfinished.giveNames = {};
    tree.setMode("", 0333);
    {
        const WithoutRootRights withoutRights;
        ASSERT_LT(::openat(staged.unfinished.folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC), 0);
        EXPECT_TRUE(finisher(TessaronDiscImageFormatBIN, std::uint64_t{3} * 2048).finish(staged.unfinished).isNull());
    }
    tree.setMode("", 0700);
}

TEST(ImageFinisher, finish_keepsTheTextsOfEachLanguage_inAVantImage)
{
    const TemporaryTree tree;
    const QByteArray path = tree.makeFile("disc.vant", QByteArray(qsizetype{10} * 2352, 'x'));
    TableOfContents contents = mixedContents();
    for (const std::uint8_t language : {CDTextBlock::english, std::uint8_t(0x08)}) {
        CDTextBlock block;
        block.language = language;
        block.texts[CDTextKind::Title] = {QStringLiteral("Disc"), QStringLiteral("One"), QStringLiteral("Two")};
        contents.cdText.blocks.push_back(block);
    }
    const ImageFinisher vant(TessaronDiscImageFormatVANT, contents);
    EXPECT_TRUE(vant.finishInPlace(path).isNull());
    EXPECT_EQ(vant.lost(), QStringList());
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText("disc.vant"));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    EXPECT_EQ(read.image->cdTextBlocks.size(), 2) << "a record for each language";
    const Result<CDText> text = cdTextOfPacks(read.image->cdTextBlocks.join());
    ASSERT_TRUE(text);
    EXPECT_EQ(*text, contents.cdText);
}
