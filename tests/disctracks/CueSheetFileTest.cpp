#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueSheetReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Tessaron;

namespace
{

class CueSheetFile : public testing::Test
{
protected:
    void write(const QByteArray &name, const QByteArray &contents)
    {
        QFile file(QString::fromLocal8Bit(path(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(contents), contents.size());
    }
    [[nodiscard]] QByteArray path(const QByteArray &name) const { return m_folder.path().toUtf8() + '/' + name; }

    /// A sheet of one audio track in the named file.
    Result<CueSheet> sheetNaming(const QByteArray &name, const QByteArray &type = "BINARY")
    {
        write("sheet.cue", "FILE \"" + name + "\" " + type + "\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
        return cueSheetOfFile(path("sheet.cue"));
    }

    QTemporaryDir m_folder;
};

QByteArray waveOf(const QByteArray &samples, std::uint32_t rate = 44100)
{
    QByteArray wave = QByteArray("RIFF\0\0\0\0WAVELIST\2\0\0\0xxfmt \x10\0\0\0\1\0\2\0", 34);
    for (const std::uint32_t number : {rate, rate * 4}) {
        for (int byte = 0; byte < 4; ++byte)
            wave.append(char(number >> 8 * byte));
    }
    wave.append(QByteArray("\4\0\x10\0data", 8));
    for (int byte = 0; byte < 4; ++byte)
        wave.append(char(std::uint32_t(samples.size()) >> 8 * byte));
    return wave + samples + "tail";
}

} // namespace

TEST_F(CueSheetFile, files_areFoundBesideTheSheet)
{
    write("Disc.bin", QByteArray(qsizetype{7} * 2352, 'x'));
    for (const char *const name : {"Disc.bin", "disc.BIN", "C:\\Images\\Disc.bin", "/nowhere/Disc.bin", "./Disc.bin"}) {
        const Result<CueSheet> sheet = sheetNaming(name);
        ASSERT_TRUE(sheet) << name << sheet.error().localizedDescription().toStdString();
        EXPECT_EQ(sheet->contents.track(1)->length, 7u);
        EXPECT_TRUE(sheet->files[0].path.endsWith("Disc.bin"));
    }
}

TEST_F(CueSheetFile, foldersOfAnotherSystem_areFollowedWhereTheyAreThere)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("CD1")));
    write("CD1/Disc.bin", QByteArray(qsizetype{7} * 2352, 'x'));
    write("Disc.bin", QByteArray(qsizetype{8} * 2352, 'x'));
    const Result<CueSheet> sheet = sheetNaming("CD1\\Disc.bin");
    ASSERT_TRUE(sheet) << sheet.error().localizedDescription().toStdString();
    EXPECT_EQ(sheet->files[0].path, path("CD1/Disc.bin"));
    EXPECT_TRUE(sheet->notes.empty());
}

TEST_F(CueSheetFile, aSoundWithAnotherEnding_isTaken_andNoted)
{
    struct Row {
        const char *there;
        const char *named;
        const char *note; ///< "" where the name is the same
    };
    const QByteArray three = waveOf(QByteArray(qsizetype{3} * 2352, 's'));
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("CD1")));
    for (const Row &row :
         {Row{"1.flac", "1.wav", "“1.wav” is not there; “1.flac” was taken in its place."},
          Row{"1.flac", "D:\\Music\\1.wav", "“D:\\Music\\1.wav” is not there; “1.flac” was taken in its place."},
          Row{"Track.Flac", "TRACK.WAV", "“TRACK.WAV” is not there; “Track.Flac” was taken in its place."},
          Row{"track.WAV", "Track.wav", "“Track.wav” is not there; “track.WAV” was taken in its place."},
          Row{"CD1/1.m4a", "CD1\\1.wav", "“CD1\\1.wav” is not there; “1.m4a” was taken in its place."},
          Row{"1.wav", "1.wav", ""}, Row{"1.wav", "/nowhere/1.wav", ""}}) {
        write(row.there, three);
        for (const char *const other : {"1.log", "1.jpg", "1", "track.cue"})
            write(other, "no sound");
        const Result<CueSheet> sheet = sheetNaming(row.named, "WAVE");
        ASSERT_TRUE(sheet) << row.named << sheet.error().localizedFailureReason().toStdString();
        EXPECT_EQ(sheet->files[0].path, path(row.there));
        EXPECT_EQ(sheet->contents.track(1)->length, 3u);
        std::vector<CueNote> notes;
        if (*row.note)
            notes.push_back({1, QString::fromUtf8(row.note)});
        EXPECT_EQ(sheet->notes, notes) << row.named;
        ASSERT_TRUE(QFile::remove(QString::fromUtf8(path(row.there))));
    }
    write("1.flac", three);
    EXPECT_FALSE(sheetNaming("1.bin", "BINARY")) << "the blocks of an image are not sound";
}

