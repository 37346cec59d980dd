#include "platform/discimage/udf/UdfRecognition.h"

#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t recognitionStart = 32768;
constexpr std::uint64_t maximumRecognition = 64; // descriptors

UdfRecognition readWithStep(const DiscImageSource &source, std::uint64_t step)
{
    UdfRecognition found;
    found.step = step;
    for (std::uint64_t number = 0; number < maximumRecognition; ++number) {
        char head[6];
        const std::uint64_t offset = recognitionStart + number * step;
        if (!source.contains(offset, sizeof head) || source.read(offset, head, sizeof head))
            break;
        const std::string_view identifier(head + 1, 5);
        if (identifier == "NSR02" || identifier == "NSR03")
            found.identifier = offset;
        else if (identifier == "BEA01")
            found.begin = offset;
        else if (identifier == "TEA01") {
            found.end = offset;
            // What follows a whole sequence may be one that another program left there.
            if (found.begin && found.identifier)
                break;
        } else if (identifier != "CD001" && identifier != "BOOT2" && identifier != "CDW02")
            break;
    }
    return found;
}

} // namespace

UdfRecognition readUdfRecognition(const DiscImageSource &source)
{
    const UdfRecognition usual = readWithStep(source, 2048);
    for (std::uint64_t step = 4096; step <= 32768 && !usual.isUdf(); step *= 2) {
        if (const UdfRecognition wide = readWithStep(source, step); wide.isUdf())
            return wide;
    }
    return usual;
}

} // namespace Tessaron
