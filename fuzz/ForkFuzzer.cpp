#include "fuzz/FuzzTarget.h"

#include "platform/coreservices/AppleDouble.h"
#include "platform/coreservices/ResourceFork.h"

namespace
{

/// What was read as a fork can be written and reads the same, but for the order of types.
void readFork(QByteArrayView bytes)
{
    using namespace Tessaron;
    const auto resources = resourcesOfFork(bytes);
    if (!resources)
        return;
    const QByteArray written = forkWithResources(*resources);
    if (written.isEmpty())
        return;
    const auto again = resourcesOfFork(written);
    require(again && again->size() == resources->size(), "a fork that is written can be read");
    require(forkWithResources(*again) == written, "a fork that is read can be written as it was");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const QByteArrayView view(reinterpret_cast<const char *>(bytes), qsizetype(size));
    readFork(view);
    if (const auto contents = appleDoubleFromBytes(view)) {
        require(appleDoubleFromBytes(bytesOfAppleDouble(*contents)) == contents, "an AppleDouble file reads the same");
        readFork(contents->resourceFork);
    }
    return 0;
}
