// A drive that is not there, for programs that have this object preloaded: what they open as "/dev/sr0" takes the
// commands of MMC-5 that libburn sends (SG_IO) and answers like a drive with the disc of TESSARON_FAKE_DRIVE, a folder.
// It is our own reading of the standard: it shows that the calls, their order and the handling of faults are right by
// that, and nothing of what drives do otherwise.

#include "tests/fakedrive/FakeDisc.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <mutex>
#include <optional>
#include <scsi/scsi.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

constexpr char devicePath[] = "/dev/sr0";
constexpr int sectorSize = 2352;
constexpr int dataSize = 2048;

using Bytes = std::vector<std::uint8_t>;

struct Sense {
    int key = 0;
    int code = 0;
    int qualifier = 0;
};

std::string hexadecimal(const std::uint8_t *bytes, std::size_t count)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        text += digits[bytes[index] >> 4];
        text += digits[bytes[index] & 15];
    }
    return text;
}

Bytes bytesOfHexadecimal(const std::string &text)
{
    Bytes bytes;
    for (std::size_t index = 0; index + 1 < text.size(); index += 2)
        bytes.push_back(std::uint8_t(std::stoi(text.substr(index, 2), nullptr, 16)));
    return bytes;
}

int number(const std::uint8_t *bytes, int count)
{
    int value = 0;
    for (int index = 0; index < count; ++index)
        value = value << 8 | bytes[index];
    return value;
}

void put(Bytes *bytes, std::size_t at, std::uint32_t value, int count)
{
    if (bytes->size() < at + std::size_t(count))
        bytes->resize(at + std::size_t(count));
    for (int index = 0; index < count; ++index)
        (*bytes)[at + std::size_t(index)] = std::uint8_t(value >> (8 * (count - 1 - index)));
}

void putMSF(Bytes *bytes, std::size_t at, int block)
{
    const int frames = block + 150;
    put(bytes, at, std::uint32_t(frames / 4500), 1);
    put(bytes, at + 1, std::uint32_t(frames / 75 % 60), 1);
    put(bytes, at + 2, std::uint32_t(frames % 75), 1);
}

/// The drive and the disc in it.
class Drive
{
public:
    explicit Drive(std::string folder)
        : m_folder(std::move(folder))
        , m_disc(FakeDisc::load(m_folder))
        , m_sectors(::open((m_folder + "/sectors").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666))
    {
    }

    [[nodiscard]] bool isGone() const { return m_isGone; }
    void save() const { m_disc.save(m_folder); }

    /// Carries a command out; no value when the drive is gone.
    [[nodiscard]] std::optional<Sense> run(const std::uint8_t *command, std::uint8_t *data, unsigned int length,
                                           bool isToDrive);

private:
    [[nodiscard]] std::optional<Sense> faultOf(int opcode);
    [[nodiscard]] Sense carryOut(const std::uint8_t *command, std::uint8_t *data, unsigned int length);
    [[nodiscard]] Sense write(const std::uint8_t *data, int first, int count, unsigned int length);
    [[nodiscard]] Sense read(Bytes *reply, int first, int count, int size);
    [[nodiscard]] Sense closeTrackOrSession(int function);
    [[nodiscard]] Sense blank(int type);
    void beginTrack(int first);
    void noteCueSheet(const Bytes &sheet);
    void endAnnouncedSession();
    void endSession(bool mayGoOn);
    void endTrack();
    [[nodiscard]] bool staysOpen() const;
    [[nodiscard]] Bytes inquiry() const;
    [[nodiscard]] Bytes configuration() const;
    [[nodiscard]] Bytes discInformation() const;
    [[nodiscard]] Bytes trackInformation(int track) const;
    [[nodiscard]] Bytes tableOfContents(int format) const;
    [[nodiscard]] Bytes modePage(int page) const;
    [[nodiscard]] Bytes formatCapacities() const;
    [[nodiscard]] Bytes performance(int type) const;
    [[nodiscard]] Bytes readCapacity() const;
    [[nodiscard]] int endOfTracks() const;
    [[nodiscard]] bool hasDisc() const { return m_disc.profile != FakeProfile::None; }

    const std::string m_folder;
    FakeDisc m_disc;
    const int m_sectors;
    bool m_isGone = false;
    Bytes m_writeParameters; ///< mode page 05 as it was set
    std::vector<FakeTrack> m_announced; ///< by a cue sheet
    int m_written = 0; ///< behind the last block that was written
    int m_counts[256] = {};
};

