#include "tests/fakedrive/FakeDrive.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr int sectorSize = 2352;
constexpr int dataSize = 2048;
constexpr int pregapOfDisc = 150; ///< sectors in front of block 0; the lead-in lies in front of these
constexpr int textsInSector = 96; ///< bytes that are sent for a sector of the lead-in

} // namespace

FakeDrive::FakeDrive(std::string folder)
    : m_folder(std::move(folder))
    , m_disc(FakeDisc::load(m_folder))
    , m_sectors(::open((m_folder + "/sectors").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666))
{
}

std::optional<Sense> FakeDrive::run(const std::uint8_t *command, std::uint8_t *data, unsigned int length,
                                    bool isToDrive)
{
    const int opcode = command[0];
    static constexpr std::uint8_t changing[] = {0x04, 0x1B, 0x2A, 0x35, 0x53, 0x54, 0x55, 0x5B, 0x5D, 0xA1, 0xAA};
    if (std::find(std::begin(changing), std::end(changing), opcode) != std::end(changing)) {
        const std::string name = hexadecimal(command, 1);
        const std::string &log = m_disc.log;
        if (log.size() < 2 || log.compare(log.size() - 2, 2, name) != 0) // repeated writing counts once
            m_disc.log += name;
    }
    waitWhileHeld(opcode);
    if (const std::optional<Sense> fault = faultOf(opcode)) {
        save();
        if (fault->key != 0)
            return fault;
        m_isGone = true;
        return std::nullopt;
    }
    static_cast<void>(isToDrive);
    const Sense sense = carryOut(command, data, length);
    return sense;
}

