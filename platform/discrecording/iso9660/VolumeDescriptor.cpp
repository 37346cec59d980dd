#include "platform/discrecording/iso9660/VolumeDescriptor.h"

#include "platform/discrecording/iso9660/DescriptorText.h"
#include "platform/discrecording/iso9660/IsoDateFields.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/ByteOrder.h"

#include <QVariant>

#include <algorithm>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint8_t typePrimary = 1;
constexpr std::uint8_t typeSupplementary = 2;
constexpr std::uint8_t typeTerminator = 255;

/// Where the bytes begin that are left to whoever makes the volume (8.4.32).
constexpr std::size_t applicationUseStart = 883;
/// What a primary volume says that holds nothing, since the files are in the Joliet tree alone: so that a check can
/// tell it from one that lost them.
constexpr std::string_view standInNote = "THE FILES ARE IN THE JOLIET TREE";

void storeBothEndian(std::uint8_t *to, std::uint32_t value)
{
    storeLittleEndian<std::uint32_t>(to, value);
    storeBigEndian<std::uint32_t>(to + 4, value);
}

void storeBothEndian16(std::uint8_t *to, std::uint16_t value)
{
    storeLittleEndian<std::uint16_t>(to, value);
    storeBigEndian<std::uint16_t>(to + 2, value);
}

/// Type, "CD001" and version, which every descriptor begins with (ECMA-119 8.1).
void storeHead(std::span<std::uint8_t> block, std::uint8_t type)
{
    constexpr std::string_view identifier = "CD001";
    block[0] = type;
    std::copy(identifier.begin(), identifier.end(), block.begin() + 1);
    block[6] = 1;
}

/// The texts of one descriptor in its character set, filled up with blanks.
class DescriptorTexts
{
public:
    enum class Characters : std::uint8_t {
        A, ///< a-characters
        D, ///< d-characters
    };

    DescriptorTexts(std::span<std::uint8_t> block, NameCoding coding)
        : m_block(block)
        , m_coding(coding)
    {
    }

    void store(std::size_t at, std::size_t size, std::string_view text, Characters characters)
    {
        if (m_coding == NameCoding::Joliet) {
            RecordedName name;
            name.assign(jolietCharacters(text, size / 2));
            storeRecorded(at, size, name.view());
        } else {
            storeRecorded(at, size, characters == Characters::A ? aCharacters(text, size) : dCharacters(text, size));
        }
    }

    /// The same for a text in the descriptor's character set.
    void storeRecorded(std::size_t at, std::size_t size, std::string_view text)
    {
        const auto end = std::copy(text.begin(), text.end(), m_block.begin() + static_cast<std::ptrdiff_t>(at));
        auto position = static_cast<std::size_t>(end - m_block.begin());
        if (m_coding == NameCoding::Joliet) {
            // An odd byte that remains stays zero.
            for (; position + 2 <= at + size; position += 2)
                m_block[position + 1] = ' ';
        } else {
            std::fill(end, m_block.begin() + static_cast<std::ptrdiff_t>(at + size), std::uint8_t{' '});
        }
    }

private:
    const std::span<std::uint8_t> m_block;
    const NameCoding m_coding;
};

void storeTexts(std::span<std::uint8_t> block, const DirectoryHierarchy &hierarchy, const VolumeTexts &texts)
{
    using Characters = DescriptorTexts::Characters;
    DescriptorTexts writer(block, hierarchy.traits().coding);
    writer.store(8, 32, texts.systemIdentifier, Characters::A);
    writer.storeRecorded(40, 32, hierarchy.names().volumeName().view());
    writer.store(190, 128, texts.volumeSet, Characters::D);
    writer.store(318, 128, texts.publisher, Characters::A);
    writer.store(446, 128, texts.dataPreparer, Characters::A);
    writer.store(574, 128, texts.application, Characters::A);
    // Copyright, abstract and bibliographic files: none.
    writer.store(702, 37, {}, Characters::D);
    writer.store(739, 37, {}, Characters::D);
    writer.store(776, 37, {}, Characters::D);
}

std::string textProperty(const DRFolder &root, const QString &key)
{
    return root.propertyForKey(key, DRISO9660).toString().toStdString();
}

} // namespace

VolumeTexts volumeTextsOf(const DRFolder &root)
{
    VolumeTexts texts;
    texts.systemIdentifier = textProperty(root, DRSystemIdentifier);
    texts.volumeSet = textProperty(root, DRVolumeSet);
    texts.publisher = textProperty(root, DRPublisher);
    texts.dataPreparer = textProperty(root, DRDataPreparer);
    texts.application = textProperty(root, DRApplicationIdentifier);
    if (texts.application.empty())
        texts.application = "TESSARON";
    return texts;
}

void storeVolumeDescriptor(std::span<std::uint8_t> block, const DirectoryHierarchy &hierarchy, const VolumeTexts &texts,
                           const IsoVolumeFacts &facts)
{
    const bool isJoliet = hierarchy.traits().coding == NameCoding::Joliet;
    storeHead(block, isJoliet ? typeSupplementary : typePrimary);
    storeTexts(block, hierarchy, texts);
    storeBothEndian(&block[80], facts.imageBlocks);
    if (isJoliet) {
        // UCS-2 level 3: the escape sequence %/E.
        constexpr std::string_view escape = "%/E";
        std::copy(escape.begin(), escape.end(), block.begin() + 88);
    }
    storeBothEndian16(&block[120], 1); // volumes in the set
    storeBothEndian16(&block[124], 1); // this one's number
    storeBothEndian16(&block[128], logicalBlockSize);
    storeBothEndian(&block[132], facts.pathTableBytes);
    storeLittleEndian<std::uint32_t>(&block[140], facts.littleEndianPathTable);
    storeBigEndian<std::uint32_t>(&block[148], facts.bigEndianPathTable);
    storeRootRecord(&block[156], hierarchy, facts.places);
    const FileTime time = hierarchy.tree().volumeTime;
    storeVolumeDate(&block[813], time); // made
    storeVolumeDate(&block[830], time); // modified
    storeNoVolumeDate(&block[847]); // expires
    storeNoVolumeDate(&block[864]); // effective
    block[881] = 1; // file structure version
    if (hierarchy.traits().filesystem == 0)
        std::copy(standInNote.begin(), standInNote.end(), block.begin() + applicationUseStart);
}

void storeVolumeDescriptorSetTerminator(std::span<std::uint8_t> block)
{
    storeHead(block, typeTerminator);
}

} // namespace Tessaron