std::optional<Sense> Drive::run(const std::uint8_t *command, std::uint8_t *data, unsigned int length, bool isToDrive)
{
    const int opcode = command[0];
    static constexpr std::uint8_t changing[] = {0x04, 0x1B, 0x2A, 0x35, 0x53, 0x54, 0x55, 0x5B, 0x5D, 0xA1, 0xAA};
    if (std::find(std::begin(changing), std::end(changing), opcode) != std::end(changing)) {
        const std::string name = hexadecimal(command, 1);
        const std::string &log = m_disc.log;
        if (log.size() < 2 || log.compare(log.size() - 2, 2, name) != 0) // repeated writing counts once
            m_disc.log += name;
    }
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

std::optional<Sense> Drive::faultOf(int opcode)
{
    const int count = m_counts[opcode]++;
    for (const FakeFault &fault : m_disc.faults) {
        const bool isDue = count >= fault.after && (fault.times == 0 || count < fault.after + fault.times);
        if (fault.opcode != opcode || !isDue)
            continue;
        if (opcode == 0x2A || opcode == 0xAA)
            m_disc.isDamaged = !m_disc.isOverwritable();
        return Sense{fault.key, fault.code, fault.qualifier};
    }
    return std::nullopt;
}

Sense Drive::carryOut(const std::uint8_t *command, std::uint8_t *data, unsigned int length)
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
        reply = inquiry();
        break;
    case 0x1B: // START STOP UNIT
    case 0x1E: // PREVENT ALLOW MEDIUM REMOVAL
    case 0x54: // SEND OPC INFORMATION
    case 0xB6: // SET STREAMING
    case 0xBB: // SET CD SPEED
        return {};
    case 0x35: // SYNCHRONIZE CACHE
        endAnnouncedSession();
        return {};
    case 0x53: // RESERVE TRACK
        return {};
    case 0x23: // READ FORMAT CAPACITIES
        reply = formatCapacities();
        break;
    case 0x25: // READ CAPACITY
        if (!hasDisc())
            return noDisc;
        reply = readCapacity();
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
        reply = tableOfContents(command[2] & 15);
        if (reply.empty())
            return wrongField;
        break;
    case 0x46: // GET CONFIGURATION
        reply = configuration();
        break;
    case 0x4A: // GET EVENT STATUS NOTIFICATION
        reply = {0, 6, 4, 0x10, 0, std::uint8_t(hasDisc() ? 2 : 0), 0, 0};
        break;
    case 0x51: // READ DISC INFORMATION
        if (!hasDisc())
            return noDisc;
        reply = discInformation();
        break;
    case 0x52: // READ TRACK INFORMATION
        if (!hasDisc())
            return noDisc;
        reply = trackInformation(number(command + 2, 4));
        if (reply.empty())
            return wrongField;
        break;
    case 0x55: // MODE SELECT (10)
        if (length > 8 && (data[8] & 0x3F) == 5)
            m_writeParameters.assign(data + 8, data + length);
        return {};
    case 0x5A: // MODE SENSE (10)
        reply = modePage(command[2] & 0x3F);
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
        return {};
    case 0xAC: // GET PERFORMANCE
        reply = performance(command[10]);
        break;
    default:
        return {5, 0x20, 0};
    }
    if (sense.key == 0)
        std::memcpy(data, reply.data(), std::min<std::size_t>(length, reply.size()));
    return sense;
}

int Drive::endOfTracks() const
{
    return m_disc.tracks.empty() ? 0 : m_disc.tracks.back().start + m_disc.tracks.back().length;
}

Sense Drive::read(Bytes *reply, int first, int count, int size)
{
    if (!hasDisc())
        return {2, 0x3A, 0};
    const int end = m_disc.isOverwritable() ? m_disc.capacity : endOfTracks();
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
        Bytes sector(std::size_t{sectorSize});
        if (::pread(m_sectors, sector.data(), sector.size(), off_t(block) * sectorSize) < 0)
            return {3, 0x11, 0};
        reply->insert(reply->end(), sector.begin(), sector.begin() + size);
    }
    return {};
}

void Drive::beginTrack(int first)
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

