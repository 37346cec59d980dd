#include "tests/fakedrive/FakeDisc.h"

#include <fstream>
#include <sstream>

namespace Tessaron::Testing
{

namespace
{

constexpr int gapBehindFirstSession = 11'400; // lead-out, lead-in and pregap of CDs
constexpr int gapBehindSession = 6'900;
constexpr int pregap = 150;
constexpr int ecmaBlock = 16; // of DVDs and BDs: a session begins at a whole one

} // namespace

bool FakeDisc::isOverwritable() const
{
    return profile == FakeProfile::DVDPlusRW || profile == FakeProfile::BDRE
        || profile == FakeProfile::DVDMinusRWOverwrite;
}

int FakeDisc::nextBlock() const
{
    if (tracks.empty() || isOverwritable())
        return 0;
    const FakeTrack &last = tracks.back();
    const int end = last.start + last.length;
    if (isTrackOpen)
        return end;
    if (isSessionOpen)
        return end + pregap;
    if (isCD())
        return end + (last.session == 1 ? gapBehindFirstSession : gapBehindSession);
    return (end + ecmaBlock - 1) / ecmaBlock * ecmaBlock;
}

FakeDisc FakeDisc::load(const std::string &folder)
{
    FakeDisc disc;
    std::ifstream file(folder + "/disc");
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string key;
        int number = 0;
        words >> key;
        if (key == "profile" && words >> std::hex >> number) {
            disc.profile = FakeProfile(number);
        } else if (key == "status" && words >> number) {
            disc.status = Status(number);
        } else if (key == "capacity") {
            words >> disc.capacity;
        } else if (key == "formatted") {
            disc.isFormatted = true;
        } else if (key == "open") {
            disc.isTrackOpen = true;
        } else if (key == "session") {
            disc.isSessionOpen = true;
        } else if (key == "damaged") {
            disc.isDamaged = true;
        } else if (key == "cdtext") {
            words >> disc.cdText;
        } else if (key == "cuesheet") {
            words >> disc.cueSheet;
        } else if (key == "log") {
            words >> disc.log;
        } else if (key == "bad" && words >> number) {
            disc.badSectors.push_back(number);
        } else if (key == "displacement") {
            words >> disc.displacement;
        } else if (key == "format") {
            words >> disc.format;
        } else if (key == "speed") {
            words >> disc.writeSpeed;
        } else if (key == "out") {
            disc.isTrayOut = true;
        } else if (key == "tray") {
            std::getline(words >> std::ws, disc.tray);
        } else if (key == "track") {
            FakeTrack track;
            words >> track.session >> track.number >> track.start >> track.length >> track.isAudio;
            disc.tracks.push_back(track);
        } else if (key == "fault") {
            FakeFault fault;
            words >> std::hex >> fault.opcode >> std::dec >> fault.after >> fault.times >> std::hex >> fault.key
                >> fault.code >> fault.qualifier;
            disc.faults.push_back(fault);
        }
    }
    return disc;
}

void FakeDisc::save(const std::string &folder) const
{
    std::ofstream file(folder + "/disc");
    file << "profile " << std::hex << int(profile) << std::dec << "\nstatus " << int(status) << "\ncapacity "
         << capacity << '\n';
    if (isFormatted)
        file << "formatted\n";
    if (isTrackOpen)
        file << "open\n";
    if (isSessionOpen)
        file << "session\n";
    if (isDamaged)
        file << "damaged\n";
    if (!cdText.empty())
        file << "cdtext " << cdText << '\n';
    if (!cueSheet.empty())
        file << "cuesheet " << cueSheet << '\n';
    if (!log.empty())
        file << "log " << log << '\n';
    if (displacement != 0)
        file << "displacement " << displacement << '\n';
    if (!format.empty())
        file << "format " << format << '\n';
    if (writeSpeed != 0)
        file << "speed " << writeSpeed << '\n';
    if (isTrayOut)
        file << "out\n";
    if (!tray.empty())
        file << "tray " << tray << '\n';
    for (const int sector : badSectors)
        file << "bad " << sector << '\n';
    for (const FakeTrack &track : tracks)
        file << "track " << track.session << ' ' << track.number << ' ' << track.start << ' ' << track.length << ' '
             << track.isAudio << '\n';
    for (const FakeFault &fault : faults)
        file << "fault " << std::hex << fault.opcode << std::dec << ' ' << fault.after << ' ' << fault.times << ' '
             << std::hex << fault.key << ' ' << fault.code << ' ' << fault.qualifier << std::dec << '\n';
}

} // namespace Tessaron::Testing
