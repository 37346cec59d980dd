#include "platform/foundation/PrintableText.h"

#include "platform/foundation/FileSystemRepresentation.h"

namespace Tessaron
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

} // namespace Tessaron
