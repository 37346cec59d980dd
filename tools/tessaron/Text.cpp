#include "tools/tessaron/Text.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/OSStatus.h"
#include <TessaronClasses/SizeFormatting.h>

#include <cerrno>
#include <cstring>

namespace Tessaron::Tool
{

namespace
{

bool reversesDirection(char16_t unit)
{
    return unit == 0x200e || unit == 0x200f || (unit >= 0x202a && unit <= 0x202e) || (unit >= 0x2066 && unit <= 0x2069);
}

bool isControl(char16_t unit)
{
    return unit < 0x20 || (unit >= 0x7f && unit <= 0x9f) || unit == 0x2028 || unit == 0x2029;
}

void appendHexadecimal(QByteArray &result, const char *before, unsigned int value, const char *after)
{
    result += before;
    result += QByteArray::number(value, 16).rightJustified(2, '0');
    result += after;
}

/// False when the unit needs no escape.
bool appendEscape(QByteArray &result, char16_t unit)
{
    if (unit == u'\n')
        result += "\\n";
    else if (unit == u'\t')
        result += "\\t";
    else if (unit >= 0xdc80 && unit <= 0xdcff) // a byte that is not UTF-8, see FileSystemRepresentation.h
        appendHexadecimal(result, "\\x", unit - 0xdc00u, "");
    else if (unit < 0x80 && isControl(unit))
        appendHexadecimal(result, "\\x", unit, "");
    else if (isControl(unit) || reversesDirection(unit))
        appendHexadecimal(result, "\\u{", unit, "}");
    else
        return false;
    return true;
}

} // namespace

QByteArray printable(QStringView text)
{
    QByteArray result;
    result.reserve(text.size());
    for (qsizetype position = 0; position < text.size(); ++position) {
        const char16_t unit = text[position].unicode();
        const bool isPair = QChar::isHighSurrogate(unit) && position + 1 < text.size()
            && QChar::isLowSurrogate(text[position + 1].unicode());
        if (isPair) {
            result += text.mid(position++, 2).toUtf8();
            continue;
        }
        if (!appendEscape(result, unit))
            result += text.mid(position, 1).toUtf8();
    }
    return result;
}

QByteArray printable(const QByteArray &bytes)
{
    return printable(stringWithFileSystemRepresentation(bytes));
}

QString quoted(const QByteArray &path)
{
    return QStringLiteral("“%1”").arg(stringWithFileSystemRepresentation(path));
}

QString counted(std::uint64_t count, const char *singular, const char *plural)
{
    return QString::number(count) + u' ' + QString::fromUtf8(count == 1 ? singular : plural);
}

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

QByteArray lastComponent(const QByteArray &path)
{
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    if (end == 1 && path[0] == '/')
        return QByteArrayLiteral("/");
    const qsizetype slash = path.lastIndexOf('/', end - 1);
    return path.mid(slash + 1, end - slash - 1);
}

QString systemText(int errnoValue)
{
    return QString::fromLocal8Bit(std::strerror(errnoValue));
}

QString reasonOfStatus(qint64 status)
{
    if (status == afpAccessDenied || status == permErr)
        return systemText(EACCES);
    if (status == fnfErr)
        return systemText(ENOENT);
    if (status == ioErr)
        return systemText(EIO);
    if (status == tmfoErr)
        return systemText(EMFILE);
    return QStringLiteral("the system gives error %1").arg(status);
}

} // namespace Tessaron::Tool
