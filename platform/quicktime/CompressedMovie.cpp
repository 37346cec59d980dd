#include "platform/quicktime/CompressedMovie.h"

#include <zlib.h>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t longestMovie = 64U << 20;
constexpr std::int64_t sizeOfLength = 4; ///< in front of the compressed bytes

/// Inflates all of it; empty unless it is exactly as long as announced.
QByteArray inflated(AtomSource &source, std::int64_t begin, std::int64_t end, std::uint32_t length)
{
    z_stream stream = {};
    if (::inflateInit(&stream) != Z_OK)
        return {};
    QByteArray bytes;
    bytes.resize(qsizetype(length));
    stream.next_out = reinterpret_cast<Bytef *>(bytes.data());
    stream.avail_out = length;
    int code = Z_OK;
    while (code == Z_OK && begin < end) {
        const QByteArrayView piece = source.bytesAt(begin, end - begin);
        if (piece.isEmpty())
            break;
        begin += piece.size();
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(piece.data()));
        stream.avail_in = uInt(piece.size());
        code = ::inflate(&stream, Z_NO_FLUSH);
    }
    const bool isWhole = stream.avail_out == 0 && (code == Z_OK || code == Z_STREAM_END || code == Z_BUF_ERROR);
    ::inflateEnd(&stream);
    return isWhole ? bytes : QByteArray();
}

} // namespace

std::optional<QByteArray> inflatedMovie(AtomSource &source, const Atom &compressed)
{
    const std::optional<Atom> method = atomOnWay(source, compressed, {fourCharacterCode("dcom")});
    const std::optional<Atom> data = atomOnWay(source, compressed, {fourCharacterCode("cmvd")});
    if (!method || !data || source.numberAt(method->content) != fourCharacterCode("zlib"))
        return {};
    const std::uint32_t length = source.numberAt(data->content);
    // Deflate makes a byte of no more than 1032; who announces more lies.
    const std::int64_t most = (data->end - data->content) * 1032;
    if (length == 0 || length > longestMovie || std::int64_t(length) > most)
        return {};
    const QByteArray bytes = inflated(source, data->content + sizeOfLength, data->end, length);
    return bytes.isEmpty() ? std::nullopt : std::optional(bytes);
}

} // namespace Tessaron
