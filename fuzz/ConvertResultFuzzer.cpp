#include "fuzz/FuzzTarget.h"

#include "media/jobs/ResultCheck.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace Tessaron;

/// What encoders have written, in each format.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::uint64_t bytesRead = 0;
    const ReadResult read = [&](std::uint64_t offset, void *buffer, std::size_t length) {
        const std::size_t got = offset < size ? std::min<std::size_t>(length, size - std::size_t(offset)) : 0;
        std::memcpy(buffer, data + std::min<std::uint64_t>(offset, size), got);
        bytesRead += got;
        return got;
    };
    for (const std::int32_t format :
         {KRAudioConverter::waveFormat, KRAudioConverter::aiffFormat, KRAudioConverter::mp3FormatConstant128}) {
        bytesRead = 0;
        const QString flaw = flawOfResult(size, read, format);
        require(size > 0 || !flaw.isEmpty(), "an empty file is not a result");
        require(bytesRead <= 2 * std::uint64_t(size) + 65536, "the file is read once");
    }
    return 0;
}
