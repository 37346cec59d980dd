#include "platform/quicktime/decoding/FlacChecksum.h"

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

// The decoder's own check goes through a table and takes a fifteenth of the time that an album takes. Here 16 bytes
// are taken at a time: a remainder by the polynomial stays the same when what lies 128 bits above is replaced by its
// product with the remainder of x^128.

namespace Tessaron
{

namespace
{

#if defined(__x86_64__)

constexpr std::size_t blockSize = 16; // bytes

/// The remainder of x^exponent by x^16 + x^15 + x^2 + 1.
consteval long long remainderOfPower(int exponent)
{
    constexpr unsigned int polynomial = 0x8005;
    unsigned int remainder = 1;
    for (; exponent > 0; --exponent)
        remainder = (remainder << 1 & 0xFFFF) ^ ((remainder & 0x8000) != 0 ? polynomial : 0);
    return remainder;
}

/// A block as one number, whose highest bits come first.
[[gnu::target("pclmul,ssse3")]] __m128i reversed(const std::uint8_t *bytes)
{
    __m128i block;
    std::memcpy(&block, bytes, blockSize);
    return _mm_shuffle_epi8(block, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

/// 16 bytes that have the same remainder as the blocks, of which there is one at least.
[[gnu::target("pclmul,ssse3")]] std::array<std::uint8_t, blockSize> folded(std::span<const std::uint8_t> blocks)
{
    const __m128i factors = _mm_set_epi64x(remainderOfPower(192), remainderOfPower(128));
    __m128i sum = reversed(blocks.data());
    for (std::size_t at = blockSize; at < blocks.size(); at += blockSize) {
        const __m128i upper = _mm_clmulepi64_si128(sum, factors, 0x11);
        const __m128i lower = _mm_clmulepi64_si128(sum, factors, 0x00);
        sum = _mm_xor_si128(_mm_xor_si128(upper, lower), reversed(blocks.data() + at));
    }
    std::array<std::uint8_t, blockSize> result;
    std::memcpy(result.data(), &sum, blockSize);
    std::reverse(result.begin(), result.end());
    return result;
}

bool canFold()
{
    static const bool can = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
    return can;
}

#endif

} // namespace

bool isKnownAsWholeFlacFrame(std::span<const std::uint8_t> bytes)
{
#if defined(__x86_64__)
    const std::size_t whole = bytes.size() / blockSize * blockSize;
    if (whole == 0 || !canFold())
        return false;
    const std::array<std::uint8_t, blockSize> begin = folded(bytes.first(whole));
    const AVCRC *const table = av_crc_get_table(AV_CRC_16_ANSI);
    const std::uint32_t ofBegin = av_crc(table, 0, begin.data(), begin.size());
    return av_crc(table, ofBegin, bytes.data() + whole, bytes.size() - whole) == 0;
#else
    static_cast<void>(bytes);
    return false;
#endif
}

} // namespace Tessaron