Sense Drive::write(const std::uint8_t *data, int first, int count, unsigned int length)
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
    for (int block = 0; block < count; ++block) {
        if (first + block >= 0
            && ::pwrite(m_sectors, data + std::ptrdiff_t(block) * size, std::size_t(size),
                        off_t(first + block) * sectorSize)
                != size)
            return {3, 0x0C, 0};
    }
    return {};
}

Sense Drive::closeTrackOrSession(int function)
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
void Drive::endTrack()
{
    if (!m_disc.isTrackOpen)
        return;
    if (m_disc.isCD())
        m_disc.tracks.back().length += 2; // run-out
    m_disc.isTrackOpen = false;
    m_disc.isSessionOpen = true;
}

/// By the write parameters of a CD.
bool Drive::staysOpen() const
{
    return m_writeParameters.size() > 3 && (m_writeParameters[3] & 0xC0) == 0xC0;
}

void Drive::endSession(bool mayGoOn)
{
    m_disc.isTrackOpen = false;
    m_disc.isSessionOpen = false;
    if (!m_disc.isOverwritable())
        m_disc.status = mayGoOn ? FakeDisc::Status::Appendable : FakeDisc::Status::Complete;
    save();
}

/// A session at once ends by itself when all of its blocks have come; one that was broken off stays as it is. A DVD-R
/// that is written at once (write type 2) ends with its only track.
void Drive::endAnnouncedSession()
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
void Drive::noteCueSheet(const Bytes &sheet)
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

Sense Drive::blank(int type)
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

Bytes Drive::inquiry() const
{
    Bytes reply(36, ' ');
    reply[0] = 5;
    reply[1] = 0x80;
    reply[2] = 0;
    reply[3] = 0x32;
    reply[4] = 31;
    reply[5] = reply[6] = reply[7] = 0;
    std::memcpy(reply.data() + 8, "TEST    ", 8);
    std::memcpy(reply.data() + 16, "FAKE BURNER     ", 16);
    std::memcpy(reply.data() + 32, "1.00", 4);
    return reply;
}

Bytes Drive::configuration() const
{
    Bytes reply(8);
    const auto feature = [&reply](int code, bool isCurrent, const Bytes &content) {
        const std::size_t at = reply.size();
        put(&reply, at, std::uint32_t(code), 2);
        put(&reply, at + 2, isCurrent ? 1 : 0, 1);
        put(&reply, at + 3, std::uint32_t(content.size()), 1);
        reply.insert(reply.end(), content.begin(), content.end());
    };
    put(&reply, 6, std::uint32_t(m_disc.profile), 2);
    Bytes profiles;
    for (const int profile : {0x43, 0x41, 0x1B, 0x1A, 0x14, 0x13, 0x11, 0x0A, 0x09, 0x08}) {
        put(&profiles, profiles.size(), std::uint32_t(profile), 2);
        put(&profiles, profiles.size(), profile == int(m_disc.profile) ? 1 : 0, 2);
        std::swap(profiles[profiles.size() - 1], profiles[profiles.size() - 2]);
    }
    feature(0x0000, true, profiles);
    feature(0x0001, true, {0, 0, 0, 8, 1, 0, 0, 0});
    feature(0x0003, true, {0x29, 0, 0, 0});
    const bool isMinus = m_disc.profile == FakeProfile::DVDMinusR || m_disc.profile == FakeProfile::DVDMinusRW;
    feature(0x0010, hasDisc(), {0, 0, 8, 0, 0, 16, 0, 0});
    feature(0x001E, m_disc.isCD(), {3, 0, 0, 0});
    feature(0x0020, m_disc.isOverwritable(), {0, 0x22, 0xFF, 0xFF, 0, 0, 8, 0, 0, 16, 0, 0});
    feature(0x0021, m_disc.isCD() || isMinus, {0x7F, 0xFF, 1, 7});
    feature(0x002A, m_disc.profile == FakeProfile::DVDPlusRW, {1, 0, 0, 0});
    feature(0x002B, m_disc.profile == FakeProfile::DVDPlusR, {1, 0, 0, 0});
    feature(0x002D, m_disc.isCD(), {0x4F, 0, 0x7F, 0xFF});
    feature(0x002E, m_disc.isCD(), {0x6F, 0, 0x0C, 0x80});
    feature(0x002F, isMinus, {0x46, 0, 0, 0});
    feature(0x0041, m_disc.profile == FakeProfile::BDR || m_disc.profile == FakeProfile::BDRE, Bytes(20));
    put(&reply, 0, std::uint32_t(reply.size() - 4), 4);
    return reply;
}

