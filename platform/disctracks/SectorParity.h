#pragma once

#include <cstdint>

namespace Tessaron
{

/// Computes the 276 bytes of parity of a whole sector (ECMA-130 annex A: the Reed-Solomon product code over bytes 12 to
/// 2075) and puts them to its end. For mode 2 form 1 the header must be zero meanwhile.
void putSectorParity(std::uint8_t *sector);

} // namespace Tessaron
