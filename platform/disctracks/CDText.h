#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <map>
#include <vector>

namespace Tessaron
{

/// What a text of CD-TEXT is (the type of its packs). Types without texts are not listed.
enum class CDTextKind : std::uint8_t {
    Title = 0x80,
    Performer = 0x81,
    Songwriter = 0x82,
    Composer = 0x83,
    Arranger = 0x84,
    Message = 0x85,
    DiscIdentification = 0x86, ///< of the disc only
    Genre = 0x87, ///< of the disc only; with a code, see CDTextBlock
    ClosedInformation = 0x8D, ///< not shown to listeners
    Codes = 0x8E, ///< the disc's catalogue number and the tracks' ISRCs
};

enum class CDTextEncoding : std::uint8_t {
    Latin1 = 0x00, ///< ISO 8859-1 as CD-TEXT changes it
    Ascii = 0x01,
    ShiftJis = 0x80, ///< two bytes for a character
};

/// The texts of a disc in one language.
struct CDTextBlock {
    static constexpr std::uint8_t english = 0x09;

    std::uint8_t language = english; ///< EBU Tech 3264 annex 1: 08 German, 09 English, 0F French, 69 Japanese
    CDTextEncoding encoding = CDTextEncoding::Latin1;
    std::uint8_t copyright = 0; ///< bits 0 to 6: the kinds of text that are copyrighted; 0 free
    std::uint16_t genreCode = 0; ///< 0 not used
    std::uint32_t firstTrack = 1; ///< number of the first track with texts
    /// For each kind the texts: that of the disc, then one for each track from `firstTrack` on; empty without text.
    std::map<CDTextKind, std::vector<QString>> texts;

    friend bool operator==(const CDTextBlock &, const CDTextBlock &) = default;
};

/// The CD-TEXT of a disc: up to eight languages. A value.
struct CDText {
    std::vector<CDTextBlock> blocks;

    [[nodiscard]] bool isEmpty() const { return blocks.empty(); }

    friend bool operator==(const CDText &, const CDText &) = default;
};

} // namespace Tessaron