Bytes Drive::discInformation() const
{
    Bytes reply(34);
    put(&reply, 0, 32, 2);
    const bool isErasable =
        m_disc.profile == FakeProfile::CDRW || m_disc.profile == FakeProfile::DVDMinusRW || m_disc.isOverwritable();
    const int status =
        m_disc.isOverwritable() ? (m_disc.profile == FakeProfile::DVDMinusRWOverwrite ? 2 : 3) : int(m_disc.status);
    const int sessionState = m_disc.status == FakeDisc::Status::Complete ? 3
        : m_disc.isTrackOpen || m_disc.isSessionOpen                     ? 1
                                                                         : 0;
    const int overwritableState = 3;
    reply[2] = std::uint8_t((isErasable ? 0x10 : 0) | (m_disc.isOverwritable() ? overwritableState : sessionState) << 2
                            | status);
    reply[3] = 1;
    const bool isAppendable = m_disc.status == FakeDisc::Status::Appendable;
    const int sessions =
        std::max(1, m_disc.sessions() + (isAppendable && !m_disc.isTrackOpen && !m_disc.isSessionOpen ? 1 : 0));
    const int lastTrack = m_disc.tracks.empty() ? 1 : m_disc.tracks.back().number + (isAppendable ? 1 : 0);
    reply[4] = std::uint8_t(sessions);
    reply[5] = std::uint8_t(lastTrack);
    reply[6] = std::uint8_t(lastTrack);
    reply[7] = 0x20;
    reply[8] = m_disc.isCD() ? 0 : 0xFF;
    for (std::size_t at = 16; at < 24; ++at)
        reply[at] = 0xFF;
    if (m_disc.isCD() && m_disc.status != FakeDisc::Status::Complete)
        putMSF(&reply, 21, m_disc.capacity);
    return reply;
}

/// 0xFF, or one behind the last track, is the one to come.
Bytes Drive::trackInformation(int track) const
{
    Bytes reply(36);
    put(&reply, 0, 34, 2);
    const int last = m_disc.tracks.empty() ? 0 : m_disc.tracks.back().number;
    const bool isToCome = track == 0xFF || track == last + 1;
    const auto known = std::find_if(m_disc.tracks.begin(), m_disc.tracks.end(),
                                    [track](const FakeTrack &one) { return one.number == track; });
    if (isToCome && m_disc.status != FakeDisc::Status::Complete && !m_disc.isOverwritable()) {
        const int next = m_disc.nextBlock();
        reply[2] = std::uint8_t(last + 1);
        reply[3] = std::uint8_t(m_disc.sessions() + 1);
        reply[5] = std::uint8_t(0x04 | (m_disc.isDamaged ? 0x20 : 0));
        reply[6] = 0x4F;
        reply[7] = m_disc.isDamaged ? 0 : 1;
        put(&reply, 8, std::uint32_t(next), 4);
        put(&reply, 12, std::uint32_t(next), 4);
        put(&reply, 16, std::uint32_t(std::max(m_disc.capacity - next, 0)), 4);
        put(&reply, 24, std::uint32_t(std::max(m_disc.capacity - next, 0)), 4);
        return reply;
    }
    if (m_disc.isOverwritable() && (track <= 1 || isToCome)) {
        reply[2] = 1;
        reply[3] = 1;
        reply[5] = 0x04;
        reply[6] = 0x81;
        put(&reply, 16, std::uint32_t(m_disc.capacity), 4);
        put(&reply, 24, std::uint32_t(m_disc.capacity), 4);
        return reply;
    }
    if (known == m_disc.tracks.end())
        return {};
    reply[2] = std::uint8_t(known->number);
    reply[3] = std::uint8_t(known->session);
    reply[5] = known->isAudio ? 0 : 4;
    reply[6] = 1;
    put(&reply, 8, std::uint32_t(known->start), 4);
    put(&reply, 24, std::uint32_t(known->length), 4);
    return reply;
}

