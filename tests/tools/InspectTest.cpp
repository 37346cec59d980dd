#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

#include <filesystem>

namespace Tessaron::Testing
{

namespace
{

/// What the command says of images, our own and those of others.
class Inspect : public ImageTest
{
protected:
    [[nodiscard]] static QJsonObject inspected(const QByteArray &path, int expectedStatus = 0)
    {
        const ChildResult result = runTessaron({"inspect", "--json", path});
        EXPECT_EQ(result.exitStatus, expectedStatus) << result.output.constData() << result.errors.constData();
        return jsonOf(result.output);
    }

    /// "filesystem name files folders" of each filesystem.
    [[nodiscard]] static std::vector<std::string> filesystemsIn(const QJsonObject &object)
    {
        std::vector<std::string> lines;
        for (const QJsonValue item : object[QStringLiteral("filesystems")].toArray())
            lines.push_back(
                QStringLiteral("%1 %2 %3 %4")
                    .arg(item[QStringLiteral("filesystem")].toString(), item[QStringLiteral("name")].toString())
                    .arg(item[QStringLiteral("files")].toInteger())
                    .arg(item[QStringLiteral("folders")].toInteger())
                    .toStdString());
        return lines;
    }

    void makeImage(const QByteArray &name, const QList<QByteArray> &options = {}) const
    {
        const QList<QByteArray> words = QList<QByteArray>({"image", "-q", "-o", m_tree.path(name)}) + options;
        EXPECT_EQ(runTessaron(words + QList<QByteArray>({m_tree.path("source")})).exitStatus, 0);
    }
};

using Lines = std::vector<std::string>;

TEST_F(Inspect, ownImage_hasAllFilesystems)
{
    makeOrdinaryTree();
    makeImage("out/disc.iso", {"--name", "My Disc"});
    const QJsonObject object = inspected(image());
    EXPECT_EQ(filesystemsIn(object),
              Lines({"iso9660 MY_DISC 4 2", "rockridge MY_DISC 4 2", "joliet My Disc 4 2", "udf My Disc 4 2",
                     "hfs+ My Disc 4 2"}));
    EXPECT_EQ(object[QStringLiteral("format")].toString(), QStringLiteral("iso"));
    EXPECT_EQ(object[QStringLiteral("bytes")].toInteger(), m_tree.contents("out/disc.iso").size());
    EXPECT_EQ(object[QStringLiteral("partitions")].toArray().size(), 2);
    EXPECT_EQ(object[QStringLiteral("tracks")].toArray().size(), 0);
    for (const QJsonValue item : object[QStringLiteral("filesystems")].toArray()) {
        EXPECT_EQ(item[QStringLiteral("bytes")].toInteger(), 100108);
        EXPECT_EQ(item[QStringLiteral("damageCount")].toInteger(), 0);
    }
    const ChildResult text = runTessaron({"inspect", image()});
    EXPECT_EQ(text.exitStatus, 0);
    EXPECT_TRUE(text.output.contains("  UDF “My Disc”: ")) << text.output.constData();
}

TEST_F(Inspect, vantAndCueSheet_haveTheirTracks)
{
    makeOrdinaryTree();
    makeImage("out/disc.vant");
    makeImage("out/disc.bin");
    const qint64 blocks = m_tree.contents("out/disc.bin").size() / 2048;
    for (const QByteArray name : {"out/disc.vant", "out/disc.bin", "out/disc.cue"}) {
        SCOPED_TRACE(name.constData());
        const QJsonObject object = inspected(m_tree.path(name));
        const QJsonArray tracks = object[QStringLiteral("tracks")].toArray();
        ASSERT_EQ(tracks.size(), 1);
        EXPECT_EQ(tracks[0][QStringLiteral("mode")].toString(), QStringLiteral("MODE1/2048"));
        EXPECT_EQ(tracks[0][QStringLiteral("blocks")].toInteger(), blocks);
        EXPECT_EQ(filesystemsIn(object).size(), 5u);
        EXPECT_EQ(object[QStringLiteral("format")].toString(),
                  QString::fromUtf8(name.endsWith("vant") ? "vant" : "bin"));
    }
}

TEST_F(Inspect, rawSectors_areReadThrough_withAndWithoutACueSheet)
{
    makeOrdinaryTree();
    makeImage("out/plain.iso", {"--filesystems", "iso9660"});
    const QByteArray plain = m_tree.contents("out/plain.iso");
    const auto blocks = std::size_t(plain.size() / 2048);
    QByteArray raw(qsizetype(blocks) * 2352, Qt::Uninitialized);
    SectorEncoder::encoderFor(TrackKind::Mode1, SectorForm::Raw)
        ->encode(plain.constData(), blocks, BlockAddress(0), raw.data());
    m_tree.makeFile("out/raw.img", raw);
    EXPECT_EQ(inspected(m_tree.path("out/raw.img"))[QStringLiteral("format")].toString(), QStringLiteral("raw"));
    EXPECT_EQ(filesystemsIn(inspected(m_tree.path("out/raw.img"))),
              Lines({"iso9660 SOURCE 4 2", "rockridge SOURCE 4 2"}));
    EXPECT_EQ(runTessaron({"verify", "-q", m_tree.path("out/raw.img"), m_tree.path("source")}).exitStatus, 0);
    QByteArray damaged = raw;
    damaged[5 * 2352 + 2100] = char(damaged[5 * 2352 + 2100] ^ 1);
    m_tree.makeFile("out/damaged.img", damaged);
    EXPECT_EQ(runTessaron({"inspect", m_tree.path("out/damaged.img")}).exitStatus, 1);
    const ChildResult verified = runTessaron({"verify", m_tree.path("out/damaged.img"), m_tree.path("source")});
    EXPECT_EQ(verified.exitStatus, 1);
    EXPECT_TRUE((verified.output + verified.errors).contains("sector 5: ")) << verified.errors.constData();

    const QByteArray audio(qsizetype{150} * 2352, 'a');
    m_tree.makeFile("out/mixed.bin", audio + raw + audio);
    const QByteArray dataFrames = QByteArray::number(qlonglong(150 + plain.size() / 2048));
    const auto frames = [](qint64 count) {
        return QStringLiteral("%1:%2:%3").arg(count / 4500).arg(count / 75 % 60).arg(count % 75).toLatin1();
    };
    m_tree.makeFile("out/mixed.cue",
                    "REM made by hand\nFILE \"mixed.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n"
                    " TRACK 02 MODE1/2352\n  PREGAP 00:02:00\n  INDEX 01 00:02:00\n TRACK 03 AUDIO\n  INDEX 01 "
                        + frames(dataFrames.toLongLong()) + "\n");
    const QJsonObject mixed = inspected(m_tree.path("out/mixed.cue"));
    const QJsonArray tracks = mixed[QStringLiteral("tracks")].toArray();
    ASSERT_EQ(tracks.size(), 3);
    EXPECT_EQ(tracks[0][QStringLiteral("blocks")].toInteger(), 150);
    EXPECT_EQ(tracks[1][QStringLiteral("blocks")].toInteger(), plain.size() / 2048);
    EXPECT_EQ(tracks[1][QStringLiteral("offset")].toInteger(), 150 * 2352);
    EXPECT_EQ(tracks[1][QStringLiteral("pregap")].toInteger(), 150);
    EXPECT_EQ(tracks[2][QStringLiteral("blocks")].toInteger(), 150);
    EXPECT_EQ(filesystemsIn(mixed), Lines({"iso9660 SOURCE 4 2", "rockridge SOURCE 4 2"}));
}

TEST_F(Inspect, vantImage_isReadInTheSectorsOfItsTracks)
{
    makeOrdinaryTree();
    makeImage("out/plain.iso", {"--filesystems", "iso9660"});
    const QByteArray plain = m_tree.contents("out/plain.iso");
    const auto blocks = std::size_t(plain.size() / 2048);
    DiscTrack audio;
    audio.kind = TrackKind::Audio;
    audio.blockSize = 2352;
    audio.length = 150;
    const auto writtenIn = [&](TrackKind kind, SectorForm form, const QByteArray &name) {
        DiscTrack data;
        data.kind = kind;
        data.blockSize = std::uint32_t(form);
        data.length = blocks;
        data.pregap = {10, true};
        QByteArray coded(qsizetype(blocks * data.blockSize), Qt::Uninitialized);
        SectorEncoder::encoderFor(kind, form)->encode(plain.constData(), blocks, BlockAddress(160), coded.data());
        TableOfContents contents;
        contents.sessions.push_back({{}, {audio, data, data}});
        contents.numberTracks();
        const QByteArray track = QByteArray(qsizetype(10) * data.blockSize, '\0') + coded;
        Result<QByteArray> trailer = vantTrailer(contents);
        EXPECT_TRUE(trailer);
        m_tree.makeFile(
            name, QByteArray(qsizetype(150) * 2352, 'a') + track + track + std::move(trailer).valueOr(QByteArray()));
        return m_tree.path(name);
    };
    for (const QByteArray &path : {writtenIn(TrackKind::Mode1, SectorForm::Raw, "out/raw.vant"),
                                   writtenIn(TrackKind::Mode1, SectorForm::RawWithSubchannel, "out/sub.vant"),
                                   writtenIn(TrackKind::Mode2Mixed, SectorForm::WithoutHeader, "out/xa.vant"),
                                   writtenIn(TrackKind::Mode1, SectorForm::UserData, "out/user.vant")}) {
        const QJsonObject object = inspected(path);
        EXPECT_EQ(filesystemsIn(object),
                  Lines({"iso9660 SOURCE 4 2", "rockridge SOURCE 4 2", "iso9660 SOURCE 4 2", "rockridge SOURCE 4 2"}))
            << path.constData();
        const QJsonArray filesystems = object[QStringLiteral("filesystems")].toArray();
        EXPECT_FALSE(filesystems[0].toObject().contains(QStringLiteral("part")));
        EXPECT_EQ(filesystems[2][QStringLiteral("part")].toString(), QStringLiteral("track 3"));
        const QJsonArray tracks = object[QStringLiteral("tracks")].toArray();
        ASSERT_EQ(tracks.size(), 3);
        EXPECT_EQ(tracks[1][QStringLiteral("blocks")].toInteger(), qint64(blocks));
        EXPECT_EQ(tracks[1][QStringLiteral("pregap")].toInteger(), 10);
        EXPECT_TRUE(tracks[1][QStringLiteral("pregapInFile")].toBool());
        const ChildResult said = runTessaron({"inspect", path});
        EXPECT_TRUE(said.output.contains("track 3: ISO 9660")) << said.output.constData();
        EXPECT_EQ(said.errors, "");
    }
}

TEST_F(Inspect, partitions_areReadOrNamedAsNotRead)
{
    makeOrdinaryTree();
    makeImage("out/plain.udf", {"--filesystems", "udf"});
    const QByteArray udf = m_tree.contents("out/plain.udf");
    constexpr qsizetype start = 2048; // sectors of 512 bytes, as the other numbers here
    const qsizetype length = udf.size() / 512;
    QByteArray disk(start * 512, '\0');
    const auto putEntry = [&disk](qsizetype index, char type, qsizetype first, qsizetype count) {
        const qsizetype at = 446 + index * 16;
        disk[at + 4] = type;
        for (qsizetype byte = 0; byte < 4; ++byte) {
            disk[at + 8 + byte] = char(first >> (8 * byte));
            disk[at + 12 + byte] = char(count >> (8 * byte));
        }
    };
    putEntry(0, 0x07, start, length);
    putEntry(1, char(0x83), start + length, 64);
    disk[510] = 0x55;
    disk[511] = char(0xAA);
    m_tree.makeFile("out/disk.img", disk + udf + QByteArray(qsizetype{64} * 512, '\0'));
    const ChildResult result = runTessaron({"inspect", m_tree.path("out/disk.img")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("partition 1 of the MBR: UDF “source”: ")) << result.output.constData();
    EXPECT_TRUE(result.output.contains(", holds UDF\n")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("of type 0x83: 32768 bytes at byte ")) << result.output.constData();
    EXPECT_TRUE(result.output.contains(", not read\n")) << result.output.constData();
    const ChildResult verified = runTessaron({"verify", m_tree.path("out/disk.img"), m_tree.path("source")});
    EXPECT_EQ(verified.exitStatus, 0) << verified.errors.constData() << verified.output.constData();
}

TEST_F(Inspect, damageOfATrailer_namesItsByteOnce)
{
    makeOrdinaryTree();
    makeImage("out/disc.vant", {"--format", "vant", "--filesystems", "iso9660"});
    QByteArray image = m_tree.contents("out/disc.vant");
    image[image.size() - 60] = char(image[image.size() - 60] ^ 1);
    m_tree.makeFile("out/disc.vant", image);
    const ChildResult result = runTessaron({"inspect", m_tree.path("out/disc.vant")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors.count("at byte"), 1) << result.errors.constData();
}

TEST_F(Inspect, trailerOfALaterVersion_isNotCalledDamaged)
{
    const ChildResult result = runTessaron({"inspect", TESSARON_SOURCE_FOLDER "/fuzz/vant-corpus/newer-version"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("not supported")) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("damaged")) << result.errors.constData();
}

TEST_F(Inspect, imagesOfOtherPrograms_areRead)
{
    makeOrdinaryTree();
    const QByteArray source = m_tree.path("source");
    outputOf("genisoimage", {"-quiet", "-V", "DISC", "-R", "-J", "-udf", "-o", image(), source});
    EXPECT_EQ(filesystemsIn(inspected(image())),
              Lines({"iso9660 DISC 4 2", "rockridge DISC 4 2", "joliet DISC 4 2", "udf DISC 4 2"}));
    outputOf("xorriso", {"-as", "mkisofs", "-quiet", "-V", "DISC", "-hfsplus", "-o", image(), source});
    EXPECT_EQ(filesystemsIn(inspected(image())), Lines({"iso9660 DISC 4 2", "rockridge DISC 4 2", "hfs+ DISC 4 2"}));
    m_tree.makeSparseFile("out/empty.udf", 10 << 20);
    outputOf("mkudffs", {"--blocksize=2048", "--label=Größe", m_tree.path("out/empty.udf")});
    EXPECT_EQ(filesystemsIn(inspected(m_tree.path("out/empty.udf"))), Lines({"udf Größe 0 0"}));
}

TEST_F(Inspect, damage_isNamedWithItsPlace)
{
    makeOrdinaryTree();
    makeImage("out/disc.iso");
    std::filesystem::resize_file(image().toStdString(), std::size_t{40} * 2048);
    const ChildResult result = runTessaron({"inspect", image()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("is damaged")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("UDF, ")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("at byte ")) << result.errors.constData();
    const QJsonObject object = inspected(image(), 1);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("failed"));
}

TEST_F(Inspect, bitThatHidesAFilesystem_isDamage)
{
    makeOrdinaryTree();
    makeImage("out/disc.iso");
    const QByteArray sound = m_tree.contents("out/disc.iso");
    EXPECT_EQ(inspected(image())[QStringLiteral("problemCount")].toInteger(), 0);
    for (const qsizetype place : {32769, 34816, 34904, 40961, 256 * 2048}) {
        SCOPED_TRACE(place);
        QByteArray flipped = sound;
        flipped[place] = char(flipped[place] ^ 1);
        m_tree.makeFile("out/disc.iso", flipped);
        const QJsonObject object = inspected(image(), 1);
        EXPECT_GT(object[QStringLiteral("problemCount")].toInteger(), 0);
        EXPECT_FALSE(object[QStringLiteral("problems")][0][QStringLiteral("message")].toString().isEmpty());
    }
}

TEST_F(Inspect, unsupportedFilesystem_isNotCalledDamaged)
{
    m_tree.makeSparseFile("out/write-once.udf", 40 << 20);
    outputOf("mkudffs", {"--media-type=cdr", "--blocksize=2048", m_tree.path("out/write-once.udf")});
    const ChildResult result = runTessaron({"inspect", m_tree.path("out/write-once.udf")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("not supported")) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("damaged")) << result.errors.constData();
}

TEST_F(Inspect, bootCatalog_isShown)
{
    m_tree.makeFile("source/boot.img", QByteArray(4096, 'B'));
    outputOf("xorriso",
             {"-as", "mkisofs", "-quiet", "-R", "-b", "boot.img", "-no-emul-boot", "-boot-load-size", "4", "-c",
              "boot.cat", "-o", image(), m_tree.path("source")});
    const ChildResult result = runTessaron({"inspect", image()});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("starts computers: x86, no emulation, 4 sectors")) << result.output.constData();
    EXPECT_EQ(inspected(image())[QStringLiteral("boot")].toArray().size(), 1);
}

TEST_F(Inspect, cueSheetWhoseFileIsMissing_isAFailure)
{
    m_tree.makeFile("gone.cue", "FILE \"gone.bin\" BINARY\n TRACK 01 MODE1/2048\n INDEX 01 00:00:00\n");
    for (const QByteArray name : {"gone.bin", "gone.cue"}) {
        const ChildResult result = runTessaron({"inspect", m_tree.path(name)});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_TRUE(result.errors.contains("cannot be read: No such file or directory")) << result.errors.constData();
        EXPECT_EQ(result.output, "");
        const QJsonObject report = jsonOf(runTessaron({"inspect", "--json", m_tree.path(name)}).output);
        EXPECT_TRUE(report[QStringLiteral("format")].isNull());
    }
}

TEST_F(Inspect, cueSheets_areReadAsPeopleWriteThem)
{
    m_tree.makeFile("audio.bin", QByteArray(qsizetype{100} * 2352, 'a'));
    m_tree.makeFile("more.bin", QByteArray(qsizetype{50} * 2352, 'b'));
    m_tree.makeFile("odd.cue",
                    "\xEF\xBB\xBF"
                    "file AUDIO.BIN binary\rtrack 1 audio\rindex 1 0:0:0\rfile more.bin binary\r"
                    "track 2 cdg\rindex 1 0:0:0\rshiny\r");
    const ChildResult result = runTessaron({"inspect", m_tree.path("odd.cue")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("track 1: AUDIO, 100 blocks")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("track 2: CDG, 48 blocks")) << result.output.constData();
    EXPECT_TRUE(result.errors.contains("Line 7 of the cue sheet: SHINY")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("fill no block")) << result.errors.constData();
}

TEST_F(Inspect, cueSheetThatDoesNotFit_isAFailure_withItsLine)
{
    m_tree.makeFile("a.bin", QByteArray(qsizetype{100} * 2352, 'a'));
    const struct {
        QByteArray lines;
        QByteArray told;
    } rows[] = {
        {" TRACK 01 AUDIO\n  INDEX 01 00:02:00\n", "Line 3 of the cue sheet: 00:02:00 lies beyond the end"},
        {" TRACK 01 MODE7/1\n  INDEX 01 00:00:00\n", "Line 2 of the cue sheet: \"MODE7/1\""},
    };
    for (const auto &row : rows) {
        m_tree.makeFile("a.cue", "FILE \"a.bin\" BINARY\n" + row.lines);
        const ChildResult result = runTessaron({"inspect", m_tree.path("a.cue")});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_TRUE(result.errors.contains(row.told)) << result.errors.constData();
        // The file itself can be looked at without it, but not in silence.
        EXPECT_TRUE(runTessaron({"inspect", m_tree.path("a.bin")}).errors.contains("is not used"));
    }
}

TEST_F(Inspect, namedPipesAndFolders_areRefusedAtOnce)
{
    for (const QByteArray name : {"pipe.cue", "pipe.bin", "pipe.iso"}) {
        m_tree.makeFifo(name);
        const ChildResult result = runTessaron({"inspect", m_tree.path(name)});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_TRUE(result.errors.contains("neither a regular file nor a block device")) << result.errors.constData();
    }
    m_tree.makeFolder("folder.cue");
    EXPECT_TRUE(runTessaron({"inspect", m_tree.path("folder.cue")}).errors.contains("it is a folder"));
    // A pipe that stands where a cue sheet could be describes nothing.
    makeOrdinaryTree();
    EXPECT_EQ(runTessaron({"image", "-q", "-o", m_tree.path("out/disc.bin"), m_tree.path("source")}).exitStatus, 0);
    m_tree.remove("out/disc.cue");
    m_tree.makeFifo("out/disc.cue");
    EXPECT_EQ(runTessaron({"inspect", m_tree.path("out/disc.bin")}).exitStatus, 0);
}

TEST_F(Inspect, format_isIsoForDiscFilesystemsOnly)
{
    makeOrdinaryTree();
    const auto formatWith = [this](const QByteArray &filesystems) {
        EXPECT_EQ(runTessaron(imageArguments({"-q", "--filesystems", filesystems})).exitStatus, 0);
        const ChildResult result = runTessaron({"inspect", "--json", image()});
        return jsonOf(result.output)[QStringLiteral("format")].toString();
    };
    EXPECT_EQ(formatWith("udf,hfs+"), QStringLiteral("iso"));
    EXPECT_EQ(formatWith("hfs+"), QStringLiteral("blocks"));
}

TEST_F(Inspect, whatIsNoImage_isAFailure)
{
    m_tree.makeFile("text.txt", "This is not an image.");
    m_tree.makeFile("empty.iso");
    for (const QByteArray name : {"text.txt", "empty.iso", "missing", "source"}) {
        SCOPED_TRACE(name.constData());
        const ChildResult result = runTessaron({"inspect", m_tree.path(name)});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_FALSE(result.errors.isEmpty());
        EXPECT_EQ(inspected(m_tree.path(name), 1)[QStringLiteral("error")][QStringLiteral("kind")].toString(),
                  QStringLiteral("source"));
    }
    m_tree.makeFile("wrong.cue", "nothing of a cue sheet");
    EXPECT_EQ(runTessaron({"inspect", m_tree.path("wrong.cue")}).exitStatus, 1);
    EXPECT_EQ(runTessaron({"inspect"}).exitStatus, 2);
    EXPECT_EQ(runTessaron({"inspect", "a", "b"}).exitStatus, 2);
}

/// Places of the files in VIDEO_TS as one view has them.
std::map<std::string, std::uint64_t> videoPlaces(const QByteArray &path, VolumeKind kind)
{
    std::map<std::string, std::uint64_t> places;
    const auto source = DiscImageSource::sourceWithFile(QString::fromUtf8(path)).source;
    for (const FoundVolume &volume : volumesInImage(source)) {
        if (volume.kind != kind || !volume.reader)
            continue;
        VolumeWalker walker;
        walker.object = [&](const QByteArray &folder, const VolumeObject &object) {
            if (folder == "VIDEO_TS") {
                EXPECT_EQ(object.extents.size(), 1u) << object.name.constData();
                places[object.name.toStdString()] = object.extents.at(0).offset;
            }
            return true;
        };
        EXPECT_TRUE(walkVolume(*volume.reader, walker));
    }
    return places;
}

TEST_F(Inspect, dvdVideo_liesInThePlayersOrder_inEveryFilesystem)
{
    const std::vector<std::string> order = {"VIDEO_TS.IFO", "VIDEO_TS.VOB", "VIDEO_TS.BUP", "VTS_01_0.IFO",
                                            "VTS_01_0.VOB", "VTS_01_1.VOB", "VTS_01_2.VOB", "VTS_01_0.BUP",
                                            "VTS_02_0.IFO", "VTS_02_1.VOB", "VTS_02_0.BUP"};
    for (const std::string &name : order)
        m_tree.makeFile("source/VIDEO_TS/" + QByteArray::fromStdString(name), QByteArray(12288, name[9]));
    m_tree.makeFolder("source/AUDIO_TS");
    m_tree.makeFile("source/A first file.txt", "which comes behind");
    const ChildResult made = runTessaron(imageArguments({"--name", "My holiday-film"}));
    EXPECT_EQ(made.exitStatus, 3) << "the name that was given is not on the disc";
    EXPECT_TRUE(made.errors.contains("the volume is named “MY_HOLIDAY_FILM”")) << made.errors.constData();
    EXPECT_EQ(filesystemsIn(inspected(image())).at(3), "udf MY_HOLIDAY_FILM 12 2");
    EXPECT_EQ(filesystemsIn(inspected(image())).at(0), "iso9660 MY_HOLIDAY_FILM 12 2");

    const auto udf = videoPlaces(image(), VolumeKind::UDF);
    EXPECT_EQ(udf, videoPlaces(image(), VolumeKind::ISO9660));
    EXPECT_EQ(udf, videoPlaces(image(), VolumeKind::HFSPlus));
    ASSERT_EQ(udf.size(), order.size());
    for (std::size_t index = 1; index < order.size(); ++index)
        EXPECT_LT(udf.at(order[index - 1]), udf.at(order[index])) << order[index];
    // Information and its backup lie in different units of error correction.
    EXPECT_NE(udf.at("VTS_01_0.IFO") / 32768, udf.at("VTS_01_0.BUP") / 32768);
    EXPECT_EQ(runTessaron({"verify", "-q", image(), m_tree.path("source")}).exitStatus, 0);
    EXPECT_EQ(runTessaron(imageArguments({"-q"})).exitStatus, 0);
    EXPECT_EQ(filesystemsIn(inspected(image())).at(3), "udf SOURCE 12 2");
}

} // namespace

} // namespace Tessaron::Testing
