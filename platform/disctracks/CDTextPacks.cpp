#include "platform/disctracks/CDTextPacks.h"

#include "platform/disctracks/Subchannel.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/disctracks/TextEncodings.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace Tessaron
{

namespace
{

namespace PackField
{
constexpr std::size_t type = 0;
constexpr std::size_t track = 1; // of the text that the pack begins with
constexpr std::uint8_t trackMask = 0x7F;
constexpr std::size_t sequence = 2;
constexpr std::size_t block = 3; // double byte, number of the block, characters of the text in packs before
constexpr std::size_t payload = 4;
constexpr std::size_t checksum = 16;
} // namespace PackField
constexpr std::size_t payloadSize = PackField::checksum - PackField::payload;
constexpr std::uint8_t doubleByteFlag = 0x80;
constexpr unsigned int blockShift = 4;
constexpr std::uint8_t blockMask = 7;
constexpr std::size_t mostInherited = 15;

/// Where the fields of a block's sizes lie in the 36 bytes of its three packs.
namespace SizesField
{
constexpr std::size_t encoding = 0;
constexpr std::size_t firstTrack = 1;
constexpr std::size_t lastTrack = 2;
constexpr std::size_t copyright = 3;
constexpr std::size_t packCounts = 4; // of the types from 80 on
constexpr std::size_t lastSequences = 20; // of the eight blocks
constexpr std::size_t languages = 28;
constexpr std::size_t size = 36;
} // namespace SizesField
constexpr std::uint8_t firstType = 0x80;
constexpr std::uint8_t tocType = 0x88;
constexpr std::uint8_t secondTocType = 0x89;
constexpr std::uint8_t sizesType = 0x8F;
constexpr std::size_t sizesPacks = SizesField::size / payloadSize;

constexpr std::size_t mostBlocks = 8;
constexpr std::size_t mostPacks = 256;
constexpr std::uint32_t mostTracks = 99;
constexpr std::size_t genreCodeSize = 2;
constexpr char tab = '\t';

constexpr std::array kinds = {CDTextKind::Title,
                              CDTextKind::Performer,
                              CDTextKind::Songwriter,
                              CDTextKind::Composer,
                              CDTextKind::Arranger,
                              CDTextKind::Message,
                              CDTextKind::DiscIdentification,
                              CDTextKind::Genre,
                              CDTextKind::ClosedInformation,
                              CDTextKind::Codes};

NSError textError(const QString &reason, const QString &remedy = {})
{
    QVariantMap info{{NSLocalizedFailureReasonErrorKey, reason}};
    if (!remedy.isEmpty())
        info.insert(NSLocalizedRecoverySuggestionErrorKey, remedy);
    return NSError(DiscTracksErrorDomain, int(DiscTracksErrorCode::CDText), info);
}

bool isOfDiscOnly(CDTextKind kind)
{
    return kind == CDTextKind::DiscIdentification || kind == CDTextKind::Genre;
}

/// Codes and genres are ASCII in any block.
CDTextEncoding encodingOfKind(CDTextKind kind, CDTextEncoding encoding)
{
    const bool isAscii = kind == CDTextKind::Codes || isOfDiscOnly(kind);
    return isAscii ? CDTextEncoding::Ascii : encoding;
}

std::size_t characterSize(CDTextEncoding encoding)
{
    return encoding == CDTextEncoding::ShiftJis ? 2 : 1;
}

/// ASCII in the wide forms that Shift-JIS has beside the narrow ones.
QString inWideForms(QString text)
{
    constexpr char16_t wideDistance = 0xFEE0;
    constexpr char16_t wideSpace = 0x3000;
    for (QChar &character : text) {
        const char16_t code = character.unicode();
        if (code == u' ')
            character = QChar(wideSpace);
        else if (code > u' ' && code < 0x7F)
            character = QChar(char16_t(code + wideDistance));
    }
    return text;
}

/// The bytes of one text without its end; no value when the encoding lacks a character.
std::optional<QByteArray> encoded(const QString &text, CDTextEncoding encoding)
{
    if (std::ranges::any_of(text, [](QChar character) { return character < u' ' || character == QChar(0x7F); }))
        return std::nullopt;
    if (encoding == CDTextEncoding::ShiftJis) {
        const std::optional<QByteArray> bytes = shiftJisOfText(inWideForms(text));
        // Characters of one byte are left in the narrow kana.
        return bytes && bytes->size() == 2 * text.size() ? bytes : std::nullopt;
    }
    const char16_t last = encoding == CDTextEncoding::Ascii ? 0x7E : 0xFF;
    if (std::ranges::any_of(text, [last](QChar character) { return character.unicode() > last; }))
        return std::nullopt;
    return text.toLatin1();
}

std::optional<QString> decoded(const QByteArray &bytes, CDTextEncoding encoding)
{
    if (encoding == CDTextEncoding::ShiftJis)
        return textOfShiftJis(bytes);
    return QString::fromLatin1(bytes);
}

struct PackedText {
    std::uint32_t track = 0;
    QByteArray bytes; ///< with its end
};

/// Makes the packs of one block.
class BlockMaker
{
public:
    BlockMaker(const CDTextBlock &block, std::size_t number, std::uint32_t lastTrack)
        : m_block(block)
        , m_number(number)
        , m_lastTrack(lastTrack)
    {
    }

    [[nodiscard]] NSError make()
    {
        if (m_block.firstTrack < 1 || m_block.firstTrack > m_lastTrack || m_lastTrack > mostTracks)
            return textError(
                QStringLiteral("Texts for tracks %1 to %2 are impossible.").arg(m_block.firstTrack).arg(m_lastTrack));
        for (const CDTextKind kind : kinds) {
            const auto texts = m_block.texts.find(kind);
            const bool hasCode = kind == CDTextKind::Genre && m_block.genreCode != 0;
            if (texts == m_block.texts.end() && !hasCode)
                continue;
            const std::vector<QString> none;
            if (NSError error = addKind(kind, texts == m_block.texts.end() ? none : texts->second))
                return error;
        }
        if (m_packs.size() + sizesPacks > mostPacks)
            return textError(QStringLiteral("The texts need %1 packs, but a language has room for only %2.")
                                 .arg(m_packs.size() + sizesPacks)
                                 .arg(mostPacks),
                             QStringLiteral("Shorten the titles, or leave out one kind of text."));
        return {};
    }

    [[nodiscard]] std::uint8_t lastSequence() const { return std::uint8_t(m_packs.size() + sizesPacks - 1); }

    /// All packs, when those of the other blocks are counted.
    [[nodiscard]] QByteArray packs(const std::array<std::uint8_t, mostBlocks> &lastSequences,
                                   const std::array<std::uint8_t, mostBlocks> &languages)
    {
        std::array<std::uint8_t, SizesField::size> sizes{};
        sizes[SizesField::encoding] = std::uint8_t(m_block.encoding);
        sizes[SizesField::firstTrack] = std::uint8_t(m_block.firstTrack);
        sizes[SizesField::lastTrack] = std::uint8_t(m_lastTrack);
        sizes[SizesField::copyright] = m_block.copyright;
        for (const QByteArray &pack : m_packs)
            ++sizes[SizesField::packCounts + std::uint8_t(pack[PackField::type]) - firstType];
        sizes[SizesField::packCounts + sizesType - firstType] = sizesPacks;
        std::ranges::copy(lastSequences, &sizes[SizesField::lastSequences]);
        std::ranges::copy(languages, &sizes[SizesField::languages]);
        for (std::size_t index = 0; index < sizesPacks; ++index)
            addPack(sizesType, std::uint32_t(index), 0, false, &sizes[index * payloadSize], payloadSize);
        return m_packs.join();
    }

private:
    [[nodiscard]] NSError addKind(CDTextKind kind, const std::vector<QString> &texts)
    {
        const std::size_t trackCount = isOfDiscOnly(kind) ? 0 : m_lastTrack - m_block.firstTrack + 1;
        for (std::size_t index = trackCount + 1; index < texts.size(); ++index) {
            if (!texts[index].isEmpty())
                return textError(QStringLiteral("The text \"%1\" belongs to no track.").arg(texts[index]));
        }
        const CDTextEncoding encoding = encodingOfKind(kind, m_block.encoding);
        const std::size_t size = characterSize(encoding);
        std::vector<PackedText> packed;
        QString previous;
        for (std::size_t index = 0; index <= trackCount; ++index) {
            const QString text = index < texts.size() ? texts[index] : QString();
            std::optional<QByteArray> bytes = encoded(text, encoding);
            if (!bytes)
                return textError(QStringLiteral("The text \"%1\" has characters that CD-TEXT cannot say%2.")
                                     .arg(text,
                                          m_block.encoding == CDTextEncoding::ShiftJis
                                              ? QString()
                                              : QStringLiteral(" in a Western language")));
            // The disc's own text is not repeated by the first track's tab: readers differ on that.
            const bool isRepeated = index > 1 && text == previous && text.size() > 1;
            if (isRepeated)
                bytes = QByteArray(qsizetype(size), tab);
            if (kind == CDTextKind::Genre && index == 0)
                bytes->prepend(genreCode());
            bytes->append(qsizetype(size), '\0');
            packed.push_back({index == 0 ? 0 : std::uint32_t(m_block.firstTrack + index - 1), *bytes});
            previous = text;
        }
        addTexts(std::uint8_t(kind), packed, size);
        return {};
    }

    [[nodiscard]] QByteArray genreCode() const
    {
        QByteArray code;
        code.append(char(m_block.genreCode >> 8)).append(char(m_block.genreCode & 0xFF));
        return code;
    }

    /// Lets the texts follow each other through as many packs as they take.
    void addTexts(std::uint8_t type, const std::vector<PackedText> &texts, std::size_t size)
    {
        std::array<std::uint8_t, payloadSize> payload{};
        std::size_t filled = 0;
        std::uint32_t track = 0;
        std::size_t inherited = 0;
        for (const PackedText &text : texts) {
            for (qsizetype at = 0; at < text.bytes.size(); ++at) {
                if (filled == 0) {
                    track = text.track;
                    inherited = std::min(std::size_t(at) / size, mostInherited);
                }
                payload[filled++] = std::uint8_t(text.bytes[at]);
                if (filled == payloadSize) {
                    addPack(type, track, inherited, size == 2, payload.data(), filled);
                    filled = 0;
                }
            }
        }
        if (filled > 0)
            addPack(type, track, inherited, size == 2, payload.data(), filled);
    }

    void addPack(std::uint8_t type, std::uint32_t track, std::size_t inherited, bool isDoubleByte,
                 const std::uint8_t *payload, std::size_t length)
    {
        std::array<std::uint8_t, cdTextPackSize> pack{};
        pack[PackField::type] = type;
        pack[PackField::track] = std::uint8_t(track);
        pack[PackField::sequence] = std::uint8_t(m_packs.size());
        pack[PackField::block] = std::uint8_t((isDoubleByte ? doubleByteFlag : 0) | m_number << blockShift | inherited);
        std::copy_n(payload, length, &pack[PackField::payload]);
        storeBigEndian<std::uint16_t>(&pack[PackField::checksum], subchannelChecksum(pack.data(), PackField::checksum));
        m_packs.append(QByteArray(reinterpret_cast<const char *>(pack.data()), qsizetype(pack.size())));
    }

    const CDTextBlock &m_block;
    const std::size_t m_number;
    const std::uint32_t m_lastTrack;
    QByteArrayList m_packs;
};

/// What the packs of one type in one block say together.
struct TypeBytes {
    std::uint32_t firstTrack = 0; ///< of the first text
    QByteArray bytes;
};

struct BlockBytes {
    bool isDoubleByte = false;
    std::map<std::uint8_t, TypeBytes> types;
    int lastSequence = -1;
};

/// Gathers the packs by block and type.
Result<std::map<std::uint8_t, BlockBytes>> gatherPacks(QByteArrayView packs)
{
    std::map<std::uint8_t, BlockBytes> blocks;
    for (qsizetype at = 0; at < packs.size(); at += qsizetype(cdTextPackSize)) {
        const auto *const pack = reinterpret_cast<const std::uint8_t *>(packs.data()) + at;
        const auto wrong = [&](const char *what) {
            return textError(QStringLiteral("Pack %1 of the CD-TEXT %2.")
                                 .arg(at / qsizetype(cdTextPackSize) + 1)
                                 .arg(QLatin1String(what)));
        };
        if (loadBigEndian<std::uint16_t>(pack + PackField::checksum) != subchannelChecksum(pack, PackField::checksum))
            return wrong("has a wrong checksum");
        const std::uint8_t type = pack[PackField::type];
        if (type < firstType || type > sizesType)
            return wrong("is of no known type");
        BlockBytes &block = blocks[pack[PackField::block] >> blockShift & blockMask];
        if (pack[PackField::sequence] <= block.lastSequence)
            return wrong("is out of order");
        block.lastSequence = pack[PackField::sequence];
        TypeBytes &bytes = block.types[type];
        if (bytes.bytes.isEmpty())
            bytes.firstTrack = pack[PackField::track] & PackField::trackMask;
        // Codes and the like stay in single bytes beside texts of two.
        if (type < std::uint8_t(CDTextKind::DiscIdentification))
            block.isDoubleByte |= (pack[PackField::block] & doubleByteFlag) != 0;
        bytes.bytes.append(reinterpret_cast<const char *>(pack + PackField::payload), qsizetype(payloadSize));
    }
    return blocks;
}

/// Cuts the bytes at the ends of texts.
std::vector<QByteArray> splitTexts(const QByteArray &bytes, std::size_t size)
{
    std::vector<QByteArray> texts;
    qsizetype start = 0;
    for (qsizetype at = 0; at + qsizetype(size) <= bytes.size(); at += qsizetype(size)) {
        const bool isEnd = bytes[at] == 0 && bytes[at + qsizetype(size) - 1] == 0;
        if (!isEnd)
            continue;
        texts.push_back(bytes.sliced(start, at - start));
        start = at + qsizetype(size);
    }
    const QByteArray rest = bytes.sliced(start);
    if (rest.count('\0') < rest.size())
        texts.push_back(rest); // an end that is missing
    while (!texts.empty() && texts.back().isEmpty())
        texts.pop_back(); // the rest of the last pack
    return texts;
}

/// Reads the texts of one kind; false when the encoding is wrong.
bool readKind(CDTextKind kind, const TypeBytes &bytes, CDTextBlock *block)
{
    const CDTextEncoding encoding = encodingOfKind(kind, block->encoding);
    const std::size_t size = characterSize(encoding);
    QByteArray content = bytes.bytes;
    if (kind == CDTextKind::Genre) {
        block->genreCode = loadBigEndian<std::uint16_t>(reinterpret_cast<const std::uint8_t *>(content.constData()));
        content = content.sliced(qsizetype(genreCodeSize));
    }
    std::vector<QString> texts;
    if (bytes.firstTrack >= block->firstTrack)
        texts.resize(1 + bytes.firstTrack - block->firstTrack);
    for (const QByteArray &text : splitTexts(content, size)) {
        const bool isRepeated = text == QByteArray(qsizetype(size), tab) && !texts.empty();
        const std::optional<QString> read = isRepeated ? texts.back() : decoded(text, encoding);
        if (!read)
            return false;
        texts.push_back(*read);
    }
    if (std::ranges::any_of(texts, [](const QString &text) { return !text.isEmpty(); }))
        block->texts.emplace(kind, std::move(texts));
    return true;
}

Result<CDTextBlock> readBlock(std::uint8_t number, const BlockBytes &bytes)
{
    CDTextBlock block;
    block.encoding = bytes.isDoubleByte ? CDTextEncoding::ShiftJis : CDTextEncoding::Latin1;
    const auto sizes = bytes.types.find(sizesType);
    if (sizes != bytes.types.end() && sizes->second.bytes.size() >= qsizetype(SizesField::size)) {
        const auto *const fields = reinterpret_cast<const std::uint8_t *>(sizes->second.bytes.constData());
        block.encoding = CDTextEncoding(fields[SizesField::encoding]);
        block.firstTrack = std::max<std::uint32_t>(fields[SizesField::firstTrack], 1);
        block.copyright = fields[SizesField::copyright];
        block.language = fields[SizesField::languages + number];
    }
    const bool isKnown = block.encoding == CDTextEncoding::Latin1 || block.encoding == CDTextEncoding::Ascii
        || block.encoding == CDTextEncoding::ShiftJis;
    if (!isKnown)
        return textError(QStringLiteral("The CD-TEXT of language %1 is in the encoding %2, which is not known here.")
                             .arg(number + 1)
                             .arg(unsigned(block.encoding), 2, 16, QLatin1Char('0')));
    for (const auto &[type, content] : bytes.types) {
        if (type == tocType || type == secondTocType || std::ranges::count(kinds, CDTextKind(type)) == 0)
            continue;
        if (!readKind(CDTextKind(type), content, &block))
            return textError(
                QStringLiteral("The CD-TEXT of language %1 is not in the encoding that it says.").arg(number + 1));
    }
    return block;
}

/// Without the header that drives put in front and the zero that ends some files.
QByteArrayView withoutFrame(QByteArrayView packs)
{
    constexpr qsizetype headerSize = 4;
    constexpr auto packSize = qsizetype(cdTextPackSize);
    if (packs.size() % packSize == headerSize && std::uint8_t(packs[headerSize]) >= firstType)
        packs = packs.sliced(headerSize);
    return packs.size() % packSize == 1 && packs.back() == 0 ? packs.chopped(1) : packs;
}

} // namespace

Result<QByteArray> cdTextPacks(const CDText &text, std::uint32_t lastTrack)
{
    if (text.blocks.size() > mostBlocks)
        return textError(
            QStringLiteral("There are texts in %1 languages, but a disc has room for eight.").arg(text.blocks.size()));
    std::vector<BlockMaker> makers;
    std::array<std::uint8_t, mostBlocks> lastSequences{};
    std::array<std::uint8_t, mostBlocks> languages{};
    for (std::size_t number = 0; number < text.blocks.size(); ++number) {
        BlockMaker &maker = makers.emplace_back(text.blocks[number], number, lastTrack);
        if (NSError error = maker.make())
            return error;
        lastSequences[number] = maker.lastSequence();
        languages[number] = text.blocks[number].language;
    }
    QByteArray packs;
    for (BlockMaker &maker : makers)
        packs += maker.packs(lastSequences, languages);
    return packs;
}

bool canBeCDText(const QString &text, CDTextEncoding encoding)
{
    return encoded(text, encoding).has_value();
}

QList<QByteArray> cdTextBlocksOfPacks(QByteArrayView packs)
{
    QList<QByteArray> blocks;
    int current = -1;
    for (qsizetype at = 0; at + qsizetype(cdTextPackSize) <= packs.size(); at += qsizetype(cdTextPackSize)) {
        const QByteArrayView pack = packs.sliced(at, qsizetype(cdTextPackSize));
        const int block = std::uint8_t(pack[PackField::block]) >> blockShift & blockMask;
        if (std::exchange(current, block) != block)
            blocks.append(QByteArray());
        blocks.last() += pack;
    }
    return blocks;
}

Result<CDText> cdTextOfPacks(QByteArrayView packs)
{
    packs = withoutFrame(packs);
    if (packs.size() % qsizetype(cdTextPackSize) != 0)
        return textError(QStringLiteral("The CD-TEXT is cut off: its %1 bytes are not whole packs.").arg(packs.size()));
    const Result<std::map<std::uint8_t, BlockBytes>> blocks = gatherPacks(packs);
    if (!blocks)
        return blocks.error();
    CDText text;
    for (const auto &[number, bytes] : *blocks) {
        Result<CDTextBlock> block = readBlock(number, bytes);
        if (!block)
            return block.error();
        text.blocks.push_back(*std::move(block));
    }
    return text;
}

} // namespace Tessaron
