#include "platform/discimage/udf/UdfVolumeReader.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/discimage/udf/UdfEntryReader.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <vector>

namespace Tessaron
{

namespace
{

namespace Field = UdfIdentifierField;

/// Characteristics of a file identifier (4/14.4.3).
enum Characteristic : std::uint8_t { Deleted = 4, Parent = 8 };

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

/// Offset in the image of a position in a folder's contents.
std::uint64_t placeOf(const VolumeObject &folder, std::uint64_t position)
{
    for (const VolumeExtent &extent : folder.extents) {
        if (position < extent.length)
            return extent.offset + position;
        position -= extent.length;
    }
    return folder.recordOffset;
}

/// A window on a folder's contents, which moves forward.
class Window
{
public:
    Window(const VolumeReader &reader, const VolumeObject &folder)
        : m_reader(reader)
        , m_folder(folder)
    {
    }

    /// The bytes from `position` on: at least `wanted`, or all that are left.
    [[nodiscard]] NSError bytesAt(std::uint64_t position, std::size_t wanted, std::span<const std::uint8_t> *bytes)
    {
        if (position < m_start || position + wanted > m_start + m_bytes.size()) {
            constexpr std::uint64_t step = 65536;
            const std::uint64_t left = m_folder.listingLength - position;
            m_bytes.resize(std::size_t(std::min(left, std::max<std::uint64_t>(step, wanted))));
            m_start = position;
            std::size_t got = 0;
            if (NSError error = m_reader.read(m_folder, position, m_bytes.data(), m_bytes.size(), &got)) {
                m_bytes.clear();
                return error;
            }
            m_bytes.resize(got);
        }
        *bytes = std::span<const std::uint8_t>(m_bytes).subspan(std::size_t(position - m_start));
        return {};
    }

private:
    const VolumeReader &m_reader;
    const VolumeObject &m_folder;
    std::uint64_t m_start = 0;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace

VolumeReaderResult UdfVolumeReader::open(const std::shared_ptr<const DiscImageSource> &source)
{
    std::unique_ptr<UdfVolumeReader> reader(new UdfVolumeReader(source));
    bool isThere = false;
    NSError error = readUdfVolumeStructure(*source, &isThere, &reader->m_structure);
    if (!isThere || error)
        return {nullptr, error};
    reader->m_facts = reader->m_structure.facts;
    error = reader->findRoot();
    if (error)
        return {nullptr, error};
    return {std::move(reader), {}};
}

NSError UdfVolumeReader::findRoot()
{
    const std::optional<std::uint64_t> offset = m_structure.offsetOf(m_structure.fileSet);
    if (!offset)
        return damaged(0, QStringLiteral("The set of files lies outside of its partition"));
    std::uint8_t fileSet[512];
    if (NSError error = source().read(*offset, fileSet, sizeof fileSet))
        return error;
    if (NSError error = checkUdfDescriptor(fileSet, UdfDescriptorKind::FileSet, m_structure.fileSet.block, *offset))
        return error;
    const UdfBlockAddress root = {loadLittleEndian<std::uint32_t>(fileSet + UdfFileSetField::rootBlock),
                                  loadLittleEndian<std::uint16_t>(fileSet + UdfFileSetField::rootPartition)};
    m_root.recordOffset = *offset;
    if (NSError error = readUdfEntry(source(), m_structure, root, &m_root))
        return error;
    if (m_root.kind != VolumeObjectKind::Folder)
        return damaged(m_root.recordOffset, QStringLiteral("The root is not a folder"));
    return {};
}

NSError UdfVolumeReader::listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const
{
    NSError firstError;
    Window window(*this, folder);
    for (std::uint64_t position = 0; position < folder.listingLength;) {
        const std::uint64_t place = placeOf(folder, position);
        std::span<const std::uint8_t> bytes;
        if (NSError error = window.bytesAt(position, Field::greatestSize, &bytes))
            return error;
        if (bytes.size() < Field::headSize)
            return damaged(place, QStringLiteral("A folder ends within an entry"));
        const std::size_t nameSize = bytes[Field::nameLength];
        const std::size_t useSize = loadLittleEndian<std::uint16_t>(&bytes[Field::useLength]);
        const std::size_t size = (Field::headSize + useSize + nameSize + 3) / 4 * 4;
        if (size > bytes.size())
            return damaged(place, QStringLiteral("A folder ends within an entry"));
        if (NSError error =
                checkUdfDescriptor(bytes.first(size), UdfDescriptorKind::FileIdentifier, std::nullopt, place))
            return error;
        position += size;
        if ((bytes[Field::characteristics] & (Deleted | Parent)) != 0)
            continue;
        const std::optional<QString> name = udfText(bytes.subspan(Field::headSize + useSize, nameSize));
        if (!name || name->isEmpty())
            return damaged(place, QStringLiteral("A name makes no sense"));
        VolumeObject object;
        object.recordOffset = place;
        const UdfBlockAddress address = {loadLittleEndian<std::uint32_t>(&bytes[Field::block]),
                                         loadLittleEndian<std::uint16_t>(&bytes[Field::partition])};
        if (const NSError error = readUdfEntry(source(), m_structure, address, &object)) {
            // One bad entry does not hide the others of its folder.
            firstError = firstError ? firstError : error;
            continue;
        }
        object.name = fileSystemRepresentation(*name);
        if (!visitor(object))
            return {};
    }
    return firstError;
}

} // namespace Tessaron
