#pragma once

#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// What a cue sheet says of the form of a file.
enum class CueFileType : std::uint8_t {
    Binary, ///< sectors; audio little-endian
    Motorola, ///< the same with audio big-endian
    Wave, ///< a sound file; many sheets say this of any kind that is not MP3
    Aiff,
    Mp3,
};

/// A file that a cue sheet names.
struct CueFile {
    QByteArray name; ///< as the sheet says it, in UTF-8; a name that is not UTF-8 in the sheet was decoded
    QByteArray nameAsWritten; ///< the bytes of the sheet itself; empty for a sheet in UTF-16
    CueFileType type = CueFileType::Binary;
    QByteArray path; ///< where it was found; empty when it was not looked for
    /// Where plain CD audio begins in a sound file, bytes; no value where only a decoder could tell, and for sectors.
    std::optional<std::uint64_t> firstSample = std::nullopt;
    bool isAiff = false; ///< such a file is AIFF, whatever its type says

    /// A file of samples with a head, or a compressed one.
    [[nodiscard]] bool isSound() const { return type != CueFileType::Binary && type != CueFileType::Motorola; }
    [[nodiscard]] bool hasBigEndianSamples() const { return type == CueFileType::Motorola || isAiff; }

    friend bool operator==(const CueFile &, const CueFile &) = default;
};

/// Blocks of a track that lie in one file one after another.
struct CueRun {
    std::size_t file = 0; ///< place in CueSheet::files
    std::uint64_t offset = 0; ///< bytes in the file; for a sound file, in its samples
    std::uint64_t blocks = 0;

    friend bool operator==(const CueRun &, const CueRun &) = default;
};

/// Where a track's stored blocks are: its pregap, where that is stored, and all the rest but a postgap that is not.
struct CueTrackPlace {
    std::vector<CueRun> pregap;
    std::vector<CueRun> data;
    /// False when the track's end is that of a file whose length in blocks is not known (a compressed one): its length
    /// in the table is then up to its last index only.
    bool isLengthKnown = true;
    /// Bytes of a sound file behind the last block, where the track ends with the file: less than a block. They are in
    /// no length.
    std::uint32_t restBytes = 0;

    friend bool operator==(const CueTrackPlace &, const CueTrackPlace &) = default;
};

/// Something in a sheet that was passed over or taken in a certain way.
struct CueNote {
    std::uint32_t line = 0; ///< from 1; 0 for the whole sheet
    QString text;

    friend bool operator==(const CueNote &, const CueNote &) = default;
};

/// A cue sheet: a disc, and the files that hold its blocks. A value.
struct CueSheet {
    TableOfContents contents;
    std::vector<CueFile> files;
    std::vector<CueTrackPlace> places; ///< one for each track of the contents, in order
    std::vector<CueNote> notes;

    friend bool operator==(const CueSheet &, const CueSheet &) = default;
};

} // namespace Tessaron
