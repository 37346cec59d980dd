#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/OptionTable.h"

namespace Tessaron::Tool
{

namespace
{

constexpr qsizetype optionColumnWidth = 26;

constexpr char programIntroduction[] = R"(Usage: tessaron COMMAND [OPTION]... PATH...

Makes disc images of folders, files and sound, and reads them back.

Commands:
  image    make a disc image of folders and files
  audio    make an image of an audio CD
  inspect  tell what a disc image holds
  verify   compare every filesystem of a disc image with its sources
  scan     count what is in folders and files
  tracks   list the tracks of a disc image
  extract  take tracks, or files, out of a disc image
  convert  make WAVE, AIFF or MP3 files of audio and movie files
  info     tell what is in audio and movie files
  dvd      tell what a video DVD holds, or play it
  drives   list the optical drives and what is in them
  burn     write folders, files or an image to a disc
  blank    make a rewritable disc empty

'tessaron help COMMAND' tells more about a command.

Options:
)";

constexpr char programEnd[] = R"(
Examples:
  tessaron image -o photos.iso Photos
  tessaron verify photos.iso Photos

Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but something could not be
stored or read, 130 interrupted.
)";

constexpr char imageIntroduction[] = R"(Usage: tessaron image [OPTION]... -o OUT PATH...

Makes a disc image. The content of one folder becomes the content of the disc;
files, or several folders, are put together under their own names.

Options:
)";

constexpr char imageEnd[] = R"(
Examples:
  tessaron image -o photos.iso Photos
      The content of the folder Photos, on a volume named Photos.
  tessaron image -o backup.iso --name "Backup 2024" Letters Photos notes.txt
      Two folders and a file, side by side.
  tessaron image -o disc.bin Music
      disc.bin and its cue sheet disc.cue.
  tessaron image -o film.iso --filesystems iso9660,udf Film
      For a DVD player, when the folder Film holds VIDEO_TS.
  tessaron image -o - Photos | ssh host 'cat >photos.iso'
      To another program.
  tessaron image --strict --json --progress json -o out.iso tree
      For programs: fails when anything cannot be stored as it is.

Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but something could not be
stored (with --strict: 1, and nothing is left), 130 interrupted.
)";

constexpr char audioIntroduction[] = R"(Usage: tessaron audio [OPTION]... -o OUT FILE...

Makes an image of an audio CD: a track of each FILE, in the order given, decoded
from any audio or movie format. A FILE that ends in .m3u or .m3u8 is a list of
files, one in .cue a cue sheet with the tracks that it tells of. OUT ends in
.bin, and gets a cue sheet beside it, or in .vant.

Options:
)";

constexpr char audioEnd[] = R"(
Examples:
  tessaron audio -o album.bin *.flac
      album.bin and its cue sheet album.cue.
  tessaron audio -o mix.bin --gap 2 --cd-text --capacity 80 mix.m3u
      Two seconds between the tracks, texts from the tags, and nothing made
      when it would not go onto a disc of 80 minutes.
  tessaron audio -o album.bin --data Extras --normalize album.cue
      A mixed disc: the folder Extras, then the tracks of the cue sheet.
  tessaron audio -o - *.flac | ssh host 'cat >album.vant'
      To another program.

Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but a FILE was damaged or
something could not be stored, 130 interrupted.
)";

constexpr char scanIntroduction[] = R"(Usage: tessaron scan [OPTION]... PATH...

Counts the files and folders below each PATH and the room that they take on
disk, and names what cannot be read.

Options:
)";

constexpr char scanEnd[] = R"(
Examples:
  tessaron scan Photos
  tessaron scan --json Letters Photos

Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but something could not be
read, 130 interrupted.
)";

constexpr char inspectIntroduction[] = R"(Usage: tessaron inspect [OPTION]... IMAGE

Tells which filesystems a disc image has, what they hold, its partitions, and
the tracks that a VANT image or a cue sheet describes. Knows ISO 9660, Rock
Ridge, Joliet, UDF and HFS+, by any program; cue sheets, .ccd and .toc files.

Options:
)";

