#include "tools/tessaron/ArgumentRules.h"

#include "tools/tessaron/Text.h"
#include <TessaronClasses/KRAudioConverter.h>

namespace Tessaron::Tool
{

namespace
{

QString checkScan(const Arguments &arguments)
{
    return arguments.paths.isEmpty() ? QStringLiteral("no PATH was given") : QString();
}

QString checkImage(Arguments &arguments, bool hasFormat)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no PATH was given: name the folders and files that go into the image");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name the image file with -o OUT");
    const QByteArray name = lastComponent(arguments.output);
    if (!hasFormat && name.toLower().endsWith(".cue"))
        return QStringLiteral("%1 is a name for a cue sheet; name the image, ending in .bin, and the cue sheet is made "
                              "beside it (or say --format iso)")
            .arg(quoted(name));
    if (!hasFormat)
        arguments.format = discFormatForFileName(name);
    if (arguments.format != DiscFormat::BIN)
        return {};
    if (name.contains('"') || name.contains('\n') || name.contains('\r'))
        return QStringLiteral("the name %1 cannot stand in a cue sheet; use one without quotes and line breaks")
            .arg(quoted(name));
    if (name.toLower().endsWith(".cue"))
        return QStringLiteral("%1 is the name of the cue sheet; use the name of the image, ending in .bin")
            .arg(quoted(name));
    return {};
}

QString checkAudio(Arguments &arguments, bool hasFormat)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no FILE was given: name the audio files that become tracks");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name the image file with -o OUT.bin or -o OUT.vant");
    if (!arguments.volumeName.isEmpty() && arguments.dataFolder.isEmpty())
        return QStringLiteral("--name is for the volume of --data, which was not given");
    if (arguments.output == "-" && !hasFormat) {
        arguments.format = DiscFormat::VANT;
        return {};
    }
    if (arguments.output.toLower().endsWith(".cue"))
        return QStringLiteral("%1 is a name for a cue sheet; name the image, ending in .bin, and the cue sheet is made "
                              "beside it")
            .arg(quoted(arguments.output));
    QString error = checkImage(arguments, hasFormat);
    const bool isOfSound = arguments.format == DiscFormat::BIN || arguments.format == DiscFormat::VANT;
    if (error.isEmpty() && !isOfSound && hasFormat)
        return QStringLiteral("an image of sound has the format bin or vant");
    if (error.isEmpty() && !isOfSound)
        return QStringLiteral("the output %1 ends neither in .bin nor in .vant, which say what is made")
            .arg(quoted(arguments.output));
    return error;
}

QString checkInspect(const Arguments &arguments)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no IMAGE was given");
    return arguments.paths.size() > 1 ? QStringLiteral("more than one IMAGE was given; look at one at a time")
                                      : QString();
}

QString checkExtractFiles(Arguments &arguments, const NamedOptions &named)
{
    arguments.action = Arguments::Action::ExtractFiles;
    if (arguments.paths.isEmpty())
        return QStringLiteral("no IMAGE was given");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name the folder for the files with -o OUT");
    if (named.hasFormat || arguments.takesHiddenSound)
        return QStringLiteral("--format and --hidden are for tracks; they do not go with --files");
    if (named.hasTrack && arguments.track.value_or(0) == 0)
        return QStringLiteral("with --files, --track names the one track whose filesystem is meant");
    return {};
}

QString checkExtract(Arguments &arguments, const NamedOptions &named)
{
    if (named.takesFiles)
        return checkExtractFiles(arguments, named);
    if (arguments.extractedFilesystem)
        return QStringLiteral("--filesystem is for --files");
    if (QString error = checkInspect(arguments); !error.isEmpty())
        return error;
    if (!named.hasTrack)
        return QStringLiteral("no track was given: name one, or all, with --track, or say --files");
    if (arguments.takesHiddenSound && arguments.track)
        return QStringLiteral("--hidden goes with --track all; one alone is taken with --track 0");
    if (arguments.output.isEmpty())
        return QStringLiteral("no output was given: name it with -o OUT");
    if (!named.hasFormat && arguments.track && arguments.output.toLower().endsWith(".flac"))
        arguments.sound = ExtractedSound::FLAC;
    return {};
}

QString checkDVD(Arguments &arguments, const NamedOptions &named)
{
    if (named.playsDVD)
        arguments.action = Arguments::Action::PlayDVD;
    else if (arguments.title != 0 || arguments.chapter != 0)
        return QStringLiteral("--title and --chapter are for --play");
    if (named.playsDVD && arguments.json)
        return QStringLiteral("--json tells what is on a disc; it does not go with --play");
    if (arguments.paths.isEmpty())
        return QStringLiteral("no PATH was given: name a folder VIDEO_TS, an image or a device");
    return arguments.paths.size() > 1 ? QStringLiteral("more than one PATH was given; look at one at a time")
                                      : QString();
}

/// Options that are for one kind of disc, and were named for the other.
QString checkKindOfDisc(const Arguments &arguments)
{
    const bool isLayout = !arguments.volumeName.isEmpty() || arguments.hasFilesystems || arguments.relocatesDeepFolders
        || arguments.strict;
    const bool isSound = arguments.gap != 0 || !arguments.isGapless || arguments.hasCDText
        || arguments.normalization != AudioNormalization::None || !arguments.isrcFile.isEmpty();
    if (arguments.isSound && isLayout)
        return QStringLiteral(
            "--name, --filesystems, --relocate and --strict are for folders and files; they do not go "
            "with --audio");
    if (!arguments.isSound && isSound)
        return QStringLiteral(
            "--gap, --no-gapless, --normalize, --normalize-each, --cd-text and --isrc are for --audio, "
            "which was not given");
    return {};
}

