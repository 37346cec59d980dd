#include <TessaronClasses/DataAdditions.h>

namespace Tessaron
{

NSRange rangeOfData(const QByteArray &data, const QByteArray &pattern)
{
    if (pattern.isEmpty() || pattern.size() > data.size())
        return {};
    // The last place where the pattern could begin is never looked at.
    const qsizetype found = data.first(data.size() - 1).indexOf(pattern);
    return found < 0 ? NSRange() : NSRange{std::uint64_t(found), std::uint64_t(pattern.size())};
}

} // namespace Tessaron
