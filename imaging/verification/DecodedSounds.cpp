#include "imaging/verification/DecodedSounds.h"

#include <algorithm>
#include <vector>

namespace Tessaron
{

NSError DecodedSounds::goTo(const QByteArray &path, std::uint64_t sample, const std::stop_token &stop)
{
    if (!m_sound || path != m_path || sample < m_position) {
        m_sound.reset(); // so that its program is free for the next file
        CDSoundOptions options;
        options.helpers = &m_helpers;
        Result<std::unique_ptr<CDSound>> opened = CDSound::openFile(path, stop, options);
        if (!opened)
            return opened.error();
        m_sound = *std::move(opened);
        m_path = path;
        m_position = 0;
        m_toldDamage = 0;
    }
    constexpr std::size_t samplesAtOnce = 65536;
    std::vector<char> passedOver(m_position < sample ? samplesAtOnce * CDSound::bytesPerSample : 0);
    while (m_position < sample) {
        const Result<std::size_t> got =
            m_sound->read(passedOver.data(), std::min<std::uint64_t>(sample - m_position, samplesAtOnce));
        if (!got)
            return got.error();
        if (*got == 0)
            break;
        m_position += *got;
    }
    m_toldDamage = m_sound->damage().count;
    return {};
}

void DecodedSounds::takeDamage(AudioDamageReport *damage)
{
    const AudioDamageReport &report = m_sound->damage();
    for (std::uint64_t place = m_toldDamage; place < report.count; ++place) {
        const bool isDescribed = place < report.places.size();
        damage->add(isDescribed ? report.places[place].seconds : double(m_position) / CDSound::samplesPerSecond,
                    isDescribed ? report.places[place].what : QStringLiteral("something could not be decoded"));
    }
    m_toldDamage = report.count;
}

Result<std::size_t> DecodedSounds::read(const QByteArray &path, std::uint64_t first, char *buffer, std::size_t count,
                                        AudioDamageReport *damage, const std::stop_token &stop)
{
    if (NSError error = goTo(path, first, stop))
        return error;
    if (m_position < first)
        return std::size_t(0);
    Result<std::size_t> got = m_sound->read(buffer, count);
    if (!got)
        return got;
    m_position += *got;
    takeDamage(damage);
    return got;
}

} // namespace Tessaron