QString checkBurn(const Arguments &arguments)
{
    if (arguments.paths.isEmpty())
        return arguments.isSound ? QStringLiteral("no PATH was given: name the audio files that become tracks")
                                 : QStringLiteral("no PATH was given: name folders and files, or an image");
    if (QString error = checkKindOfDisc(arguments); !error.isEmpty())
        return error;
    if (arguments.verifies && arguments.isSimulated)
        return QStringLiteral("--verify compares what was written, and --simulate writes nothing");
    return {};
}

QString checkBlank(const Arguments &arguments)
{
    if (!arguments.paths.isEmpty())
        return QStringLiteral("%1 is too much: name the drive with --drive DEV").arg(quoted(arguments.paths.first()));
    return arguments.blanksAll && arguments.formats ? QStringLiteral("--full and --format exclude each other")
                                                    : QString();
}

QString checkInfo(const Arguments &arguments)
{
    return arguments.paths.isEmpty() ? QStringLiteral("no FILE was given: name audio or movie files") : QString();
}

QString checkVerify(const Arguments &arguments)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no IMAGE was given");
    return arguments.paths.size() == 1 ? QStringLiteral("no PATH was given to compare the image with") : QString();
}

/// Of MP3, by the bit rate; variable, 160 kilobits a second, where none was named.
std::int32_t mp3Format(const NamedOptions &named)
{
    if (named.constantBitRate != 0)
        return named.constantBitRate == 128 ? KRAudioConverter::mp3FormatConstant128
                                            : KRAudioConverter::mp3FormatConstant160;
    return named.variableBitRate == 128 ? KRAudioConverter::mp3FormatVariable128
                                        : KRAudioConverter::mp3FormatVariable160;
}

QString checkSoundFormat(Arguments &arguments, const NamedOptions &named)
{
    const bool hasBitRate = named.variableBitRate != 0 || named.constantBitRate != 0;
    if (named.soundFormat.isEmpty())
        return QStringLiteral("no format was given: name it with --to wav, --to aiff or --to mp3");
    if (named.soundFormat == "mp3") {
        arguments.soundFormat = mp3Format(named);
        return named.variableBitRate != 0 && named.constantBitRate != 0
            ? QStringLiteral("--vbr and --cbr exclude each other")
            : QString();
    }
    if (named.soundFormat == "wav")
        arguments.soundFormat = KRAudioConverter::waveFormat;
    else if (named.soundFormat == "aiff")
        arguments.soundFormat = KRAudioConverter::aiffFormat;
    else
        return QStringLiteral("%1 is not a format to convert to; use wav, aiff or mp3").arg(quoted(named.soundFormat));
    if (hasBitRate || arguments.carriesTags)
        return QStringLiteral("%1 is for --to mp3 only")
            .arg(hasBitRate ? QStringLiteral("a bit rate") : QStringLiteral("--tags"));
    return {};
}

QString checkConvert(Arguments &arguments, const NamedOptions &named)
{
    if (arguments.paths.isEmpty())
        return QStringLiteral("no FILE was given: name the files and folders to convert");
    if (QString error = checkSoundFormat(arguments, named); !error.isEmpty())
        return error;
    return arguments.folder.isEmpty() ? QStringLiteral("no folder was given for the results: name it with -d DIR")
                                      : QString();
}

} // namespace

QString checkCommand(Arguments &arguments, const NamedOptions &named)
{
    if (arguments.command == "scan") {
        arguments.action = Arguments::Action::Scan;
        return checkScan(arguments);
    }
    if (arguments.command == "audio") {
        arguments.action = Arguments::Action::MakeAudioImage;
        return checkAudio(arguments, named.hasFormat);
    }
    if (arguments.command == "inspect") {
        arguments.action = Arguments::Action::Inspect;
        return checkInspect(arguments);
    }
    if (arguments.command == "verify") {
        arguments.action = Arguments::Action::Verify;
        return checkVerify(arguments);
    }
    if (arguments.command == "tracks") {
        arguments.action = Arguments::Action::Tracks;
        return checkInspect(arguments);
    }
    if (arguments.command == "dvd") {
        arguments.action = Arguments::Action::DescribeDVD;
        return checkDVD(arguments, named);
    }
    if (arguments.command == "burn") {
        arguments.action = Arguments::Action::BurnDisc;
        return checkBurn(arguments);
    }
    if (arguments.command == "blank") {
        arguments.action = Arguments::Action::BlankDisc;
        return checkBlank(arguments);
    }
    if (arguments.command == "drives") {
        arguments.action = Arguments::Action::ListDrives;
        return {};
    }
    if (arguments.command == "info") {
        arguments.action = Arguments::Action::Info;
        return checkInfo(arguments);
    }
    if (arguments.command == "extract") {
        arguments.action = Arguments::Action::Extract;
        return checkExtract(arguments, named);
    }
    if (arguments.command == "convert") {
        arguments.action = Arguments::Action::Convert;
        return checkConvert(arguments, named);
    }
    arguments.action = arguments.splitCapacity > 0 ? Arguments::Action::SplitImage : Arguments::Action::MakeImage;
    if (arguments.splitCapacity > 0 && arguments.output == "-")
        return QStringLiteral("--split makes several images, which standard output cannot take");
    return checkImage(arguments, named.hasFormat);
}

} // namespace Tessaron::Tool
