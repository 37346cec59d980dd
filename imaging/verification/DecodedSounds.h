#pragma once

#include "platform/foundation/Result.h"
#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/SoundHelpers.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>

namespace Tessaron
{

/// Sound files that must be decoded, read at any place. The file that was read last stays open: a file that is read in
/// order is decoded once. One program decodes them all. One thread at a time.
class DecodedSounds
{
public:
    DecodedSounds() = default;
    DecodedSounds(const DecodedSounds &) = delete;
    DecodedSounds &operator=(const DecodedSounds &) = delete;

    /// Fills the buffer with `count` samples (4 bytes each) of the file from the sample `first` on; how many there
    /// were, fewer only at the end. What is broken among them is added to `*damage`. Errors as those of CDSound.
    [[nodiscard]] Result<std::size_t> read(const QByteArray &path, std::uint64_t first, char *buffer, std::size_t count,
                                           AudioDamageReport *damage, const std::stop_token &stop);

private:
    [[nodiscard]] NSError goTo(const QByteArray &path, std::uint64_t sample, const std::stop_token &stop);
    void takeDamage(AudioDamageReport *damage);

    SoundHelpers m_helpers; ///< outlives the sound
    QByteArray m_path; ///< of the open file
    std::unique_ptr<CDSound> m_sound;
    std::uint64_t m_position = 0; ///< samples
    std::uint64_t m_toldDamage = 0; ///< places of the sound's report that belong to what was read before
};

} // namespace Tessaron
