#include "tools/tessaron/Text.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/SizeFormatting.h>

namespace Tessaron::Tool
{

QString sizeText(std::uint64_t bytes)
{
    const unsigned long long value = bytes;
    return sizeFormatForUnsignedLongLong(&value);
}

QByteArray percentEncoded(const QByteArray &bytes)
{
    return bytes.toPercentEncoding("/");
}

bool isUtf8(const QByteArray &bytes)
{
    return !holdsUndecodableBytes(stringWithFileSystemRepresentation(bytes));
}

} // namespace Tessaron::Tool