constexpr char inspectEnd[] = R"(
Examples:
  tessaron inspect photos.iso
  tessaron inspect --json disc.cue

Exit status: 0 done, 1 failed, damaged or nothing known, 2 wrong usage, 130
interrupted.
)";

constexpr char verifyIntroduction[] = R"(Usage: tessaron verify [OPTION]... IMAGE PATH...

Reads every filesystem of a disc image back and compares it with the PATHs that
it was made of: names by the rules of each filesystem, sizes, contents, times
and link targets. Says which filesystem differs, and where.

Options:
)";

constexpr char verifyEnd[] = R"(
Examples:
  tessaron verify photos.iso Photos
  tessaron verify --json backup.iso Letters Photos notes.txt

Exit status: 0 the same, 1 different or failed, 2 wrong usage, 130 interrupted.
)";

constexpr char tracksIntroduction[] = R"(Usage: tessaron tracks [OPTION]... IMAGE

Lists the tracks of a disc: number, kind and bytes of a sector, start and
length, pregap, index points, ISRC and CD-TEXT. IMAGE is a cue sheet, a .ccd or
.toc file, or an image. Times are minutes:seconds:frames from block 0.

Options:
)";

constexpr char tracksEnd[] = R"(
Examples:
  tessaron tracks album.cue
  tessaron tracks --json disc.toc

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.
)";

constexpr char extractIntroduction[] = R"(Usage: tessaron extract [OPTION]... --track N|all -o OUT IMAGE
       tessaron extract [OPTION]... --files -o OUT IMAGE [PATH]...

Takes tracks out of a disc image: sound as a WAVE or FLAC file with tags of the
CD-TEXT, data as the user data of its sectors. IMAGE is a cue sheet, a .ccd or
.toc file, or an image; sound files that it names are decoded where they must
be. What lies in front of a track's index 1 is left out.

Or takes files out of one of its filesystems: those of each PATH in it, or all.
What has a name that is taken in OUT gets another one.

Options:
)";

constexpr char extractEnd[] = R"(
Examples:
  tessaron extract --track 2 -o song.wav album.cue
  tessaron extract --track all --format flac -o songs album.cue
  tessaron extract --files -o photos disc.iso Summer/beach.jpg Winter

Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but sectors or sounds are
damaged or hold more than was taken, or files could not be read,
130 interrupted.
)";

constexpr char convertIntroduction[] = R"(Usage: tessaron convert --to FORMAT -d DIR [OPTION]... FILE...

Makes WAVE, AIFF or MP3 files of the sound of audio and movie files: that of a
CD, 44,100 samples a second in two channels. A FILE may be a folder; what is in
it goes into folders like its own. No file is overwritten.

Options:
)";

constexpr char convertEnd[] = R"(
Examples:
  tessaron convert --to wav -d cd Music
      Each file below the folder Music, into the folder cd/Music.
  tessaron convert --to mp3 --cbr 160 --tags -d phone *.flac

Exit status: 0 done, 1 a file could not be converted, 2 wrong usage, 3 done but
something in a file was broken or could not be read, 130 interrupted.
)";

constexpr char infoIntroduction[] = R"(Usage: tessaron info [OPTION]... FILE...

Tells what is in audio and movie files: their tracks with codes, forms, lengths
and sizes, their texts, and their covers. A FILE may be a folder; files in it
whose names say neither sound nor movie are left out.

Options:
)";

constexpr char infoEnd[] = R"(
Examples:
  tessaron info *.m4a
  tessaron info --json --artwork covers film.mov
  tessaron info Music

Exit status: 0 done, 1 a file could not be read or a cover not be written, 2
wrong usage, 3 done but a file of a folder is not a movie or a folder could not
be listed, 130 interrupted.
)";

constexpr char dvdIntroduction[] = R"(Usage: tessaron dvd [OPTION]... PATH

Tells what a video DVD holds: titles, chapters with their times, angles, sound
and subtitles with their languages, menus, and the regions that it is for. PATH
is a folder VIDEO_TS or the one that holds it, an image, or a device. With
--play it is shown in a window instead.

Options:
)";

