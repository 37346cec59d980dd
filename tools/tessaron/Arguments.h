#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/ExtractJob.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace Tessaron::Tool
{

enum class ProgressMode : std::uint8_t {
    Auto, ///< a bar when standard error is a terminal, else nothing
    Bar,
    Json,
    None,
};

enum class Verbosity : std::uint8_t {
    Quiet, ///< errors only
    Normal,
    Verbose, ///< every item that is not stored as it stands
};

/// The command line, understood. Paths are the bytes that the shell passed.
struct Arguments {
    enum class Action : std::uint8_t {
        ShowHelp,
        ShowVersion,
        Scan,
        MakeImage,
        SplitImage,
        MakeAudioImage,
        Inspect,
        Verify,
        Tracks,
        Extract,
        ExtractFiles,
        Convert,
        Info,
        DescribeDVD,
        PlayDVD,
        BurnDisc,
        BlankDisc,
        ListDrives,
        ReportUsageError,
    };

    Action action = Action::ReportUsageError;
    std::uint16_t title = 0; ///< for PlayDVD; 0 where none was named
    std::uint16_t chapter = 0; ///< likewise
    /// The command that was named, as far as it was understood: "", "scan", "image", "audio", "inspect", "verify",
    /// "tracks", "extract", "convert", "info", "dvd", "burn", "blank" or "drives". Help is about it.
    QByteArray command;
    QString usageError; ///< for ReportUsageError, without the full stop

    QList<QByteArray> paths;
    bool json = false;
    ProgressMode progress = ProgressMode::Auto;
    Verbosity verbosity = Verbosity::Normal;

    // For MakeImage, Verify and BurnDisc.
    DiscFilesystems filesystems = allDiscFilesystems;
    bool hasFilesystems = false; ///< they were named

    // For Extract only.
    std::optional<std::uint32_t> track; ///< its number; absent for all
    ExtractedSound sound = ExtractedSound::WAVE;
    bool takesHiddenSound = false;

    // For ExtractFiles only, whose paths are the image and those in it; the track may have the filesystem.
    std::optional<VolumeKind> extractedFilesystem; ///< absent for the best one

    // For MakeImage, MakeAudioImage and Extract.
    QByteArray output;

    // For Info only.
    QByteArray artworkFolder; ///< empty: covers are not written

    // For MakeImage, MakeAudioImage and BurnDisc.
    QString volumeName; ///< empty: the source's name
    DiscFormat format = DiscFormat::ISO;

    // For MakeImage, MakeAudioImage and Extract.
    bool isSynchronized = true; ///< wait until the output is on the disk

    // For MakeImage and BurnDisc.
    bool relocatesDeepFolders = false;
    bool strict = false;

    // For SplitImage only.
    std::uint64_t splitCapacity = 0; ///< bytes of user data of each disc

    // For MakeAudioImage, and BurnDisc when it writes sound. Lengths are frames, 75 in a second.
    QByteArray isrcFile; ///< empty: none
    AudioNormalization normalization = AudioNormalization::None;
    bool isGapless = true;
    bool hasCDText = false;
    std::uint32_t gap = 0;

    // For MakeAudioImage only.
    QByteArray dataFolder; ///< empty: none
    std::uint32_t capacity = 0; ///< frames; 0: any

    // For Convert only.
    std::int32_t soundFormat = 0; ///< a code of KRAudioConverter
    QByteArray folder;
    bool isFlat = false;
    bool carriesTags = false;
    unsigned int jobs = 0; ///< 0: one on each processor

    // For BurnDisc and BlankDisc.
    QByteArray drive; ///< empty: the only one
    bool ejects = false;

    // For BurnDisc only.
    double speed = 0; ///< times single speed; 0: the fastest
    bool isSimulated = false;
    bool leavesOpen = false;
    bool overburns = false;
    bool verifies = false;
    bool isSound = false; ///< the paths are files that become tracks

    // For BlankDisc only.
    bool blanksAll = false;
    bool formats = false;

    // For ListDrives only.
    bool opensDrives = false;
};

/// Understands the words after the program's name. Never touches the file system. Options may stand before and behind
/// paths, values may follow "=" or stand alone, "--" ends the options; the last of several equal options counts.
[[nodiscard]] Arguments parseArguments(const QList<QByteArray> &words);

/// The text of --help: about one command, or about the program for an empty name. At most 80 columns.
[[nodiscard]] QByteArray helpText(const QByteArray &command);

} // namespace Tessaron::Tool
