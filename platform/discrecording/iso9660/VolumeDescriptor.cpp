#include "platform/discrecording/iso9660/VolumeDescriptor.h"

#include "platform/discrecording/iso9660/BothEndianFields.h"
#include "platform/discrecording/iso9660/DescriptorText.h"
#include "platform/discrecording/iso9660/IsoDateFields.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/disctracks/vant/Crc32.h"
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

// Fields of primary and supplementary descriptors (ECMA-119 8.4 and 8.5), counted from 0.
namespace Field
{
constexpr std::size_t type = 0;
constexpr std::size_t standardIdentifier = 1;
constexpr std::size_t version = 6;
constexpr std::size_t systemIdentifier = 8;
constexpr std::size_t volumeIdentifier = 40;
constexpr std::size_t shortTextSize = 32; // of these two
constexpr std::size_t blockCount = 80;
constexpr std::size_t escapeSequences = 88;
constexpr std::size_t setSize = 120;
constexpr std::size_t numberInSet = 124;
constexpr std::size_t blockSize = 128;
constexpr std::size_t pathTableSize = 132;
constexpr std::size_t littleEndianPathTable = 140;
constexpr std::size_t bigEndianPathTable = 148;
constexpr std::size_t rootRecord = 156;
constexpr std::size_t setIdentifier = 190;
constexpr std::size_t publisher = 318;
constexpr std::size_t dataPreparer = 446;
constexpr std::size_t application = 574;
constexpr std::size_t longTextSize = 128; // of these four
constexpr std::size_t copyrightFile = 702;
constexpr std::size_t abstractFile = 739;
constexpr std::size_t bibliographicFile = 776;
constexpr std::size_t fileNameSize = 37; // of these three
constexpr std::size_t creationTime = 813;
constexpr std::size_t modificationTime = 830;
constexpr std::size_t expirationTime = 847;
constexpr std::size_t effectiveTime = 864;
constexpr std::size_t structureVersion = 881;
constexpr std::size_t applicationUse = 883;
/// In the use of applications (8.4.32), behind the note below and before where CD-ROM XA has its own mark.
constexpr std::size_t contentsRecord = applicationUse + 64;
/// Of all bytes in front of the record: names and dates of the volume stand nowhere else.
constexpr std::size_t checksum = contentsRecord + contentsRecordSize;
} // namespace Field

/// The note in a primary volume that is empty because the files are in the Joliet tree alone: a check can tell it from
/// a volume that lost its files.
constexpr std::string_view standInNote = "THE FILES ARE IN THE JOLIET TREE";

/// Type, "CD001" and version, which every descriptor begins with (ECMA-119 8.1).
void storeHead(std::span<std::uint8_t> block, std::uint8_t type)
{
    constexpr std::string_view identifier = "CD001";
    block[Field::type] = type;
    std::copy(identifier.begin(), identifier.end(), block.begin() + Field::standardIdentifier);
    block[Field::version] = 1;
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
    writer.store(Field::systemIdentifier, Field::shortTextSize, texts.systemIdentifier, Characters::A);
    writer.storeRecorded(Field::volumeIdentifier, Field::shortTextSize, hierarchy.names().volumeName().view());
    writer.store(Field::setIdentifier, Field::longTextSize, texts.volumeSet, Characters::D);
    writer.store(Field::publisher, Field::longTextSize, texts.publisher, Characters::A);
    writer.store(Field::dataPreparer, Field::longTextSize, texts.dataPreparer, Characters::A);
    writer.store(Field::application, Field::longTextSize, texts.application, Characters::A);
    // No file on the disc is named for these.
    writer.store(Field::copyrightFile, Field::fileNameSize, {}, Characters::D);
    writer.store(Field::abstractFile, Field::fileNameSize, {}, Characters::D);
    writer.store(Field::bibliographicFile, Field::fileNameSize, {}, Characters::D);
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
    storeBothEndian(&block[Field::blockCount], facts.imageBlocks);
    if (isJoliet) {
        // UCS-2 level 3: the escape sequence %/E.
        constexpr std::string_view escape = "%/E";
        std::copy(escape.begin(), escape.end(), block.begin() + Field::escapeSequences);
    }
    storeBothEndian16(&block[Field::setSize], 1);
    storeBothEndian16(&block[Field::numberInSet], 1);
    storeBothEndian16(&block[Field::blockSize], logicalBlockSize);
    storeBothEndian(&block[Field::pathTableSize], facts.pathTableBytes);
    storeLittleEndian<std::uint32_t>(&block[Field::littleEndianPathTable], facts.littleEndianPathTable);
    storeBigEndian<std::uint32_t>(&block[Field::bigEndianPathTable], facts.bigEndianPathTable);
    storeRootRecord(&block[Field::rootRecord], hierarchy, facts.places);
    const FileTime time = hierarchy.tree().volumeTime;
    storeVolumeDate(&block[Field::creationTime], time);
    storeVolumeDate(&block[Field::modificationTime], time);
    storeNoVolumeDate(&block[Field::expirationTime]);
    storeNoVolumeDate(&block[Field::effectiveTime]);
    block[Field::structureVersion] = 1;
    if (hierarchy.traits().filesystem == 0)
        std::copy(standInNote.begin(), standInNote.end(), block.begin() + Field::applicationUse);
    const auto record = contentsRecord(facts.image);
    std::copy(record.begin(), record.end(), block.begin() + Field::contentsRecord);
    storeLittleEndian<std::uint32_t>(&block[Field::checksum], crc32(0, block.data(), Field::contentsRecord));
}

void storeVolumeDescriptorSetTerminator(std::span<std::uint8_t> block)
{
    storeHead(block, typeTerminator);
}

} // namespace Tessaron
