#include "fuzz/FuzzTarget.h"

#include "imaging/jobs/AudioSources.h"

#include <algorithm>

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const QByteArray text(reinterpret_cast<const char *>(bytes), qsizetype(size));
    const Result<QList<QByteArray>> entries = entriesOfList("folder/list.m3u", text);
    if (!entries) {
        require(!entries.error().localizedDescription().isEmpty(), "a list that is refused is told why");
        return 0;
    }
    const qsizetype lines =
        1 + std::count_if(text.begin(), text.end(), [](char one) { return one == '\n' || one == '\r'; });
    require(entries->size() <= lines, "there are not more files than lines");
    for (const QByteArray &entry : *entries) {
        require(entry.startsWith('/') || entry.startsWith("folder/"), "a relative file lies beside the list");
        require(!entry.contains('\0') && !entry.contains('\n') && !entry.contains("://"), "an entry is a path");
    }
    return 0;
}
