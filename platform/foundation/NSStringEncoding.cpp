#include "platform/foundation/NSStringEncoding.h"

#include <limits>
#include <memory>
#include <unicode/ucnv.h>

namespace Tessaron
{

namespace
{

struct Closer {
    void operator()(UConverter *converter) const { ucnv_close(converter); }
};

const char *converterName(NSStringEncoding encoding)
{
    switch (encoding) {
    case NSStringEncoding::ASCII:
        return "US-ASCII";
    case NSStringEncoding::UTF8:
        return "UTF-8";
    case NSStringEncoding::ISOLatin1:
        return "ISO-8859-1";
    case NSStringEncoding::Windows1252:
        return "windows-1252";
    case NSStringEncoding::MacOSRoman:
        return "macintosh";
    case NSStringEncoding::ShiftJIS:
        return "Shift_JIS";
    case NSStringEncoding::UTF16BigEndian:
        return "UTF-16BE";
    case NSStringEncoding::UTF16LittleEndian:
        return "UTF-16LE";
    }
    return "US-ASCII";
}

} // namespace

QString stringWithBytes(QByteArrayView bytes, NSStringEncoding encoding)
{
    constexpr qsizetype longest = std::numeric_limits<std::int32_t>::max() / 2;
    if (bytes.size() > longest)
        return {};
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, Closer> converter(ucnv_open(converterName(encoding), &status));
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status))
        return {};
    // Each byte gives one unit of UTF-16 at most, in all of these encodings.
    QString text(bytes.size() + 1, Qt::Uninitialized);
    const std::int32_t length =
        ucnv_toUChars(converter.get(), reinterpret_cast<char16_t *>(text.data()), std::int32_t(text.size()),
                      bytes.constData(), std::int32_t(bytes.size()), &status);
    if (U_FAILURE(status))
        return {};
    text.resize(length);
    return text;
}

} // namespace Tessaron
