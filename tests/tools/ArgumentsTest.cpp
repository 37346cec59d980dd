#include "tools/tessaron/Arguments.h"

#include <gtest/gtest.h>
#include <ostream>

namespace Tessaron::Tool
{

namespace
{

struct WrongLine {
    QList<QByteArray> words;
    const char *message;
};

/// As the test is named.
void PrintTo(const WrongLine &line, std::ostream *output)
{
    *output << '"' << line.words.join(' ').constData() << '"';
}

TEST(Arguments, image_hasDefaults_whenOnlyOutputAndPathAreGiven)
{
    const Arguments arguments = parseArguments({"image", "-o", "disc.iso", "folder"});
    EXPECT_EQ(arguments.action, Arguments::Action::MakeImage);
    EXPECT_EQ(arguments.output, "disc.iso");
    EXPECT_EQ(arguments.paths, QList<QByteArray>({"folder"}));
    EXPECT_EQ(arguments.format, DiscFormat::ISO);
    EXPECT_EQ(arguments.filesystems, allDiscFilesystems);
    EXPECT_EQ(arguments.progress, ProgressMode::Auto);
    EXPECT_EQ(arguments.verbosity, Verbosity::Normal);
    EXPECT_FALSE(arguments.strict);
    EXPECT_FALSE(arguments.json);
}

TEST(Arguments, dvd_isDescribedOrPlayed)
{
    EXPECT_EQ(parseArguments({"dvd", "film.iso"}).action, Arguments::Action::DescribeDVD);
    Arguments arguments = parseArguments({"dvd", "--play", "film.iso"});
    EXPECT_EQ(arguments.action, Arguments::Action::PlayDVD);
    EXPECT_EQ(arguments.paths, QList<QByteArray>({"film.iso"}));
    EXPECT_EQ(arguments.title, 0);
    EXPECT_EQ(arguments.chapter, 0);
    arguments = parseArguments({"dvd", "--title=2", "film.iso", "--chapter", "5", "--play"});
    EXPECT_EQ(arguments.action, Arguments::Action::PlayDVD);
    EXPECT_EQ(arguments.title, 2);
    EXPECT_EQ(arguments.chapter, 5);
    const WrongLine wrong[] = {
        {{"dvd", "--title", "2", "film.iso"}, "--title and --chapter are for --play"},
        {{"dvd", "--chapter", "2", "film.iso"}, "--title and --chapter are for --play"},
        {{"dvd", "--play", "--json", "film.iso"}, "--json tells what is on a disc; it does not go with --play"},
        {{"dvd", "--play"}, "no PATH was given: name a folder VIDEO_TS, an image or a device"},
        {{"dvd", "--play", "--title", "0", "film.iso"}, "“0” is not a title; use a number from 1 to 99"},
        {{"dvd", "--play", "--title", "100", "film.iso"}, "“100” is not a title; use a number from 1 to 99"},
        {{"dvd", "--play", "--chapter", "x", "film.iso"}, "“x” is not a chapter; use a number from 1 to 999"},
    };
    for (const WrongLine &line : wrong) {
        const Arguments refused = parseArguments(line.words);
        EXPECT_EQ(refused.action, Arguments::Action::ReportUsageError) << line.message;
        EXPECT_EQ(refused.usageError.toStdString(), line.message);
    }
}

TEST(Arguments, options_areUnderstood_inEveryOrderAndSpelling)
{
    const Arguments arguments =
        parseArguments({"image", "one", "--format=bin", "-qodisc.x", "--name", "A B", "two", "--progress", "json",
                        "--strict", "--json", "--filesystems=iso9660", "--", "-o", "--json"});
    EXPECT_EQ(arguments.action, Arguments::Action::MakeImage);
    EXPECT_EQ(arguments.paths, QList<QByteArray>({"one", "two", "-o", "--json"}));
    EXPECT_EQ(arguments.output, "disc.x");
    EXPECT_EQ(arguments.format, DiscFormat::BIN);
    EXPECT_EQ(arguments.volumeName, QStringLiteral("A B"));
    EXPECT_EQ(arguments.progress, ProgressMode::Json);
    EXPECT_EQ(arguments.filesystems, DiscFilesystem::ISO9660);
    EXPECT_EQ(arguments.verbosity, Verbosity::Quiet);
    EXPECT_TRUE(arguments.strict);
    EXPECT_TRUE(arguments.json);
}

TEST(Arguments, help_isAboutTheCommandThatFollows)
{
    EXPECT_EQ(parseArguments({"help"}).action, Arguments::Action::ShowHelp);
    EXPECT_EQ(parseArguments({"help"}).command, "");
    EXPECT_EQ(parseArguments({"help", "image"}).action, Arguments::Action::ShowHelp);
    EXPECT_EQ(parseArguments({"help", "image"}).command, "image");
    EXPECT_EQ(parseArguments({"help", "help"}).action, Arguments::Action::ShowHelp);
    EXPECT_EQ(parseArguments({"help", "help"}).command, "");
    EXPECT_EQ(parseArguments({"help", "frobnicate"}).action, Arguments::Action::ReportUsageError);
    EXPECT_EQ(parseArguments({"help", "image", "scan"}).action, Arguments::Action::ReportUsageError);
}

TEST(Arguments, image_isSynchronized_unlessItIsToldNotToBe)
{
    EXPECT_TRUE(parseArguments({"image", "-o", "a", "x"}).isSynchronized);
    EXPECT_FALSE(parseArguments({"image", "--no-sync", "-o", "a", "x"}).isSynchronized);
}

TEST(Arguments, format_followsTheEndingOfTheOutput_whenItIsNotGiven)
{
    EXPECT_EQ(parseArguments({"image", "-o", "a/b.BIN", "x"}).format, DiscFormat::BIN);
    EXPECT_EQ(parseArguments({"image", "-o", "a.bin/b", "x"}).format, DiscFormat::ISO);
    EXPECT_EQ(parseArguments({"image", "-o", "b.bin", "--format", "iso", "x"}).format, DiscFormat::ISO);
    EXPECT_EQ(parseArguments({"image", "-o", "b.Vant", "x"}).format, DiscFormat::VANT);
    EXPECT_EQ(parseArguments({"image", "-o", "b.iso", "--format=vant", "x"}).format, DiscFormat::VANT);
}

TEST(Arguments, filesystems_areAnyCombination_inAnyOrder)
{
    const auto maskOf = [](const QByteArray &list) {
        return parseArguments({"image", "-o", "a", "--filesystems", list, "x"}).filesystems;
    };
    EXPECT_EQ(maskOf("udf"), DiscFilesystem::UDF);
    EXPECT_EQ(maskOf("hfs+"), DiscFilesystem::HFSPlus);
    EXPECT_EQ(maskOf("joliet"), DiscFilesystem::Joliet);
    EXPECT_EQ(maskOf("hfs+,iso9660"), DiscFilesystems(DiscFilesystem::HFSPlus) | DiscFilesystem::ISO9660);
    EXPECT_EQ(maskOf("hfs+,udf,joliet,iso9660"), allDiscFilesystems);
}

TEST(Arguments, lastOption_counts_whenItIsGivenTwice)
{
    const Arguments arguments = parseArguments({"image", "-q", "-o", "a", "-v", "-o", "b", "x"});
    EXPECT_EQ(arguments.output, "b");
    EXPECT_EQ(arguments.verbosity, Verbosity::Verbose);
}

TEST(Arguments, paths_stayBytes_whenTheyAreNotUtf8)
{
    const Arguments arguments = parseArguments({"scan", "\xe4\xff"});
    EXPECT_EQ(arguments.action, Arguments::Action::Scan);
    EXPECT_EQ(arguments.paths, QList<QByteArray>({"\xe4\xff"}));
}

TEST(Arguments, singleDash_isAPath)
{
    EXPECT_EQ(parseArguments({"scan", "-"}).paths, QList<QByteArray>({"-"}));
}

TEST(Arguments, helpAndVersion_needNothingElse)
{
    EXPECT_EQ(parseArguments({"--help"}).action, Arguments::Action::ShowHelp);
    EXPECT_EQ(parseArguments({"-h"}).action, Arguments::Action::ShowHelp);
    EXPECT_EQ(parseArguments({"--version"}).action, Arguments::Action::ShowVersion);
    const Arguments arguments = parseArguments({"image", "--help"});
    EXPECT_EQ(arguments.action, Arguments::Action::ShowHelp);
    EXPECT_EQ(arguments.command, "image");
}

TEST(Arguments, usageError_asksForJson_whenTheLineDoes)
{
    const Arguments arguments = parseArguments({"image", "--nonsense", "--json"});
    EXPECT_EQ(arguments.action, Arguments::Action::ReportUsageError);
    EXPECT_TRUE(arguments.json);
    EXPECT_FALSE(parseArguments({"image", "--nonsense", "--", "--json"}).json);
    EXPECT_TRUE(parseArguments({"no-command", "--json"}).json);
    EXPECT_TRUE(parseArguments({"--json"}).json);
    const Arguments named = parseArguments({"image", "-o", "--json", "folder"});
    EXPECT_FALSE(named.json) << "it is the value of another option";
    EXPECT_EQ(named.output, "--json");
}

TEST(Arguments, inspectAndVerify_takeTheImageFirst)
{
    const Arguments inspect = parseArguments({"inspect", "--json", "disc.iso"});
    EXPECT_EQ(inspect.action, Arguments::Action::Inspect);
    EXPECT_EQ(inspect.paths, QList<QByteArray>({"disc.iso"}));
    EXPECT_TRUE(inspect.json);
    const Arguments verify = parseArguments({"verify", "-v", "disc.iso", "a", "b"});
    EXPECT_EQ(verify.action, Arguments::Action::Verify);
    EXPECT_EQ(verify.paths, QList<QByteArray>({"disc.iso", "a", "b"}));
    EXPECT_EQ(verify.verbosity, Verbosity::Verbose);
}

TEST(Arguments, tracksAndExtract_takeOneImage)
{
    const Arguments tracks = parseArguments({"tracks", "disc.cue", "--json"});
    EXPECT_EQ(tracks.action, Arguments::Action::Tracks);
    EXPECT_EQ(tracks.paths, QList<QByteArray>({"disc.cue"}));
    EXPECT_TRUE(tracks.json);
    const Arguments one = parseArguments({"extract", "--track=7", "-o", "song.wav", "disc.cue"});
    EXPECT_EQ(one.action, Arguments::Action::Extract);
    EXPECT_EQ(one.track, 7u);
    EXPECT_EQ(one.output, "song.wav");
    EXPECT_EQ(one.sound, ExtractedSound::WAVE);
    EXPECT_TRUE(one.isSynchronized);
    const Arguments all = parseArguments({"extract", "--track", "all", "--hidden", "--no-sync", "-o", "x.flac", "y"});
    EXPECT_EQ(all.action, Arguments::Action::Extract);
    EXPECT_FALSE(all.track);
    EXPECT_TRUE(all.takesHiddenSound);
    EXPECT_FALSE(all.isSynchronized);
    EXPECT_EQ(all.sound, ExtractedSound::WAVE) << "the name of a folder says nothing";
    EXPECT_EQ(parseArguments({"extract", "--track", "0", "-o", "x", "y"}).track, 0u);
}

TEST(Arguments, image_isSplit_forDiscsOfACapacity)
{
    const auto capacity = [](const QByteArray &value) {
        const Arguments arguments = parseArguments({"image", "--split", value, "-o", "x.iso", "Photos"});
        EXPECT_EQ(arguments.action, Arguments::Action::SplitImage) << arguments.usageError.toStdString();
        return arguments.splitCapacity;
    };
    EXPECT_EQ(capacity("dvd"), 2'295'104u * 2048ull);
    EXPECT_EQ(capacity("700M"), 700'000'000u);
    EXPECT_EQ(capacity("25G"), 25'000'000'000u);
    EXPECT_EQ(capacity("1234567"), 1'234'567u);
    for (const QByteArray &wrong : {QByteArray("dvds"), QByteArray("1k"), QByteArray("M"), QByteArray("-5G"),
                                    QByteArray("99999999999999999999G"), QByteArray("1T")})
        EXPECT_EQ(parseArguments({"image", "--split", wrong, "-o", "x.iso", "P"}).action,
                  Arguments::Action::ReportUsageError)
            << wrong.constData();
    EXPECT_TRUE(parseArguments({"image", "--split", "dvd", "-o", "-", "P"})
                    .usageError.contains(QStringLiteral("standard output")));
}

TEST(Arguments, extract_takesFiles_behindTheImage)
{
    const Arguments some =
        parseArguments({"extract", "--files", "--filesystem", "hfs+", "-o", "out", "disc.iso", "a/b", "c"});
    EXPECT_EQ(some.action, Arguments::Action::ExtractFiles) << some.usageError.toStdString();
    EXPECT_EQ(some.paths, QList<QByteArray>({"disc.iso", "a/b", "c"}));
    EXPECT_EQ(some.extractedFilesystem, VolumeKind::HFSPlus);
    EXPECT_FALSE(some.track);
    EXPECT_EQ(parseArguments({"extract", "--files", "--track", "2", "-o", "out", "disc.cue"}).track, 2u);
}

TEST(Arguments, extract_takesTheFormOfSound_fromItsOptionOrTheEndOfTheName)
{
    const auto sound = [](const QList<QByteArray> &words) {
        return parseArguments(QList<QByteArray>{"extract", "disc.cue", "--track", "2"} + words).sound;
    };
    EXPECT_EQ(sound({"-o", "song.flac"}), ExtractedSound::FLAC);
    EXPECT_EQ(sound({"-o", "song.FLAC"}), ExtractedSound::FLAC);
    EXPECT_EQ(sound({"-o", "song"}), ExtractedSound::WAVE);
    EXPECT_EQ(sound({"-o", "song", "--format", "flac"}), ExtractedSound::FLAC);
    EXPECT_EQ(sound({"-o", "song.flac", "--format", "wav"}), ExtractedSound::WAVE);
}

class WrongArguments : public testing::TestWithParam<WrongLine>
{
};

TEST_P(WrongArguments, parse_saysWhatIsWrong)
{
    const Arguments arguments = parseArguments(GetParam().words);
    EXPECT_EQ(arguments.action, Arguments::Action::ReportUsageError);
    EXPECT_NE(arguments.usageError.indexOf(QString::fromUtf8(GetParam().message)), -1)
        << arguments.usageError.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Lines, WrongArguments,
    testing::Values(
        WrongLine{{}, "no command"}, WrongLine{{"brew"}, "there is no command “brew”"}, WrongLine{{"burn"}, "no PATH"},
        WrongLine{{"burn", "--speed", "fast", "a"}, "is not a speed"},
        WrongLine{{"burn", "--verify", "--simulate", "a"}, "writes nothing"},
        WrongLine{{"burn", "--audio"}, "no PATH was given: name the audio files"},
        WrongLine{{"burn", "--cd-text", "a.wav"}, "are for --audio, which was not given"},
        WrongLine{{"burn", "--gap", "2", "a.wav"}, "are for --audio, which was not given"},
        WrongLine{{"burn", "--audio", "--strict", "a.wav"}, "do not go with --audio"},
        WrongLine{{"burn", "--audio", "-n", "DISC", "a.wav"}, "do not go with --audio"},
        WrongLine{{"blank", "/dev/sr0"}, "--drive"}, WrongLine{{"blank", "--full", "--format"}, "exclude each other"},
        WrongLine{{"--json"}, "there is no option “--json”"}, WrongLine{{"scan"}, "no PATH"},
        WrongLine{{"scan", ""}, "a PATH is empty"}, WrongLine{{"inspect"}, "no IMAGE"},
        WrongLine{{"inspect", "a", "b"}, "more than one IMAGE"}, WrongLine{{"verify"}, "no IMAGE"},
        WrongLine{{"verify", "a"}, "no PATH"}, WrongLine{{"verify", "--strict", "a", "b"}, "no option"},
        WrongLine{{"tracks"}, "no IMAGE"}, WrongLine{{"tracks", "a", "b"}, "more than one IMAGE"},
        WrongLine{{"extract", "a"}, "with --track"}, WrongLine{{"extract", "a", "--track", "1"}, "with -o OUT"},
        WrongLine{{"extract", "--track", "1", "-o", "x"}, "no IMAGE"},
        WrongLine{{"extract", "--files", "-o", "x"}, "no IMAGE"}, WrongLine{{"extract", "--files", "x"}, "with -o OUT"},
        WrongLine{{"extract", "--files", "--hidden", "-o", "x", "a"}, "do not go with --files"},
        WrongLine{{"extract", "--files", "--track", "all", "-o", "x", "a"}, "the one track"},
        WrongLine{{"extract", "--files", "--filesystem", "fat", "-o", "x", "a"}, "use rockridge"},
        WrongLine{{"extract", "--track", "1", "--filesystem", "udf", "-o", "x", "a"}, "is for --files"},
        WrongLine{{"extract", "--track", "1", "--hidden", "-o", "x", "a"}, "--track all"},
        WrongLine{{"extract", "--track", "1", "--format", "iso", "-o", "x", "a"}, "use wav or flac"},
        WrongLine{{"extract", "--track", "100", "a"}, "“100” is not a track"},
        WrongLine{{"extract", "--track", "ALL", "a"}, "use a number from 1 to 99"}, WrongLine{{"image", "x"}, "-o OUT"},
        WrongLine{{"image", "-o", "x.iso"}, "no PATH"}, WrongLine{{"image", "x", "-o"}, "the option -o needs a value"},
        WrongLine{{"image", "x", "--output="}, "the value of --output is empty"},
        WrongLine{{"image", "--strict=yes", "x"}, "the option --strict takes no value"},
        WrongLine{{"scan", "--strict", "x"}, "there is no option “--strict”"},
        WrongLine{{"image", "-qx", "x"}, "there is no option “-x”"},
        WrongLine{{"image", "--format", "nrg", "x"}, "use iso, bin or vant"},
        WrongLine{{"scan", "--progress=dots", "x"}, "use auto, bar, json or none"},
        WrongLine{{"image", "--filesystems", "hfs", "x"}, "use some of iso9660,joliet,udf,hfs+"},
        WrongLine{{"image", "--filesystems", "UDF", "x"}, "there is no filesystem “UDF”"},
        WrongLine{{"image", "--filesystems", "rockridge", "x"}, "always goes with iso9660"},
        WrongLine{{"image", "--filesystems", "iso9660,", "x"}, "there is no filesystem"},
        WrongLine{{"image", "-o", "a\".bin", "x"}, "cannot stand in a cue sheet"},
        WrongLine{{"image", "-o", "a\n.bin", "x"}, "cannot stand in a cue sheet"},
        WrongLine{{"image", "--format=bin", "-o", "a.cue", "x"}, "is the name of the cue sheet"},
        WrongLine{{"image", "-o", "out/A.CUE", "x"}, "“A.CUE” is a name for a cue sheet; name the image"}));

} // namespace

} // namespace Tessaron::Tool
