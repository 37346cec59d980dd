#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// MMC profiles (MMC-5 table 89) of the discs that the drive can hold.
enum class FakeProfile : std::uint16_t {
    None = 0x00,
    CDR = 0x09,
    CDRW = 0x0A,
    DVDMinusR = 0x11,
    DVDMinusRWOverwrite = 0x13,
    DVDMinusRW = 0x14,
    DVDPlusRW = 0x1A,
    DVDPlusR = 0x1B,
    BDR = 0x41,
    BDRE = 0x43,
};

struct FakeTrack {
    int session = 1;
    int number = 1;
    int start = 0; ///< block
    int length = 0; ///< blocks
    bool isAudio = false;
};

/// When a command is to fail. Where it fails for lack of a disc (code 3A), the disc is out from then on.
struct FakeFault {
    int opcode = 0;
    int after = 0; ///< how many of these commands do their work first
    int times = 1; ///< how often it fails then; 0 for ever
    int key = 0; ///< sense; with a key of 0 the drive is gone, for every later command as well
    int code = 0;
    int qualifier = 0;
};

/// The disc in the drive, and what the drive was told. It lies in a folder between the processes that use the drive: in
/// the text "disc", one fact in a line, and the sectors in "sectors", 2352 bytes each, data from the first of them on.
struct FakeDisc {
    enum class Status : std::uint8_t { Blank, Appendable, Complete };

    FakeProfile profile = FakeProfile::None;
    Status status = Status::Blank;
    int capacity = 0; ///< blocks
    bool isFormatted = false; ///< of overwriteable discs
    std::vector<FakeTrack> tracks; ///< closed ones, and the last one even while it is open
    bool isTrackOpen = false;
    bool isSessionOpen = false; ///< with tracks that are closed; the next one belongs to it
    bool isDamaged = false; ///< the open track was broken off
    std::string cdText; ///< packs of the lead-in, hexadecimal
    std::string cueSheet; ///< as it was sent last, hexadecimal
    std::string log; ///< opcodes in their order, hexadecimal, without those that only ask
    std::vector<FakeFault> faults;
    std::vector<int> badSectors; ///< that cannot be read
    int displacement = 0; ///< by how many samples the drive reads sound later than it is asked
    std::string format; ///< the format that the drive was last told, as its descriptor of 8 bytes, hexadecimal
    int writeSpeed = 0; ///< that the drive was last told, in thousands of bytes a second
    bool isTrayOut = false;
    std::string tray; ///< what the drive was told about its tray, in order: "lock", "unlock",
                      ///< "in", "out", "start" or "stop"

    [[nodiscard]] bool isCD() const { return profile == FakeProfile::CDR || profile == FakeProfile::CDRW; }
    [[nodiscard]] bool isOverwritable() const;
    [[nodiscard]] int sessions() const { return tracks.empty() ? 0 : tracks.back().session; }
    /// Behind the last track.
    [[nodiscard]] int endOfTracks() const { return tracks.empty() ? 0 : tracks.back().start + tracks.back().length; }
    /// Where the next track or session begins.
    [[nodiscard]] int nextBlock() const;

    [[nodiscard]] static FakeDisc load(const std::string &folder);
    void save(const std::string &folder) const;
};

} // namespace Tessaron::Testing