Bytes Drive::tableOfContents(int format) const
{
    enum { Tracks = 0, Sessions = 1, Full = 2, Pregroove = 4, Texts = 5 };
    const bool hasTracks = !m_disc.tracks.empty() && !m_disc.isTrackOpen && !m_disc.isSessionOpen;
    Bytes reply(4);
    if (format == Pregroove) {
        if (!m_disc.isCD())
            return {};
        reply.resize(28);
        reply[4] = 0xC0;
        reply[6] = 0x80 | (m_disc.profile == FakeProfile::CDRW ? 0x40 : 0);
        reply[8] = 97;
        reply[9] = 34;
        reply[10] = 23;
        putMSF(&reply, 12, m_disc.capacity);
    } else if (const Bytes packs = bytesOfHexadecimal(m_disc.cdText); format == Texts && !packs.empty()) {
        reply.insert(reply.end(), packs.begin(), packs.end());
    } else if (hasTracks && (format == Tracks || format == Sessions)) {
        reply[2] = 1;
        reply[3] = std::uint8_t(format == Sessions ? m_disc.sessions() : m_disc.tracks.back().number);
        const auto entry = [&reply](const FakeTrack &track, int number, int start) {
            const std::size_t at = reply.size();
            put(&reply, at + 1, track.isAudio ? 0x10 : 0x14, 1);
            put(&reply, at + 2, std::uint32_t(number), 1);
            put(&reply, at + 4, std::uint32_t(start), 4);
        };
        const FakeTrack &last = m_disc.tracks.back();
        const auto firstOfLast =
            std::find_if(m_disc.tracks.begin(), m_disc.tracks.end(),
                         [&last](const FakeTrack &track) { return track.session == last.session; });
        for (const FakeTrack &track : m_disc.tracks) {
            if (format == Tracks)
                entry(track, track.number, track.start);
        }
        if (format == Sessions)
            entry(*firstOfLast, firstOfLast->number, firstOfLast->start);
        else
            entry(last, 0xAA, last.start + last.length);
    } else if (hasTracks && format == Full) {
        if (!m_disc.isCD())
            return {};
        reply[2] = 1;
        reply[3] = std::uint8_t(m_disc.sessions());
        const auto entry = [&reply](const FakeTrack &track, int point, int block) {
            const std::size_t at = reply.size();
            put(&reply, at, std::uint32_t(track.session), 1);
            put(&reply, at + 1, track.isAudio ? 0x10 : 0x14, 1);
            put(&reply, at + 3, std::uint32_t(point), 1);
            put(&reply, at + 7, 0, 1);
            if (block >= 0)
                putMSF(&reply, at + 8, block);
            else
                put(&reply, at + 8, std::uint32_t(-block), 1);
            reply.resize(at + 11);
        };
        for (int session = 1; session <= m_disc.sessions(); ++session) {
            const FakeTrack *first = nullptr;
            const FakeTrack *last = nullptr;
            for (const FakeTrack &track : m_disc.tracks) {
                if (track.session != session)
                    continue;
                first = first == nullptr ? &track : first;
                last = &track;
            }
            if (first == nullptr)
                continue;
            entry(*first, 0xA0, -first->number);
            entry(*last, 0xA1, -last->number);
            entry(*last, 0xA2, last->start + last->length);
            for (const FakeTrack &track : m_disc.tracks) {
                if (track.session == session)
                    entry(track, track.number, track.start);
            }
        }
    } else {
        return {};
    }
    put(&reply, 0, std::uint32_t(reply.size() - 2), 2);
    return reply;
}

Bytes Drive::modePage(int page) const
{
    constexpr int capabilities = 0x2A;
    constexpr int writeParameters = 0x05;
    Bytes reply(8);
    if (page == capabilities) {
        Bytes content(62);
        content[0] = 0x2A;
        content[1] = 60;
        content[2] = 0x3F;
        content[3] = 0x37;
        content[4] = 0x71;
        content[6] = 0x29;
        put(&content, 8, 8468, 2);
        put(&content, 12, 2048, 2);
        put(&content, 18, 8468, 2);
        put(&content, 20, 8468, 2);
        put(&content, 28, 8468, 2);
        put(&content, 30, 2, 2);
        put(&content, 34, 8468, 2);
        put(&content, 38, 1412, 2);
        reply.insert(reply.end(), content.begin(), content.end());
    } else if (page == writeParameters) {
        Bytes content(52);
        content[0] = 0x05;
        content[1] = 50;
        if (m_writeParameters.size() == content.size())
            content = m_writeParameters;
        reply.insert(reply.end(), content.begin(), content.end());
    } else {
        return {};
    }
    put(&reply, 0, std::uint32_t(reply.size() - 2), 2);
    return reply;
}

