#include "platform/foundation/FileSystemRepresentation.h"

#include <QStringConverter>

namespace Tessaron
{

namespace
{

constexpr char16_t firstByteSurrogate = 0xDC80;
constexpr char16_t lastByteSurrogate = 0xDCFF;

/// Length of the valid UTF-8 sequence at `at` (Unicode 15, table 3-7), or 0 when there is none.
int sequenceLength(const unsigned char *at, const unsigned char *end)
{
    const auto continues = [&](int offset, unsigned char low = 0x80, unsigned char high = 0xBF) {
        return at + offset < end && at[offset] >= low && at[offset] <= high;
    };
    const unsigned char lead = *at;
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return continues(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool second = lead == 0xE0 ? continues(1, 0xA0) : lead == 0xED ? continues(1, 0x80, 0x9F) : continues(1);
        return second && continues(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool second = lead == 0xF0 ? continues(1, 0x90) : lead == 0xF4 ? continues(1, 0x80, 0x8F) : continues(1);
        return second && continues(2) && continues(3) ? 4 : 0;
    }
    return 0;
}

bool isLoneSurrogate(QStringView text, qsizetype index)
{
    const QChar unit = text[index];
    if (unit.isHighSurrogate())
        return index + 1 >= text.size() || !text[index + 1].isLowSurrogate();
    return unit.isLowSurrogate() && (index == 0 || !text[index - 1].isHighSurrogate());
}

} // namespace

QString stringWithFileSystemRepresentation(QByteArrayView bytes)
{
    const auto *at = reinterpret_cast<const unsigned char *>(bytes.data());
    const auto *const end = at + bytes.size();
    QString result;
    result.reserve(bytes.size());
    // A byte order mark is a character of a name like any other.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringConverter::Flag::ConvertInitialBom | QStringConverter::Flag::Stateless);
    while (at < end) {
        const unsigned char *const validStart = at;
        int length = 0;
        while (at < end && (length = sequenceLength(at, end)) > 0)
            at += length;
        if (at > validStart) {
            const QString decoded = decoder(QByteArrayView(validStart, at - validStart));
            result += decoded;
        }
        for (; at < end && sequenceLength(at, end) == 0; ++at)
            result += QChar(char16_t(firstByteSurrogate + (*at - 0x80)));
    }
    return result;
}

QByteArray fileSystemRepresentation(QStringView text)
{
    if (!holdsUndecodableBytes(text))
        return text.toUtf8();
    QByteArray result;
    result.reserve(text.size() * 3);
    qsizetype validStart = 0;
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (!isLoneSurrogate(text, index))
            continue;
        result += text.mid(validStart, index - validStart).toUtf8();
        const char16_t unit = text[index].unicode();
        if (unit >= firstByteSurrogate && unit <= lastByteSurrogate)
            result += char(0x80 + (unit - firstByteSurrogate));
        else
            result += "\xEF\xBF\xBD";
        validStart = index + 1;
    }
    result += text.mid(validStart).toUtf8();
    return result;
}

bool holdsUndecodableBytes(QStringView text)
{
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (text[index].isSurrogate() && isLoneSurrogate(text, index))
            return true;
    }
    return false;
}

QString displayableText(QStringView text)
{
    QString result = text.toString();
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (text[index].isSurrogate() && isLoneSurrogate(text, index))
            result[index] = QChar(QChar::ReplacementCharacter);
    }
    return result;
}

} // namespace Tessaron
