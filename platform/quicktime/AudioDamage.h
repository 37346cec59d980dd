#pragma once

#include <QString>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// A place in an audio file where what was decoded is not what was encoded.
struct AudioDamage {
    double seconds = 0; ///< from the start of the sound
    QString what; ///< a clause for people, as in "a packet could not be decoded; silence stands for it"
};

/// All such places, in their order. A broken file can have millions of them: the first are described, the rest counted.
struct AudioDamageReport {
    static constexpr std::size_t mostDescribed = 100;

    std::vector<AudioDamage> places;
    std::uint64_t count = 0;

    void add(double seconds, const QString &what)
    {
        ++count;
        if (places.size() < mostDescribed)
            places.push_back({seconds, what});
    }
    [[nodiscard]] bool isEmpty() const { return count == 0; }
};

} // namespace Tessaron
