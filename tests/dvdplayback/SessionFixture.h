#pragma once

#include "tests/dvdplayback/DiscFixture.h"

#include <cstdint>
#include <utility>

namespace Tessaron::Testing
{

/// Asks the session of this process; what it refuses fails the test.
class SessionFixture : public DiscTest
{
protected:
    /// A DVDState.
    [[nodiscard]] static std::uint32_t state();
    [[nodiscard]] static bool isOnMenu();
    /// The title and chapter that play.
    [[nodiscard]] static std::pair<int, int> chapter();
    /// How long that title has played, in milliseconds.
    [[nodiscard]] static std::uint32_t elapsed();
};

} // namespace Tessaron::Testing
