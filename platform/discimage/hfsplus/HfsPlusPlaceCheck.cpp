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

/// The first block of a disc with an Apple partition map (Inside Macintosh, "The Partition Map").
namespace DriverField
{
constexpr std::uint16_t signature = 0x4552; // "ER"
constexpr std::size_t blockSize = 2;
constexpr std::size_t blockCount = 4;
} // namespace DriverField

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
            checkWrapper(bytes, offset, length);
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

    /// Of a wrapper in a part of the image: its numbers against one another, the volume inside of it, and its copy.
    void checkWrapper(const Sector &bytes, std::uint64_t offset, std::uint64_t length) const
    {
        const std::uint32_t count = number(bytes, Wrapper::unitCount);
        const std::uint32_t first = number(bytes, Wrapper::embeddedStart);
        const std::uint32_t embedded = number(bytes, Wrapper::embeddedCount);
        const std::uint64_t unit = loadBigEndian<std::uint32_t>(&bytes[Wrapper::unitSize]);
        const std::uint64_t place = offset + hfsPlusHeaderDistance;
        if (first + embedded > count)
            wrong(place + Wrapper::unitCount, QStringLiteral("the volume inside of it leaves it"));
        if (embedded + number(bytes, Wrapper::freeUnits) > count)
            wrong(place + Wrapper::freeUnits, QStringLiteral("more of it is free than the volume inside leaves over"));
        if (number(bytes, Wrapper::firstSector) * std::uint64_t{512} + count * unit + hfsPlusHeaderDistance > length)
            wrong(place + Wrapper::unitCount, QStringLiteral("it is longer than there is room for"));
        if (number(bytes, Wrapper::filesInRoot) > loadBigEndian<std::uint32_t>(&bytes[Wrapper::fileCount])
            || number(bytes, Wrapper::foldersInRoot) > loadBigEndian<std::uint32_t>(&bytes[Wrapper::folderCount]))
            wrong(place + Wrapper::filesInRoot, QStringLiteral("its root has more in it than all of it"));
        checkEmbedded(place, embedded * unit, unit);
        checkWrapperCopy(bytes, offset, length);
    }

    /// The volume fills what the wrapper has for it but for less than a unit.
    void checkEmbedded(std::uint64_t place, std::uint64_t room, std::uint64_t unit) const
    {
        if (!m_found || m_found->containerLength != room)
            return; // another volume was found, and that is told
        const std::uint64_t length = std::uint64_t(m_found->place.blockCount) * m_found->place.blockSize;
        if (length <= room && room - length >= std::max<std::uint64_t>(unit, m_found->place.blockSize))
            wrong(place + Wrapper::embeddedCount,
                  QStringLiteral("the volume has %1 bytes, but the wrapper has %2 for it").arg(length).arg(room));
    }

    /// The copy is written again only when files of the wrapper itself grow. Where its date and number of writes are
    /// those of the original, it is the same altogether.
    void checkWrapperCopy(const Sector &bytes, std::uint64_t offset, std::uint64_t length) const
    {
        length = offset == 0 ? lengthByDriverDescriptor(length) : length;
        const std::uint64_t place = offset + length - hfsPlusHeaderDistance;
        Sector copy;
        if (length < 2 * hfsPlusHeaderDistance || !read(place, &copy))
            return;
        if (number(copy, 0) != HfsPlusWrapperSignature)
            return wrong(place, QStringLiteral("its copy at the end is missing or damaged"));
        const auto isSame = [&](std::size_t from, std::size_t size) {
            return std::equal(bytes.begin() + std::ptrdiff_t(from), bytes.begin() + std::ptrdiff_t(from + size),
                              copy.begin() + std::ptrdiff_t(from));
        };
        const bool isOfSameWriting =
            isSame(Wrapper::modificationDate, Wrapper::dateSize) || isSame(Wrapper::writeCount, Wrapper::dateSize);
        if (isOfSameWriting ? isSame(0, Wrapper::size)
                            : isSame(Wrapper::unitCount, Wrapper::clumpSize - Wrapper::unitCount)
                    && isSame(Wrapper::firstSector, sizeof(std::uint16_t))
                    && isSame(Wrapper::embeddedSignature, Wrapper::embeddedEnd - Wrapper::embeddedSignature))
            return;
        wrong(place, QStringLiteral("it and its copy at the end do not say the same"));
    }

    /// A device may be longer than the image that was written onto it; the driver descriptor has the image's length.
    [[nodiscard]] std::uint64_t lengthByDriverDescriptor(std::uint64_t length) const
    {
        Sector driver;
        if (!read(0, &driver) || number(driver, 0) != DriverField::signature)
            return length;
        const std::uint64_t stated = std::uint64_t(loadBigEndian<std::uint32_t>(&driver[DriverField::blockCount]))
            * number(driver, DriverField::blockSize);
        return stated > hfsPlusHeaderDistance ? std::min(length, stated) : length;
    }

    static std::uint32_t number(const Sector &bytes, std::size_t at)
    {
        return loadBigEndian<std::uint16_t>(&bytes[at]);
    }
    void wrong(std::uint64_t offset, const QString &message) const
    {
        m_problems.unnoticed(offset, QStringLiteral("wrapper of the volume"), message);
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
