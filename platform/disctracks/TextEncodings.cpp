#include "platform/disctracks/TextEncodings.h"

#include <QStringDecoder>

#include <array>
#include <cstdint>
#include <iconv.h>
#include <memory>

namespace Tessaron
{

namespace
{

/// What Windows-1252 has from 0x80 to 0x9F in place of control characters; 0 for the five that mean nothing.
constexpr std::array<char16_t, 32> windowsCharacters = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                        0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

QString textOfWindows1252(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar &character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x80 && code < 0xA0 && windowsCharacters[code - 0x80] != 0)
            character = QChar(windowsCharacters[code - 0x80]);
    }
    return text;
}

class Converter
{
public:
    Converter(const char *to, const char *from)
        : m_handle(::iconv_open(to, from))
    {
    }
    ~Converter()
    {
        if (isOpen())
            ::iconv_close(m_handle);
    }
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    [[nodiscard]] std::optional<QByteArray> convert(QByteArrayView bytes)
    {
        if (!isOpen())
            return std::nullopt;
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr); // forget a text that was broken off
        QByteArray result(bytes.size() * 4 + 16, Qt::Uninitialized); // no encoding here grows by more
        auto *in = const_cast<char *>(bytes.data()); // the interface lacks a const
        auto inLeft = std::size_t(bytes.size());
        char *out = result.data();
        auto outLeft = std::size_t(result.size());
        if (::iconv(m_handle, &in, &inLeft, &out, &outLeft) != 0 || inLeft != 0)
            return std::nullopt; // wrong, or not without loss
        result.truncate(result.size() - qsizetype(outLeft));
        return result;
    }

private:
    [[nodiscard]] bool isOpen() const { return m_handle != iconv_t(-1); } // NOLINT(performance-no-int-to-ptr)

    const iconv_t m_handle;
};

/// Whether text that is valid in Shift-JIS is meant so. In Western text a high byte is followed by an ASCII letter
/// nearly always, and 0x81 to 0x83, with which kana begin, hardly occur.
bool looksJapanese(QByteArrayView bytes)
{
    int pairs = 0;
    int likely = 0;
    for (qsizetype index = 0; index < bytes.size(); ++index) {
        const auto lead = std::uint8_t(bytes[index]);
        const bool isLead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
        if (!isLead || index + 1 == bytes.size())
            continue;
        const auto trail = std::uint8_t(bytes[++index]);
        ++pairs;
        likely += lead <= 0x83 || trail >= 0x80;
    }
    return pairs > 0 && likely * 2 >= pairs;
}

std::optional<QString> textOfUtf(QByteArrayView bytes, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// UTF-16 without a byte-order mark: in a text whose commands and line ends are ASCII, one byte of most pairs is zero,
/// and always the same one. No other encoding has zeros at all.
std::optional<QStringConverter::Encoding> unmarkedUtf16(QByteArrayView bytes)
{
    constexpr qsizetype looked = 1024;
    const QByteArrayView begin = bytes.first(std::min(bytes.size(), looked) / 2 * 2);
    qsizetype zeros[2] = {};
    for (qsizetype index = 0; index < begin.size(); ++index)
        zeros[index & 1] += begin[index] == 0 ? 1 : 0;
    const qsizetype pairs = begin.size() / 2;
    if (zeros[1] * 2 > pairs && zeros[0] == 0)
        return QStringConverter::Utf16LE;
    if (zeros[0] * 2 > pairs && zeros[1] == 0)
        return QStringConverter::Utf16BE;
    return std::nullopt;
}

} // namespace

DecodedText decodedText(QByteArrayView bytes)
{
    if (const auto encoding = unmarkedUtf16(bytes)) {
        if (const std::optional<QString> text = textOfUtf(bytes, *encoding))
            return {*text, TextFileEncoding::Utf16};
    }
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        const bool isLittle = bytes.startsWith("\xFF\xFE");
        QStringDecoder decoder(isLittle ? QStringConverter::Utf16LE : QStringConverter::Utf16BE);
        QString text = decoder(bytes.sliced(2));
        return {text, TextFileEncoding::Utf16};
    }
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    if (const std::optional<QString> text = textOfUtf(bytes, QStringConverter::Utf8))
        return {*text, TextFileEncoding::Utf8};
    if (looksJapanese(bytes)) {
        if (const std::optional<QString> text = textOfShiftJis(bytes))
            return {*text, TextFileEncoding::ShiftJis};
    }
    return {textOfWindows1252(bytes), TextFileEncoding::Windows1252};
}

std::optional<QString> textOfShiftJis(QByteArrayView bytes)
{
    thread_local Converter converter("UTF-8", "CP932"); // opening one takes longer than most texts
    const std::optional<QByteArray> utf8 = converter.convert(bytes);
    return utf8 ? std::optional(QString::fromUtf8(*utf8)) : std::nullopt;
}

std::optional<QByteArray> shiftJisOfText(const QString &text)
{
    thread_local Converter converter("CP932", "UTF-8");
    return converter.convert(text.toUtf8());
}

} // namespace Tessaron
