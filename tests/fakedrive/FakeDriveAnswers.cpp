#include "tests/fakedrive/FakeDriveAnswers.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Tessaron::Testing
{

namespace
{

constexpr int dataSize = 2048;

} // namespace

Bytes FakeDriveAnswers::inquiry() const
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

Bytes FakeDriveAnswers::configuration() const
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

Bytes FakeDriveAnswers::discInformation() const
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
Bytes FakeDriveAnswers::trackInformation(int track) const
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

Bytes FakeDriveAnswers::tableOfContents(int format) const
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

Bytes FakeDriveAnswers::modePage(int page) const
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

Bytes FakeDriveAnswers::formatCapacities() const
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
        format(0x00);
        format(0x10);
        format(0x15);
    } else if (m_disc.profile == FakeProfile::DVDPlusRW) {
        format(0x26);
    } else if (m_disc.profile == FakeProfile::BDRE) {
        format(0x00);
        format(0x30);
        format(0x31);
    }
    return reply;
}

Bytes FakeDriveAnswers::performance(int type) const
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

Bytes FakeDriveAnswers::readCapacity() const
{
    Bytes reply;
    const int end = m_disc.isOverwritable() ? m_disc.capacity : m_disc.endOfTracks();
    put(&reply, 0, std::uint32_t(std::max(end - 1, 0)), 4);
    put(&reply, 4, dataSize, 4);
    return reply;
}

} // namespace Tessaron::Testing
