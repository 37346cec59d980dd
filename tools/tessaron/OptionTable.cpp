#include "tools/tessaron/OptionTable.h"

#include <QList>

#include <algorithm>
#include <array>

namespace Tessaron::Tool
{

namespace
{

constexpr std::array options = {
    OptionDescription{
        Option::Drive, 0, "drive", "DEV", "burn blank",
        "The drive, such as /dev/sr0; it can be left out where\nthere is only one. stdio:FILE writes to a "
        "regular file\nas if it were a drive."},
    OptionDescription{Option::Speed, 0, "speed", "N", "burn",
                      "N times single speed; drives take the nearest one.\nAs fast as it goes without it."},
    OptionDescription{Option::Simulate, 0, "simulate", nullptr, "burn",
                      "Do everything with the laser off: nothing is written.\nFor CD-R, CD-RW, DVD-R and DVD-RW."},
    OptionDescription{Option::Multi, 0, "multi", nullptr, "burn",
                      "Leave the disc open for further sessions, or add to an\nopen one, a rewritable one, or a file. "
                      "What it has is\nkept; a file of the same path is replaced."},
    OptionDescription{Option::Overburn, 0, "overburn", nullptr, "burn",
                      "Ask for more than the disc says that it holds. That is\nrefused all the same, with the reason."},
    OptionDescription{Option::Verify, 0, "verify", nullptr, "burn",
                      "Read everything back and compare it, sound as well."},
    OptionDescription{
        Option::Audio, 0, "audio", nullptr, "burn",
        "Each PATH is an audio or movie file and becomes a\ntrack of a CD of sound; .m3u and .cue are lists "
        "of\nthem."},
    OptionDescription{Option::Full, 0, "full", nullptr, "blank",
                      "Blank all of the disc, not only what says where things\nare. Takes as long as writing it."},
    OptionDescription{Option::FormatDisc, 0, "format", nullptr, "blank",
                      "Format the disc for overwriting: DVD-RW, and DVD+RW,\nDVD-RAM and BD-RE anew."},
    OptionDescription{Option::Eject, 0, "eject", nullptr, "burn blank", "Put the tray out at the end."},
    OptionDescription{Option::Media, 0, "media", nullptr, "drives", "Open every drive and tell about the disc in it."},
    OptionDescription{
        Option::Output, 'o', "output", "OUT", "image audio",
        "The image file to make. It appears when it is whole;\nan older file is replaced then. - is standard output."},
    OptionDescription{Option::Track, 0, "track", "N", "extract",
                      "The number of the track, or all. 0 is what lies in\nfront of index 1 of the first track."},
    OptionDescription{
        Option::Files, 0, "files", nullptr, "extract",
        "Take files out of a filesystem: those that are named\nbehind IMAGE, folders with all in them, or "
        "everything."},
    OptionDescription{Option::Filesystem, 0, "filesystem", "KIND", "extract",
                      "With --files: rockridge, udf, hfs+, joliet or iso9660;\nthe first of these that is there "
                      "without it."},
    OptionDescription{
        Option::Output, 'o', "output", "OUT", "extract",
        "The file for the track; for all tracks the folder for\nthem. They appear when they are whole; older ones are\n"
        "replaced then. With --files the folder for the files,\nin which nothing is replaced."},
    OptionDescription{
        Option::Format, 0, "format", "FORMAT", "extract",
        "wav or flac, for sound. The ending of OUT decides for\none track when it is not given; else it is "
        "wav."},
    OptionDescription{Option::Hidden, 0, "hidden", nullptr, "extract",
                      "With all tracks take 0 as well, if there is one."},
    OptionDescription{Option::NoSync, 0, "no-sync", nullptr, "extract", "Do not wait until the files are on the disk."},
    OptionDescription{Option::Split, 0, "split", "CAPACITY", "image",
                      "Make images for as many discs as are needed: OUT-1.iso\nand so on. cd, dvd, dvd-dl, bd, bd-dl, "
                      "or a\nnumber of bytes such as 700M. No file is cut."},
    OptionDescription{Option::Format, 0, "format", "FORMAT", "image",
                      "iso, bin with a cue sheet beside it, or vant.\nThe ending of OUT decides when it is not given."},
    OptionDescription{
        Option::Format, 0, "format", "FORMAT", "audio",
        "bin with a cue sheet beside it, or vant. The ending of\nOUT decides when it is not given; - is vant."},
    OptionDescription{Option::Data, 0, "data", "FOLDER", "audio",
                      "Make a mixed disc: the content of FOLDER becomes\ntrack 1, in front of the audio tracks."},
    OptionDescription{Option::Name, 'n', "name", "VOLUME", "audio",
                      "Name of the volume of --data; else that of FOLDER."},
    OptionDescription{Option::Name, 'n', "name", "VOLUME", "burn",
                      "Name of the volume; else the name of the only folder\ngiven. Not for an image."},
    OptionDescription{Option::Name, 'n', "name", "VOLUME", "image",
                      "Name of the volume; else the name of the only folder\ngiven, else that of OUT."},
    OptionDescription{
        Option::Filesystems, 0, "filesystems", "LIST", "image verify burn",
        "Comma-separated: iso9660 (with Rock Ridge), joliet,\nudf, hfs+. Without it an image or disc gets "
        "all\nfour, and verify takes those that are there."},
    OptionDescription{
        Option::Relocate, 0, "relocate", nullptr, "image burn",
        "Keep ISO 9660 within eight levels of folders: deeper\nones go into the folder rr_moved, and Rock "
        "Ridge shows\nthem in their places."},
    OptionDescription{Option::Strict, 0, "strict", nullptr, "image burn",
                      "Fail, and leave nothing, when something cannot be\nstored as it is."},
    OptionDescription{Option::Gap, 0, "gap", "SECONDS", "audio burn",
                      "Silence in front of each FILE but the first, to a 75th\nof a second. None without it."},
    OptionDescription{Option::NoGapless, 0, "no-gapless", nullptr, "audio burn",
                      "Begin each track with its first sample, and fill up\nthe last 75th of a second of the one "
                      "before it.\nWithout it tracks follow each other sample by sample."},
    OptionDescription{Option::Capacity, 0, "capacity", "MINUTES", "audio",
                      "74, 80, 90 or 99: fail when the disc would be longer."},
    OptionDescription{Option::Normalize, 0, "normalize", nullptr, "audio burn",
                      "Bring the disc to a loudness of -18 LUFS (EBU R128)\nby one gain, with true peaks of -1 dBTP at "
                      "most."},
    OptionDescription{Option::NormalizeEach, 0, "normalize-each", nullptr, "audio burn",
                      "The same by a gain of its own for each file."},
    OptionDescription{Option::CdText, 0, "cd-text", nullptr, "audio burn",
                      "Titles, performers and other texts, from cue sheets\nand the tags of the files."},
    OptionDescription{Option::Isrc, 0, "isrc", "FILE", "audio burn",
                      "A text with the ISRC of each track, one in a line; an\nempty line for a track without."},
    OptionDescription{Option::To, 0, "to", "FORMAT", "convert", "wav, aiff or mp3."},
    OptionDescription{Option::VariableBitRate, 0, "vbr", "KBITS", "convert",
                      "For mp3: 128 or 160 kilobits a second on average.\nWithout this and the next option, 160."},
    OptionDescription{Option::ConstantBitRate, 0, "cbr", "KBITS", "convert",
                      "For mp3: 128 or 160 kilobits in each second."},
    OptionDescription{Option::Directory, 'd', "directory", "DIR", "convert",
                      "The folder for the results; it is made where it is\nmissing."},
    OptionDescription{Option::Flat, 0, "flat", nullptr, "convert",
                      "Put all results into DIR itself, not into folders\nlike those of the sources."},
    OptionDescription{Option::Tags, 0, "tags", nullptr, "convert",
                      "For mp3: carry over title, artist and all the other\ntexts of the source, and its cover."},
    OptionDescription{Option::Jobs, 'j', "jobs", "N", "convert",
                      "Convert N files side by side; without it, one on\neach processor."},
    OptionDescription{Option::NoSync, 0, "no-sync", nullptr, "image audio",
                      "Do not wait until the image is on the disk."},
    OptionDescription{Option::Artwork, 0, "artwork", "DIR", "info",
                      "Write the cover of each file into this folder, under\nthe name of the file."},
    OptionDescription{Option::Play, 0, "play", nullptr, "dvd",
                      "Play the disc in a window, from where it was left;\nthe disc's own begin the first time."},
    OptionDescription{Option::Title, 0, "title", "N", "dvd", "With --play: begin with this title."},
    OptionDescription{Option::Chapter, 0, "chapter", "N", "dvd",
                      "With --play: begin with this chapter of the title; of\ntitle 1 without --title."},
    OptionDescription{Option::Progress, 0, "progress", "KIND", "image audio scan verify extract convert burn blank",
                      "auto: a bar on a terminal; bar, json (one object in\na line) or none. On standard error."},
    OptionDescription{Option::Json, 0, "json", nullptr,
                      "image audio scan inspect verify tracks extract convert info dvd burn blank drives",
                      "Print one JSON object on standard output at the end,\nalso after a failure."},
    OptionDescription{Option::Quiet, 'q', "quiet", nullptr, "image audio scan verify extract convert burn blank",
                      "Errors only."},
    OptionDescription{Option::Verbose, 'v', "verbose", nullptr, "image audio verify burn",
                      "List everything that is not as it should be."},
    OptionDescription{Option::Verbose, 'v', "verbose", nullptr, "scan", "List every file and folder, too."},
    OptionDescription{Option::Verbose, 'v', "verbose", nullptr, "convert", "Name every file that was made."},
    OptionDescription{Option::Help, 'h', "help", nullptr,
                      "- image audio scan inspect verify tracks extract convert info dvd burn blank drives",
                      "Show this help."},
    OptionDescription{Option::Version, 0, "version", nullptr,
                      "- image audio scan inspect verify tracks extract convert info dvd burn blank drives",
                      "Show the version."},
};

const OptionDescription *firstWhere(const QByteArray &command, auto matches)
{
    const auto found = std::find_if(options.begin(), options.end(), [&](const OptionDescription &option) {
        return knows(command, option) && matches(option);
    });
    return found == options.end() ? nullptr : &*found;
}

} // namespace

std::span<const OptionDescription> allOptions()
{
    return options;
}

bool knows(const QByteArray &command, const OptionDescription &option)
{
    const QByteArray wanted = command.isEmpty() ? QByteArrayLiteral("-") : command;
    return QByteArray(option.commands).split(' ').contains(wanted);
}

const OptionDescription *findOption(const QByteArray &command, const QByteArray &longName)
{
    return firstWhere(command, [&](const OptionDescription &option) { return longName == option.longName; });
}

const OptionDescription *findOption(const QByteArray &command, char shortName)
{
    return firstWhere(command, [&](const OptionDescription &option) {
        return option.shortName != 0 && option.shortName == shortName;
    });
}

} // namespace Tessaron::Tool
