#include "fuzz/DiscImagePromises.h"
#include "fuzz/FuzzTarget.h"

#include <cstdio>
#include <cstdlib>

namespace
{

void walkAndCheck(const QByteArray &image)
{
    if (const char *const broken = Tessaron::brokenDiscImagePromise(image)) {
        std::fprintf(stderr, "broken promise: %s\n", broken);
        std::abort();
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    QByteArray image = Tessaron::expandedImage(bytes, size);
    walkAndCheck(image);
    Tessaron::correctUdfTags(&image);
    walkAndCheck(image);
    return 0;
}
