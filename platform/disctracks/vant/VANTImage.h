#pragma once

#include "platform/disctracks/DiscTrack.h"
#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// One track of a VANT image. Numbers that a layout left out are absent, so that "not said" and 0 stay apart: block
/// type 0 means audio.
struct VANTTrack {
    std::uint32_t number = 0; ///< from 1, through all sessions
    std::uint64_t startOffset = 0; ///< where the track's data begins in the image file, bytes
    std::uint64_t length = 0; ///< blocks, the postgap included
    std::uint32_t blockSize = 0; ///< bytes, never 0
    std::optional<std::int32_t> trackMode;
    std::optional<std::int32_t> dataForm;
    std::optional<std::int32_t> blockType;
    std::optional<std::int32_t> sessionFormat;
    std::uint32_t pregap =
        0; ///< blocks in front of the data; in the file when there is room for them before `startOffset`
    std::uint32_t postgap = 0; ///< blocks at the end of `length` that are silence or zeros
    CopyState copyState = CopyState::Unstated;
    bool hasPreEmphasis = false;
    bool hasFourChannels = false;
    std::vector<std::uint32_t> indexPoints; ///< frames

    /// Bytes of the track's data in the file.
    [[nodiscard]] std::uint64_t byteLength() const { return length * blockSize; }

    friend bool operator==(const VANTTrack &, const VANTTrack &) = default;
};

struct VANTSession {
    std::vector<VANTTrack> tracks; ///< never empty

    friend bool operator==(const VANTSession &, const VANTSession &) = default;
};

/// What the trailer of a VANT image says. A value.
struct VANTImage {
    std::uint16_t majorVersion = 0;
    std::uint16_t minorVersion = 0;
    std::uint64_t dataLength = 0; ///< bytes at the start of the file that the tracks take
    std::uint64_t trailerOffset = 0; ///< where the trailer begins in the file
    std::uint64_t trailerLength = 0; ///< bytes
    std::vector<VANTSession> sessions; ///< never empty
    QList<QByteArray> cdTextBlocks; ///< byte for byte as they were given, in order

    friend bool operator==(const VANTImage &, const VANTImage &) = default;
};

/// Domain of the errors of VANTReader; the codes are VANTErrorCode.
TESSARON_EXPORT extern const QString VANTErrorDomain;
/// User information of such an error: offset in the file of what is wrong (quint64).
TESSARON_EXPORT extern const QString VANTErrorOffsetKey;
/// The reason of such an error without the place, for texts that name the place themselves.
TESSARON_EXPORT extern const QString VANTErrorReasonKey;

enum class VANTErrorCode : int {
    NoTrailer = 1, ///< the file does not end like a VANT image
    UnknownVersion = 2, ///< made by a program of a later time
    Damaged = 3, ///< the checksum or a record is wrong
    Incomplete = 4, ///< data that the tracks need is missing in front of the trailer
};

} // namespace Tessaron
