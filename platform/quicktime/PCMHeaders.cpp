#include "platform/quicktime/PCMHeaders.h"

#include "platform/foundation/ByteOrder.h"

#include <bit>

namespace Tessaron
{

namespace
{

constexpr std::uint16_t bitsPerChannel = 16;
constexpr std::uint16_t plainPCM = 1; ///< WAVE_FORMAT_PCM
constexpr std::uint32_t elsewhere = 0xFFFFFFFF; ///< a size that "ds64" tells
constexpr std::uint32_t sizeOfDs64 = 28;
constexpr std::uint32_t sizeOfFormat = 16;
constexpr std::uint32_t sizeOfCommon = 18;
constexpr std::uint32_t sizeOfSoundHead = 8;

/// Fields one behind the other, in the byte order of the format.
class Fields
{
public:
    explicit Fields(std::endian order)
        : m_order(order)
    {
    }
    template <typename Integer>
    void add(std::type_identity_t<Integer> value)
    {
        std::uint8_t field[sizeof(Integer)];
        if (m_order == std::endian::little)
            storeLittleEndian<Integer>(field, value);
        else
            storeBigEndian<Integer>(field, value);
        bytes.append(reinterpret_cast<const char *>(field), sizeof field);
    }
    void addChunk(const char *name, std::uint32_t size)
    {
        bytes.append(name, 4);
        add<std::uint32_t>(size);
    }

    QByteArray bytes;

private:
    const std::endian m_order;
};

void addDs64(Fields &header, const PCMForm &form, std::uint64_t riffSize, std::uint64_t bytes)
{
    header.addChunk("ds64", sizeOfDs64);
    header.add<std::uint64_t>(riffSize);
    header.add<std::uint64_t>(bytes);
    header.add<std::uint64_t>(bytes / form.bytesPerFrame());
    header.add<std::uint32_t>(0); // other chunks with great sizes
}

void addFormat(Fields &header, const PCMForm &form)
{
    header.addChunk("fmt ", sizeOfFormat);
    header.add<std::uint16_t>(plainPCM);
    header.add<std::uint16_t>(form.channels);
    header.add<std::uint32_t>(form.samplesPerSecond);
    header.add<std::uint32_t>(form.samplesPerSecond * form.bytesPerFrame());
    header.add<std::uint16_t>(std::uint16_t(form.bytesPerFrame()));
    header.add<std::uint16_t>(bitsPerChannel);
}

/// A whole number as an 80-bit float of IEEE 754, as SANE has it: sign and exponent, then 64 bits with the leading one.
void addExtended(Fields &header, std::uint32_t number)
{
    constexpr int bias = 16383;
    const int leadingZeros = std::countl_zero(std::uint64_t(number));
    header.add<std::uint16_t>(std::uint16_t(bias + 63 - leadingZeros));
    header.add<std::uint64_t>(std::uint64_t(number) << leadingZeros);
}

} // namespace

QByteArray waveHeader(const PCMForm &form, std::uint64_t bytes, bool hasRoom, std::uint64_t bytesBehind)
{
    const bool isGreat = bytes + bytesBehind > mostBytesInWave;
    const std::uint32_t room = hasRoom || isGreat ? 8 + sizeOfDs64 : 0;
    const std::uint64_t riffSize = 4 + room + 8 + sizeOfFormat + 8 + bytes + bytesBehind;
    Fields header(std::endian::little);
    header.addChunk(isGreat ? "RF64" : "RIFF", isGreat ? elsewhere : std::uint32_t(riffSize));
    header.bytes.append("WAVE");
    if (isGreat) {
        addDs64(header, form, riffSize, bytes);
    } else if (hasRoom) {
        header.addChunk("JUNK", sizeOfDs64);
        header.bytes.append(sizeOfDs64, '\0');
    }
    addFormat(header, form);
    header.addChunk("data", isGreat ? elsewhere : std::uint32_t(bytes));
    return header.bytes;
}

QByteArray waveTags(const QMap<QString, QString> &tags)
{
    struct Field {
        const char *name;
        const char *tag;
    };
    constexpr Field fields[] = {{"INAM", "title"}, {"IART", "artist"},  {"IPRD", "album"},   {"IPRT", "track"},
                                {"IGNR", "genre"}, {"ICMT", "comment"}, {"IMUS", "composer"}};
    Fields list(std::endian::little);
    list.bytes.append("INFO");
    for (const Field &field : fields) {
        const QByteArray text = tags.value(QString::fromLatin1(field.tag)).toUtf8();
        if (text.isEmpty())
            continue;
        list.addChunk(field.name, std::uint32_t(text.size() + 1)); // with a zero at its end
        list.bytes.append(text).append(text.size() % 2 == 0 ? 2 : 1, '\0');
    }
    Fields chunk(std::endian::little);
    chunk.addChunk("LIST", std::uint32_t(list.bytes.size()));
    return list.bytes.size() == 4 ? QByteArray() : chunk.bytes + list.bytes;
}

QByteArray aiffHeader(const PCMForm &form, std::uint64_t bytes)
{
    Fields header(std::endian::big);
    header.addChunk("FORM", std::uint32_t(4 + 8 + sizeOfCommon + 8 + sizeOfSoundHead + bytes));
    header.bytes.append("AIFF");
    header.addChunk("COMM", sizeOfCommon);
    header.add<std::uint16_t>(form.channels);
    header.add<std::uint32_t>(std::uint32_t(bytes / form.bytesPerFrame()));
    header.add<std::uint16_t>(bitsPerChannel);
    addExtended(header, form.samplesPerSecond);
    header.addChunk("SSND", std::uint32_t(sizeOfSoundHead + bytes));
    header.add<std::uint32_t>(0); // offset
    header.add<std::uint32_t>(0); // block size: not aligned
    return header.bytes;
}

} // namespace Tessaron