Bytes Drive::formatCapacities() const
{
    Bytes reply(12);
    reply[3] = 8;
    put(&reply, 4, std::uint32_t(m_disc.capacity), 4);
    put(&reply, 8, m_disc.isFormatted || !m_disc.isOverwritable() ? 2 : 1, 1);
    put(&reply, 9, dataSize, 3);
    const auto format = [&](int type) {
        reply[3] = std::uint8_t(reply[3] + 8);
        const std::size_t at = reply.size();
        put(&reply, at, std::uint32_t(m_disc.capacity), 4);
        put(&reply, at + 4, std::uint32_t(type) << 2, 1);
        put(&reply, at + 5, type == 0x10 || type == 0x15 ? 16 : dataSize, 3);
    };
    if (m_disc.profile == FakeProfile::DVDMinusRW || m_disc.profile == FakeProfile::DVDMinusRWOverwrite) {
        format(0x10);
        format(0x15);
    } else if (m_disc.profile == FakeProfile::DVDPlusRW) {
        format(0x26);
    } else if (m_disc.profile == FakeProfile::BDRE) {
        format(0x30);
        format(0x31);
    }
    return reply;
}

Bytes Drive::performance(int type) const
{
    Bytes reply(8);
    if (type == 3) {
        for (const std::uint32_t speed : {11'080u, 5'540u}) {
            const std::size_t at = reply.size();
            put(&reply, at + 4, std::uint32_t(std::max(m_disc.capacity - 1, 0)), 4);
            put(&reply, at + 8, speed, 4);
            put(&reply, at + 12, speed, 4);
        }
    }
    put(&reply, 0, std::uint32_t(reply.size() - 4), 4);
    return reply;
}

Bytes Drive::readCapacity() const
{
    Bytes reply;
    const int end = m_disc.isOverwritable() ? m_disc.capacity : endOfTracks();
    put(&reply, 0, std::uint32_t(std::max(end - 1, 0)), 4);
    put(&reply, 4, dataSize, 4);
    return reply;
}

// What a program's calls come to.

std::mutex guard; ///< guards the next two
Drive *drive = nullptr; ///< while it is open
int driveDescriptor = -1;

template <typename Function>
Function realFunction(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool isFake(const char *path)
{
    return path != nullptr && std::strcmp(path, devicePath) == 0 && ::getenv("TESSARON_FAKE_DRIVE") != nullptr;
}

int openDrive()
{
    const std::lock_guard lock(guard);
    if (drive != nullptr && drive->isGone()) {
        errno = ENXIO;
        return -1;
    }
    if (drive != nullptr) {
        errno = EBUSY;
        return -1;
    }
    const char *const setting = ::getenv("TESSARON_FAKE_DRIVE");
    const std::string folder = setting != nullptr ? setting : "";
    if (::access((folder + "/busy").c_str(), F_OK) == 0) {
        errno = EBUSY;
        return -1;
    }
    if (::access((folder + "/locked").c_str(), F_OK) == 0) {
        errno = EACCES;
        return -1;
    }
    driveDescriptor = realFunction<int (*)(const char *, int, ...)>("open")("/dev/null", O_RDWR | O_CLOEXEC);
    drive = new Drive(folder);
    return driveDescriptor;
}

int sendCommand(sg_io_hdr *header)
{
    if (drive->isGone()) {
        errno = ENODEV;
        return -1;
    }
    const bool isToDrive = header->dxfer_direction == SG_DXFER_TO_DEV;
    const std::optional<Sense> sense =
        drive->run(header->cmdp, static_cast<std::uint8_t *>(header->dxferp), header->dxfer_len, isToDrive);
    if (!sense) {
        errno = ENODEV;
        return -1;
    }
    header->host_status = 0;
    header->driver_status = 0;
    header->status = 0;
    header->sb_len_wr = 0;
    header->info = 0;
    header->resid = 0;
    if (sense->key == 0)
        return 0;
    header->status = 2; // CHECK CONDITION
    header->driver_status = 8; // sense is there
    header->info = SG_INFO_CHECK;
    if (header->sbp != nullptr && header->mx_sb_len >= 14) {
        std::memset(header->sbp, 0, header->mx_sb_len);
        header->sbp[0] = 0x70;
        header->sbp[2] = std::uint8_t(sense->key);
        header->sbp[7] = 10;
        header->sbp[12] = std::uint8_t(sense->code);
        header->sbp[13] = std::uint8_t(sense->qualifier);
        header->sb_len_wr = 18;
    }
    return 0;
}

int control(unsigned long request, void *argument)
{
    switch (request) {
    case SG_IO:
        return sendCommand(static_cast<sg_io_hdr *>(argument));
    case SCSI_IOCTL_GET_IDLUN:
        std::memset(argument, 0, 8);
        return 0;
    case SCSI_IOCTL_GET_BUS_NUMBER:
        *static_cast<int *>(argument) = 0;
        return 0;
    case CDROM_DRIVE_STATUS:
        return CDS_DISC_OK;
    default:
        errno = ENOTTY;
        return -1;
    }
}

int describe(const char *path, struct stat *status)
{
    static_cast<void>(path);
    std::memset(status, 0, sizeof *status);
    status->st_mode = S_IFBLK | 0660;
    status->st_rdev = makedev(11, 0);
    status->st_nlink = 1;
    return 0;
}

} // namespace

} // namespace Tessaron::Testing

