#include "fuzz/FuzzTarget.h"
#include "fuzz/VANTPromises.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{

void readAndCheck(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const VANTReadResult result =
        VANTReader::imageFromBytes(QByteArrayView(reinterpret_cast<const char *>(bytes), qsizetype(size)));
    if (const char *const broken = brokenVANTPromise(result, size)) {
        std::fprintf(stderr, "broken promise: %s\n", broken);
        std::abort();
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    readAndCheck(bytes, size);
    // A fuzzing engine hardly ever finds a checksum that fits.
    std::vector<std::uint8_t> corrected(bytes, bytes + size);
    Tessaron::correctVANTChecksum(corrected.data(), size);
    readAndCheck(corrected.data(), size);
    return 0;
}
