#include "platform/discimage/hfsplus/HfsPlusPlaceCheck.h"

#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

namespace Wrapper = HfsPlusWrapperField;
namespace Header = HfsPlusHeaderField;

using Sector = std::array<std::uint8_t, HfsPlusHeader::size>;

enum class Content { Nothing, Volume, Wrapper, PlainHfs, DamagedVolume, DamagedWrapper };

/// Whatever its signature: the fields of a volume header have values that hardly anything else has.
bool resemblesVolume(const Sector &bytes)
{
    const auto version = loadBigEndian<std::uint16_t>(&bytes[Header::version]);
    const auto blockSize = loadBigEndian<std::uint32_t>(&bytes[Header::blockSize]);
    const auto blockCount = loadBigEndian<std::uint32_t>(&bytes[Header::blockCount]);
    const bool isPowerOfTwo = blockSize >= 512 && (blockSize & (blockSize - 1)) == 0;
    return (version == 4 || version == 5) && isPowerOfTwo && blockCount > 0;
}

/// The same of a wrapper, by the signature of the volume inside of it and one byte of its own.
bool resemblesWrapper(const Sector &bytes)
{
    return loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedSignature]) == HfsPlusVolumeSignature
        && loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedCount]) != 0;
}

Content contentOf(const Sector &bytes)
{
    const auto signature = loadBigEndian<std::uint16_t>(bytes.data());
    if (signature == HfsPlusVolumeSignature || signature == HfsPlusCaseSensitiveSignature)
        return Content::Volume;
    if (signature != HfsPlusWrapperSignature) {
        if (resemblesVolume(bytes))
            return Content::DamagedVolume;
        return resemblesWrapper(bytes) ? Content::DamagedWrapper : Content::Nothing;
    }
    const auto embedded = loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedSignature]);
    if (embedded == HfsPlusVolumeSignature)
        return Content::Wrapper;
    const bool isAlmostSigned =
        (embedded >> 8) == (HfsPlusVolumeSignature >> 8) || (embedded & 0xFF) == (HfsPlusVolumeSignature & 0xFF);
    return isAlmostSigned ? Content::DamagedWrapper : Content::PlainHfs;
}

class PlaceCheck
{
public:
    PlaceCheck(const DiscImageSource &source, const VolumeProblems &problems)
        : m_source(source)
        , m_problems(problems)
    {
        NSError error;
        m_found = findHfsPlusHeader(source, &error);
    }

    void run()
    {
        check(0, m_source.length(), false);
        for (const DiscImagePartition &partition : m_source.partitions())
            check(partition.offset, partition.length, isHfsPlusPartition(partition));
    }

private:
    [[nodiscard]] bool read(std::uint64_t offset, Sector *bytes) const
    {
        return m_source.contains(offset, bytes->size()) && !m_source.read(offset, bytes->data(), bytes->size());
    }

    /// `isPromised`: a partition map says that a volume begins there.
    void check(std::uint64_t offset, std::uint64_t length, bool isPromised) const
    {
        const QString structure = QStringLiteral("volume header");
        Sector bytes;
        const std::uint64_t place = offset + hfsPlusHeaderDistance;
        if (!read(place, &bytes)) {
            if (isPromised)
                m_problems.remains(place, structure,
                                   QStringLiteral("a partition map leads beyond the end of the image"));
            return;
        }
        switch (contentOf(bytes)) {
        case Content::Volume:
            checkSame(offset, structure);
            if (!isPromised && offset != 0)
                m_problems.damaged(place, QStringLiteral("partition map"),
                                   QStringLiteral("it does not know that a partition holds an HFS+ volume"));
            return;
        case Content::Wrapper:
            checkWrapper(bytes, place);
            return;
        case Content::DamagedVolume:
        case Content::DamagedWrapper:
            return m_problems.remains(place, structure, QStringLiteral("its signature is damaged"));
        case Content::PlainHfs:
            return; // of a system before HFS+, which is not read here
        case Content::Nothing:
            break;
        }
        if (isPromised)
            return m_problems.remains(place, structure,
                                      QStringLiteral("a partition map leads to an HFS+ volume that is not there"));
        checkCopy(offset, length);
    }

    /// The copy of a header is there, but no volume to which it belongs.
    void checkCopy(std::uint64_t offset, std::uint64_t length) const
    {
        Sector bytes;
        if (length < 2 * hfsPlusHeaderDistance || offset + length < offset
            || !read(offset + length - hfsPlusHeaderDistance, &bytes))
            return;
        const std::uint64_t place = offset + length - hfsPlusHeaderDistance;
        const Content content = contentOf(bytes);
        const bool isWhole = content == Content::Volume && resemblesVolume(bytes);
        if (!isWhole && content != Content::Wrapper)
            return;
        if (m_found && m_found->offset() < place)
            return;
        m_problems.remains(place, QStringLiteral("copy of the volume header"),
                           QStringLiteral("there is no volume to which it belongs"));
    }

    void checkSame(std::uint64_t offset, const QString &structure) const
    {
        if (m_found && m_found->place.offset != offset && offset == 0)
            m_problems.damaged(offset + hfsPlusHeaderDistance, structure,
                               QStringLiteral("there are two volumes at once"));
    }

    void checkWrapper(const Sector &bytes, std::uint64_t place) const
    {
        const std::uint32_t count = loadBigEndian<std::uint16_t>(&bytes[Wrapper::unitCount]);
        const std::uint32_t first = loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedStart]);
        const std::uint32_t embedded = loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedCount]);
        if (first + embedded > count)
            m_problems.unnoticed(place + Wrapper::unitCount, QStringLiteral("wrapper of the volume"),
                                 QStringLiteral("the volume inside of it leaves it"));
    }

    const DiscImageSource &m_source;
    const VolumeProblems &m_problems;
    std::optional<HfsPlusHeader> m_found;
};

} // namespace

void checkHfsPlusPlaces(const DiscImageSource &source, const VolumeProblems &problems)
{
    PlaceCheck(source, problems).run();
}

} // namespace Tessaron
