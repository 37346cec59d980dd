#pragma once

#include <QByteArray>

#include <cstdint>
#include <span>

namespace Tessaron::Tool
{

enum class Option : std::uint8_t {
    Help,
    Version,
    Json,
    Quiet,
    Verbose,
    Relocate,
    Strict,
    Split,
    NoSync,
    Output,
    Name,
    Progress,
    Format,
    Filesystems,
    Filesystem,
    Files,
    Gap,
    NoGapless,
    Capacity,
    CdText,
    Data,
    Normalize,
    NormalizeEach,
    Track,
    Isrc,
    To,
    VariableBitRate,
    ConstantBitRate,
    Directory,
    Flat,
    Tags,
    Jobs,
    Hidden,
    Artwork,
    Play,
    Title,
    Chapter,
    Drive,
    Speed,
    Simulate,
    Multi,
    Overburn,
    Audio,
    Verify,
    Eject,
    Full,
    FormatDisc,
    Media,
};

/// One option as the parser and the help text see it.
struct OptionDescription {
    Option option;
    char shortName; ///< 0 for none
    const char *longName; ///< without the dashes
    const char *valueName; ///< null for an option without a value
    const char *commands; ///< blank-separated commands that know it; "-" stands for the program without a command
    const char *help; ///< its lines in the help text, separated by '\n', at most 54 columns each
};

/// All options, in the order in which the help text shows them.
[[nodiscard]] std::span<const OptionDescription> allOptions();

/// True when the command (empty: the program itself) knows the option.
[[nodiscard]] bool knows(const QByteArray &command, const OptionDescription &option);

/// The option of that long name, or null.
[[nodiscard]] const OptionDescription *findOption(const QByteArray &command, const QByteArray &longName);
/// The option of that short name, or null.
[[nodiscard]] const OptionDescription *findOption(const QByteArray &command, char shortName);

} // namespace Tessaron::Tool
