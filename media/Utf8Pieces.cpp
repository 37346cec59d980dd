#include "media/Utf8Pieces.h"

#include <QStringDecoder>

#include <algorithm>
#include <utility>

namespace Tessaron
{

namespace
{

QString textOf(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(bytes);
}

/// Bytes of the character that begins with this one (RFC 3629 3); 1 for a byte that begins none.
qsizetype lengthOfCharacter(char first)
{
    const auto byte = static_cast<unsigned char>(first);
    if (byte >= 0xF0 && byte <= 0xF4)
        return 4;
    if (byte >= 0xE0 && byte <= 0xEF)
        return 3;
    return byte >= 0xC2 && byte <= 0xDF ? 2 : 1;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Bytes at the end that may be the begin of a character which goes on in the next piece.
qsizetype lengthOfRest(const QByteArray &bytes)
{
    const qsizetype most = std::min<qsizetype>(bytes.size(), 3);
    for (qsizetype length = 1; length <= most; ++length) {
        const char byte = bytes[bytes.size() - length];
        if (!isContinuation(byte))
            return lengthOfCharacter(byte) > length ? length : 0;
    }
    return 0;
}

} // namespace

QString Utf8Pieces::add(const QByteArray &piece)
{
    const QByteArray bytes = m_rest + piece;
    const qsizetype rest = lengthOfRest(bytes);
    m_rest = bytes.last(rest);
    return textOf(bytes.chopped(rest));
}

QString Utf8Pieces::finish()
{
    const QByteArray rest = std::exchange(m_rest, {});
    return rest.isEmpty() ? QString() : QString(QChar::ReplacementCharacter);
}

} // namespace Tessaron