TEST_F(CueSheetFile, moreThanOneFileThatCouldBeMeant_isAnErrorThatNamesThem)
{
    const auto reasonFor = [this](const QByteArray &name) {
        const Result<CueSheet> sheet = sheetNaming(name, "WAVE");
        return sheet ? std::string("none") : sheet.error().localizedFailureReason().toStdString();
    };
    for (const char *const name : {"1.ape", "1.flac", "1.mp3", "Two.wav", "TWO.wav", "three.wav", "three.flac"})
        write(name, "x");
    EXPECT_EQ(reasonFor("1.wav"),
              "Line 1 of the cue sheet: \"1.wav\" cannot be read: it is not there, and “1.ape”, “1.flac” or “1.mp3” "
              "could be meant");
    EXPECT_EQ(reasonFor("two.wav"),
              "Line 1 of the cue sheet: \"two.wav\" cannot be read: it is not there, and “TWO.wav” or “Two.wav” could "
              "be meant");
    // What differs least is meant.
    EXPECT_EQ(reasonFor("Three.wav"), "none");
    EXPECT_EQ(reasonFor("1.MP3"), "none");
    EXPECT_EQ(reasonFor("gone.wav").find("could be meant"), std::string::npos);
}

TEST_F(CueSheetFile, aNameThatIsNotUtf8_isFoundAsItIs_andDecoded)
{
    write("plain.bin", QByteArray(2352, 'x'));
    ASSERT_EQ(::rename(path("plain.bin").constData(), path("caf\xE9.bin").constData()), 0);
    Result<CueSheet> sheet = sheetNaming("caf\xE9.bin");
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->files[0].path, path("caf\xE9.bin"));
    ASSERT_EQ(::rename(path("caf\xE9.bin").constData(), path("caf\xC3\xA9.bin").constData()), 0);
    sheet = sheetNaming("caf\xE9.bin");
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->files[0].path, path("caf\xC3\xA9.bin"));
}

TEST_F(CueSheetFile, aMissingFile_isAnErrorThatNamesLineAndFile)
{
    const Result<CueSheet> sheet = sheetNaming("gone.bin");
    ASSERT_FALSE(sheet);
    EXPECT_TRUE(
        sheet.error().localizedFailureReason().startsWith(QStringLiteral("Line 1 of the cue sheet: \"gone.bin\"")));
    EXPECT_FALSE(sheet.error().localizedRecoverySuggestion().isEmpty());
    EXPECT_FALSE(cueSheetOfFile(path("no-sheet.cue")));
    EXPECT_FALSE(cueSheetOfFile(m_folder.path().toUtf8()));
}

TEST_F(CueSheetFile, aFifo_isRefusedAtOnce)
{
    ASSERT_EQ(::mkfifo(path("fifo.cue").constData(), 0600), 0);
    EXPECT_FALSE(cueSheetOfFile(path("fifo.cue")));
    ASSERT_EQ(::mkfifo(path("fifo.bin").constData(), 0600), 0);
    EXPECT_FALSE(sheetNaming("fifo.bin"));
}

TEST_F(CueSheetFile, aLongFile_isNoSheet)
{
    write("big.cue", QByteArray(2 << 20, '\n'));
    EXPECT_FALSE(cueSheetOfFile(path("big.cue")));
}

TEST_F(CueSheetFile, soundFiles_areMeasuredInTheirSamples)
{
    write("sound.wav", waveOf(QByteArray(qsizetype{3} * 2352, 's')));
    Result<CueSheet> sheet = sheetNaming("sound.wav", "WAVE");
    ASSERT_TRUE(sheet) << sheet.error().localizedDescription().toStdString();
    EXPECT_EQ(sheet->contents.track(1)->length, 3u);
    EXPECT_TRUE(sheet->places[0].isLengthKnown);
    // What only a decoder can measure has no length yet.
    write("sound.wav", waveOf(QByteArray(qsizetype{3} * 2352, 's'), 48000));
    sheet = sheetNaming("sound.wav", "WAVE");
    ASSERT_TRUE(sheet);
    EXPECT_FALSE(sheet->places[0].isLengthKnown);
    write("sound.flac", "fLaC");
    EXPECT_FALSE(sheetNaming("sound.flac", "WAVE")->places[0].isLengthKnown);
}

TEST_F(CueSheetFile, cdTextFile_isRead)
{
    CDText texts;
    CDTextBlock block;
    block.texts[CDTextKind::Title] = {QStringLiteral("Album"), QStringLiteral("Track")};
    texts.blocks.push_back(block);
    write("a.bin", QByteArray(2352, 'x'));
    write("a.cdt", *cdTextPacks(texts, 1) + QByteArray(1, '\0'));
    write("a.cue", "CDTEXTFILE \"a.cdt\"\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    const Result<CueSheet> sheet = cueSheetOfFile(path("a.cue"));
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->contents.cdText, texts);
    write("a.cdt", "no packs");
    const Result<CueSheet> damaged = cueSheetOfFile(path("a.cue"));
    ASSERT_TRUE(damaged);
    ASSERT_EQ(damaged->notes.size(), 1u);
    EXPECT_EQ(damaged->notes[0].line, 1u);
}