using namespace Tessaron::Testing;

// The names of the C library, which a preloaded object takes.
extern "C" {

int open(const char *path, int flags, ...)
{
    if (isFake(path))
        return openDrive();
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    return realFunction<int (*)(const char *, int, ...)>("open")(path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    if (isFake(path))
        return openDrive();
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    return realFunction<int (*)(const char *, int, ...)>("open64")(path, flags, mode);
}

int __open_2(const char *path, int flags)
{
    return isFake(path) ? openDrive() : realFunction<int (*)(const char *, int)>("__open_2")(path, flags);
}

int __open64_2(const char *path, int flags)
{
    return isFake(path) ? openDrive() : realFunction<int (*)(const char *, int)>("__open64_2")(path, flags);
}

int close(int descriptor)
{
    {
        const std::lock_guard lock(guard);
        if (drive != nullptr && descriptor == driveDescriptor) {
            drive->save();
            driveDescriptor = -1;
            if (!drive->isGone()) { // what is gone stays gone for this process
                delete drive;
                drive = nullptr;
            }
        }
    }
    return realFunction<int (*)(int)>("close")(descriptor);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    {
        const std::lock_guard lock(guard);
        if (drive != nullptr && descriptor == driveDescriptor && descriptor >= 0)
            return control(request, argument);
    }
    return realFunction<int (*)(int, unsigned long, void *)>("ioctl")(descriptor, request, argument);
}

int stat(const char *path, struct stat *status) noexcept
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(const char *, struct stat *)>("stat")(path, status);
}

int lstat(const char *path, struct stat *status) noexcept
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(const char *, struct stat *)>("lstat")(path, status);
}

int stat64(const char *path, struct stat64 *status) noexcept
{
    return isFake(path) ? describe(path, reinterpret_cast<struct stat *>(status))
                        : realFunction<int (*)(const char *, struct stat64 *)>("stat64")(path, status);
}

int lstat64(const char *path, struct stat64 *status) noexcept
{
    return isFake(path) ? describe(path, reinterpret_cast<struct stat *>(status))
                        : realFunction<int (*)(const char *, struct stat64 *)>("lstat64")(path, status);
}

int __xstat(int version, const char *path, struct stat *status)
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(int, const char *, struct stat *)>("__xstat")(version, path, status);
}

int __xstat64(int version, const char *path, struct stat64 *status)
{
    return isFake(path) ? describe(path, reinterpret_cast<struct stat *>(status))
                        : realFunction<int (*)(int, const char *, struct stat64 *)>("__xstat64")(version, path, status);
}

int __lxstat(int version, const char *path, struct stat *status)
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(int, const char *, struct stat *)>("__lxstat")(version, path, status);
}

char *realpath(const char *path, char *resolved) noexcept
{
    if (isFake(path))
        return resolved != nullptr ? static_cast<char *>(std::memcpy(resolved, path, std::strlen(path) + 1))
                                   : ::strdup(path);
    return realFunction<char *(*)(const char *, char *)>("realpath")(path, resolved);
}
}