void FakeDrive::waitWhileHeld(int opcode) const
{
    const auto code = std::uint8_t(opcode);
    const std::string hold = m_folder + "/hold-" + hexadecimal(&code, 1);
    if (::access(hold.c_str(), F_OK) != 0)
        return;
    std::ofstream(m_folder + "/held-" + hexadecimal(&code, 1)) << '\n';
    while (::access(hold.c_str(), F_OK) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

std::optional<Sense> FakeDrive::faultOf(int opcode)
{
    const int count = m_counts[opcode]++;
    for (const FakeFault &fault : m_disc.faults) {
        const bool isDue = count >= fault.after && (fault.times == 0 || count < fault.after + fault.times);
        if (fault.opcode != opcode || !isDue)
            continue;
        if (opcode == 0x2A || opcode == 0xAA)
            m_disc.isDamaged = !m_disc.isOverwritable();
        if (fault.code == 0x3A)
            m_disc.profile = FakeProfile::None;
        return Sense{fault.key, fault.code, fault.qualifier};
    }
    return std::nullopt;
}

Sense FakeDrive::carryOut(const std::uint8_t *command, std::uint8_t *data, unsigned int length)
{
    Bytes reply;
    Sense sense;
    const Sense noDisc{2, 0x3A, 0};
    const Sense wrongField{5, 0x24, 0};
    switch (command[0]) {
    case 0x00: // TEST UNIT READY
        return hasDisc() ? Sense() : noDisc;
    case 0x03: // REQUEST SENSE
        reply.resize(18);
        break;
    case 0x12: // INQUIRY
        reply = m_answers.inquiry();
        break;
    case 0x1B: // START STOP UNIT
        return moveTray(command[4] & 3);
    case 0x1E: // PREVENT ALLOW MEDIUM REMOVAL
        m_isLocked = (command[4] & 1) != 0;
        noteTray(m_isLocked ? "lock" : "unlock");
        return {};
    case 0x54: // SEND OPC INFORMATION
        return {};
    case 0xB6: // SET STREAMING: a number of kilobytes, and the milliseconds that they may take
        if (length >= 28 && number(data + 24, 4) > 0)
            m_disc.writeSpeed = int(std::int64_t(number(data + 20, 4)) * 1000 / number(data + 24, 4));
        return {};
    case 0xBB: // SET CD SPEED
        m_disc.writeSpeed = number(command + 4, 2);
        return {};
    case 0x35: // SYNCHRONIZE CACHE
        endAnnouncedSession();
        return {};
    case 0x53: // RESERVE TRACK
        return {};
    case 0x23: // READ FORMAT CAPACITIES
        reply = m_answers.formatCapacities();
        break;
    case 0x25: // READ CAPACITY
        if (!hasDisc())
            return noDisc;
        reply = m_answers.readCapacity();
        break;
    case 0x28: // READ (10)
        sense = read(&reply, number(command + 2, 4), number(command + 7, 2), dataSize);
        break;
    case 0xA8: // READ (12)
        sense = read(&reply, number(command + 2, 4), number(command + 6, 4), dataSize);
        break;
    case 0xBE: // READ CD
        sense = read(&reply, number(command + 2, 4), number(command + 6, 3),
                     (command[9] & 0xF8) == 0xF8                                  ? sectorSize
                         : (command[9] & 0x10) != 0 && (command[1] >> 2 & 7) != 1 ? dataSize
                                                                                  : sectorSize);
        break;
    case 0x2A: // WRITE (10)
        return write(data, number(command + 2, 4), number(command + 7, 2), length);
    case 0xAA: // WRITE (12)
        return write(data, number(command + 2, 4), number(command + 6, 4), length);
    case 0x43: // READ TOC/PMA/ATIP
        if (!hasDisc())
            return noDisc;
        reply = m_answers.tableOfContents(command[2] & 15);
        if (reply.empty())
            return wrongField;
        break;
    case 0x46: // GET CONFIGURATION
        reply = m_answers.configuration();
        break;
    case 0x4A: // GET EVENT STATUS NOTIFICATION
        reply = {0, 6, 4, 0x10, 0, std::uint8_t(hasDisc() ? 2 : 0), 0, 0};
        break;
    case 0x51: // READ DISC INFORMATION
        if (!hasDisc())
            return noDisc;
        reply = m_answers.discInformation();
        break;
    case 0x52: // READ TRACK INFORMATION
        if (!hasDisc())
            return noDisc;
        reply = m_answers.trackInformation(number(command + 2, 4));
        if (reply.empty())
            return wrongField;
        break;
    case 0x55: // MODE SELECT (10)
        if (length > 8 && (data[8] & 0x3F) == 5)
            m_writeParameters.assign(data + 8, data + length);
        return {};
    case 0x5A: // MODE SENSE (10)
        reply = m_answers.modePage(command[2] & 0x3F);
        if (reply.empty())
            return wrongField;
        break;
    case 0x5B: // CLOSE TRACK SESSION
        return closeTrackOrSession(command[2] & 7);
    case 0x5C: // READ BUFFER CAPACITY
        put(&reply, 0, 10, 2);
        put(&reply, 4, 2 << 20, 4);
        put(&reply, 8, 2 << 20, 4);
        break;
    case 0x5D: // SEND CUE SHEET
        noteCueSheet(Bytes(data, data + length));
        return {};
    case 0xA1: // BLANK
        return blank(command[1] & 7);
    case 0x04: // FORMAT UNIT
        if (m_disc.profile == FakeProfile::DVDMinusRW)
            m_disc.profile = FakeProfile::DVDMinusRWOverwrite;
        m_disc.isFormatted = true;
        if (length >= 12) // behind a head of 4 bytes
            m_disc.format = hexadecimal(data + 4, 8);
        return {};
    case 0xAC: // GET PERFORMANCE
        reply = m_answers.performance(command[10]);
        break;
    default:
        return {5, 0x20, 0};
    }
    if (sense.key == 0)
        std::memcpy(data, reply.data(), std::min<std::size_t>(length, reply.size()));
    return sense;
}

void FakeDrive::noteTray(const char *told)
{
    m_disc.tray += m_disc.tray.empty() ? "" : " ";
    m_disc.tray += told;
}

/// By the bits LoEj and Start of the command.
Sense FakeDrive::moveTray(int operation)
{
    constexpr int out = 2;
    constexpr int in = 3;
    noteTray(operation == in ? "in" : operation == out ? "out" : operation == 0 ? "stop" : "start");
    if (operation == out && m_isLocked)
        return {5, 0x53, 2};
    if (operation == out || operation == in)
        m_disc.isTrayOut = operation == out;
    return {};
}

Sense FakeDrive::read(Bytes *reply, int first, int count, int size)
{
    if (!hasDisc())
        return {2, 0x3A, 0};
    const int end = m_disc.isOverwritable() ? m_disc.capacity : m_disc.endOfTracks();
    if (first < 0 || first + count > end)
        return {5, 0x21, 0};
    for (int block = first; block < first + count; ++block) {
        const auto track = std::find_if(m_disc.tracks.begin(), m_disc.tracks.end(), [block](const FakeTrack &one) {
            return block >= one.start && block < one.start + one.length;
        });
        if (track == m_disc.tracks.end() && !m_disc.isOverwritable())
            return {3, 0x11, 5};
        if (track != m_disc.tracks.end() && track->isAudio != (size == sectorSize))
            return {5, 0x64, 0};
        if (std::find(m_disc.badSectors.begin(), m_disc.badSectors.end(), block) != m_disc.badSectors.end())
            return {3, 0x11, 5};
        Bytes sector(std::size_t{sectorSize});
        constexpr int sampleSize = 4;
        const bool isSound = size == sectorSize;
        const off_t place = off_t(block) * sectorSize - (isSound ? off_t(m_disc.displacement) * sampleSize : 0);
        const off_t silence = std::clamp<off_t>(-place, 0, sectorSize); // in front of the first sector
        if (silence < sectorSize
            && ::pread(m_sectors, sector.data() + silence, sector.size() - std::size_t(silence), place + silence) < 0)
            return {3, 0x11, 0};
        reply->insert(reply->end(), sector.begin(), sector.begin() + size);
    }
    return {};
}

void FakeDrive::beginTrack(int first)
{
    FakeTrack track;
    track.session = m_disc.sessions() + 1;
    track.number = m_disc.tracks.empty() ? 1 : m_disc.tracks.back().number + 1;
    if (m_disc.isSessionOpen)
        track.session = m_disc.sessions();
    track.start = first;
    // The kind of a track that is not announced is that of the write parameters: bit 2 of the track mode says data.
    track.isAudio = m_writeParameters.size() > 3 && (m_writeParameters[3] & 4) == 0 && m_disc.isCD();
    m_disc.tracks.push_back(track);
}

Sense FakeDrive::write(const std::uint8_t *data, int first, int count, unsigned int length)
{
    if (!hasDisc())
        return {2, 0x3A, 0};
    if (m_disc.status == FakeDisc::Status::Complete && !m_disc.isOverwritable())
        return {5, 0x30, 5};
    if (first + count > m_disc.capacity)
        return {5, 0x21, 0};
    const int size = count > 0 ? int(length) / count : 0;
    const bool isSimulated = m_writeParameters.size() > 2 && (m_writeParameters[2] & 0x10) != 0;
    if (isSimulated)
        return {};
    if (!m_announced.empty()) { // the pregap in front of block 0 is written, too
        if (!m_disc.isTrackOpen) {
            m_disc.tracks.insert(m_disc.tracks.end(), m_announced.begin(), m_announced.end());
            m_disc.isTrackOpen = true;
        }
    } else if (!m_disc.isOverwritable()) {
        if (!m_disc.isTrackOpen)
            beginTrack(first);
        m_disc.isTrackOpen = true;
        FakeTrack &track = m_disc.tracks.back();
        if (first != track.start + track.length)
            return {5, 0x21, 2};
        track.length += count;
    } else if (m_disc.tracks.empty()) {
        m_disc.tracks.push_back({1, 1, 0, m_disc.capacity, false});
    }
    m_disc.status = m_disc.isOverwritable() ? m_disc.status : FakeDisc::Status::Appendable;
    m_written = first + count;
    if (first < -pregapOfDisc && size == textsInSector)
        noteTexts(data, length);
    for (int block = 0; block < count; ++block) {
        if (first + block >= 0
            && ::pwrite(m_sectors, data + std::ptrdiff_t(block) * size, std::size_t(size),
                        off_t(first + block) * sectorSize)
                != size)
            return {3, 0x0C, 0};
    }
    return {};
}

/// The subchannels R to W of the lead-in: a pack is 24 bytes with six bits in each (MMC-3 annex J).
void FakeDrive::noteTexts(const std::uint8_t *data, unsigned int length)
{
    constexpr unsigned int packSize = 24;
    for (unsigned int at = 0; at + packSize <= length && !m_areTextsWhole; at += packSize) {
        Bytes pack;
        for (unsigned int four = at; four < at + packSize; four += 4) {
            std::uint32_t bits = 0;
            for (unsigned int byte = four; byte < four + 4; ++byte)
                bits = bits << 6 | (data[byte] & 0x3F);
            put(&pack, pack.size(), bits, 3);
        }
        const std::string text = hexadecimal(pack.data(), pack.size());
        m_areTextsWhole = !m_disc.cdText.empty() && m_disc.cdText.compare(0, text.size(), text) == 0;
        if (!m_areTextsWhole)
            m_disc.cdText += text;
    }
}

Sense FakeDrive::closeTrackOrSession(int function)
{
    constexpr int track = 1;
    m_announced.clear();
    const bool isSimulated = m_writeParameters.size() > 2 && (m_writeParameters[2] & 0x10) != 0;
    if (isSimulated)
        return {};
    m_disc.isDamaged = false;
    if (function == track) {
        endTrack();
        return {};
    }
    endSession(m_disc.isCD() ? staysOpen() : function == 2);
    return {};
}

/// Another one may follow in the same session.
void FakeDrive::endTrack()
{
    if (!m_disc.isTrackOpen)
        return;
    if (m_disc.isCD())
        m_disc.tracks.back().length += 2; // run-out
    m_disc.isTrackOpen = false;
    m_disc.isSessionOpen = true;
}

/// By the write parameters of a CD.
bool FakeDrive::staysOpen() const
{
    return m_writeParameters.size() > 3 && (m_writeParameters[3] & 0xC0) == 0xC0;
}

void FakeDrive::endSession(bool mayGoOn)
{
    m_disc.isTrackOpen = false;
    m_disc.isSessionOpen = false;
    if (!m_disc.isOverwritable())
        m_disc.status = mayGoOn ? FakeDisc::Status::Appendable : FakeDisc::Status::Complete;
    save();
}

/// A session at once ends by itself when all of its blocks have come; one that was broken off stays as it is. A DVD-R
/// that is written at once (write type 2) ends with its only track.
void FakeDrive::endAnnouncedSession()
{
    const bool isDVDMinus = m_disc.profile == FakeProfile::DVDMinusR || m_disc.profile == FakeProfile::DVDMinusRW;
    if (isDVDMinus && m_disc.isTrackOpen && m_writeParameters.size() > 2 && (m_writeParameters[2] & 15) == 2) {
        endSession(false);
        return;
    }
    if (m_announced.empty()) {
        if (m_disc.isCD() && m_disc.isTrackOpen)
            endTrack(); // of a CD that is written track at once
        return;
    }
    if (!m_disc.isTrackOpen)
        return;
    const bool isWhole = m_written == m_announced.back().start + m_announced.back().length;
    m_announced.clear();
    if (isWhole)
        endSession(staysOpen());
    else
        m_disc.isDamaged = true;
}

/// The tracks of a session at once: entries of 8 bytes with control, track, index, form, and the time (MMC-5 6.33).
void FakeDrive::noteCueSheet(const Bytes &sheet)
{
    m_disc.cueSheet = hexadecimal(sheet.data(), sheet.size());
    m_announced.clear();
    for (std::size_t at = 0; at + 8 <= sheet.size(); at += 8) {
        const std::uint8_t *const entry = sheet.data() + at;
        const int place = (entry[5] * 60 + entry[6]) * 75 + entry[7] - 150;
        const bool isTrack = (entry[0] & 0x0F) == 1 && entry[1] >= 1;
        if (!isTrack || (entry[2] != 1 && entry[1] != 0xAA))
            continue;
        if (!m_announced.empty())
            m_announced.back().length = place - m_announced.back().start;
        if (entry[1] == 0xAA)
            break;
        m_announced.push_back({m_disc.sessions() + 1, entry[1], place, 0, (entry[0] & 0x40) == 0});
    }
}

Sense FakeDrive::blank(int type)
{
    constexpr int all = 0;
    constexpr int minimal = 1;
    if (m_disc.profile != FakeProfile::CDRW && m_disc.profile != FakeProfile::DVDMinusRW
        && m_disc.profile != FakeProfile::DVDMinusRWOverwrite)
        return {5, 0x30, 0};
    if (type != all && type != minimal)
        return {5, 0x24, 0};
    if (m_disc.profile == FakeProfile::DVDMinusRWOverwrite)
        m_disc.profile = FakeProfile::DVDMinusRW;
    m_disc.tracks.clear();
    m_disc.isTrackOpen = false;
    m_disc.isSessionOpen = false;
    m_disc.isDamaged = false;
    m_disc.isFormatted = false;
    m_disc.status = FakeDisc::Status::Blank;
    save();
    return {};
}

} // namespace Tessaron::Testing
