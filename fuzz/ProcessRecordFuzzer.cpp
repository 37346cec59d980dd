#include "fuzz/FuzzTarget.h"

#include "media/ProcessRecord.h"
#include "media/Utf8Pieces.h"

#include <cstddef>
#include <cstdint>

using namespace Tessaron;

/// The record of a process, and text that comes in two pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (const auto record = processRecord(bytes))
        require(bytes.contains(record->p_comm), "the name is one of the file");
    Utf8Pieces whole, cut;
    const qsizetype half = bytes.size() / 2;
    const QString text = whole.add(bytes) + whole.finish();
    QString joined = cut.add(bytes.first(half));
    joined += cut.add(bytes.sliced(half));
    joined += cut.finish();
    require(!bytes.isValidUtf8() || joined == text, "text does not depend on where it is cut");
    return 0;
}