constexpr char dvdEnd[] = R"(
Examples:
  tessaron dvd /media/FILM
  tessaron dvd --json film.iso
  tessaron dvd --play --title 2 --chapter 5 /dev/sr0

Exit status: 0 done, 1 failed or no video DVD, 2 wrong usage, 3 done but
something could not be read, 130 interrupted.
)";

constexpr char drivesIntroduction[] = R"(Usage: tessaron drives [OPTION]... [DEV]...

Lists the optical drives. A drive is only opened when it is named, or with
--media: then its disc, the room on it and the speeds are told.

Options:
)";

constexpr char drivesEnd[] = R"(
Examples:
  tessaron drives
  tessaron drives --json /dev/sr0

Exit status: 0 done, 1 a drive could not be opened, 2 wrong usage, 130
interrupted.
)";

constexpr char burnIntroduction[] = R"(Usage: tessaron burn [OPTION]... PATH...

Writes a disc: the content of one folder, files or several folders side by side;
or an image (ISO, BIN, VANT), or what a cue sheet, a .ccd or .toc file tells of;
with --audio, a track of each PATH, decoded from any audio or movie format.
What does not fit is refused before anything is written. When the writing ends
early, the last line says what the disc is worth and what to do.

Options:
)";

constexpr char burnEnd[] = R"(
Examples:
  tessaron burn --verify --eject Photos
  tessaron burn --drive /dev/sr1 --speed 8 album.cue
  tessaron burn --audio --cd-text --verify *.flac
  tessaron burn --multi Letters
  tessaron burn --drive stdio:test.iso Photos
      To a regular file, as if it were a drive.

Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but something could not be
stored, 130 interrupted.
)";

constexpr char blankIntroduction[] = R"(Usage: tessaron blank [OPTION]...

Makes a CD-RW or DVD-RW empty, which destroys what is on it, or formats a disc
for overwriting. A drive cannot be stopped at that.

Options:
)";

constexpr char blankEnd[] = R"(
Examples:
  tessaron blank
  tessaron blank --drive /dev/sr1 --full

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted before it began.
)";

QByteArray optionLines(const OptionDescription &option)
{
    QByteArray left = "  ";
    left += option.shortName != 0 ? QByteArray("-") + option.shortName + ", " : QByteArray("    ");
    left += "--";
    left += option.longName;
    if (option.valueName != nullptr)
        left += QByteArray(" ") + option.valueName;
    QByteArray result;
    for (const QByteArray &line : QByteArray(option.help).split('\n')) {
        result += left.leftJustified(optionColumnWidth) + line + '\n';
        left.clear();
    }
    return result;
}

} // namespace

QByteArray helpText(const QByteArray &command)
{
    QByteArray result = programIntroduction;
    QByteArray end = programEnd;
    if (command == "image") {
        result = imageIntroduction;
        end = imageEnd;
    } else if (command == "audio") {
        result = audioIntroduction;
        end = audioEnd;
    } else if (command == "scan") {
        result = scanIntroduction;
        end = scanEnd;
    } else if (command == "inspect") {
        result = inspectIntroduction;
        end = inspectEnd;
    } else if (command == "verify") {
        result = verifyIntroduction;
        end = verifyEnd;
    } else if (command == "tracks") {
        result = tracksIntroduction;
        end = tracksEnd;
    } else if (command == "extract") {
        result = extractIntroduction;
        end = extractEnd;
    } else if (command == "convert") {
        result = convertIntroduction;
        end = convertEnd;
    } else if (command == "info") {
        result = infoIntroduction;
        end = infoEnd;
    } else if (command == "dvd") {
        result = dvdIntroduction;
        end = dvdEnd;
    } else if (command == "drives") {
        result = drivesIntroduction;
        end = drivesEnd;
    } else if (command == "burn") {
        result = burnIntroduction;
        end = burnEnd;
    } else if (command == "blank") {
        result = blankIntroduction;
        end = blankEnd;
    }
    for (const OptionDescription &option : allOptions()) {
        if (knows(command, option))
            result += optionLines(option);
    }
    return result + end;
}

} // namespace Tessaron::Tool
