#include "tests/discimage/FlipHarness.h"

#include "platform/discimage/ImageCheck.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/volume/VolumeWalk.h"

#include <algorithm>
#include <random>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint64_t blockSize = 2048;

QByteArray textOf(const std::optional<VolumeTime> &time)
{
    return time ? QByteArray::number(qlonglong(time->seconds)) + '.' + QByteArray::number(time->nanoseconds) : "-";
}

/// The fields of a line, with a tab between.
enum Field : qsizetype {
    FolderField,
    NameField,
    KindField,
    DateField,
    ModeField,
    TypeField,
    SizeField,
    TargetField,
    FirstExtentField
};

QByteArray lineOf(const QByteArray &folder, const VolumeObject &object)
{
    const std::uint32_t mode = object.mode.value_or(0);
    QByteArray line = folder + '\t' + object.name + '\t' + QByteArray::number(int(object.kind)) + '\t'
        + textOf(object.modified) + '\t' + QByteArray::number(mode & 07777, 8) + '\t'
        + QByteArray::number(mode & ~07777u, 8) + '\t' + QByteArray::number(qulonglong(object.size)) + '\t'
        + object.linkTarget;
    for (const VolumeExtent &extent : object.extents)
        line += '\t' + QByteArray::number(qulonglong(extent.isHole ? 0 : extent.offset)) + '+'
            + QByteArray::number(qulonglong(extent.length));
    return line + '\n';
}

/// Name and dates of a volume, a line each, so that each is compared alone.
QByteArray linesOf(const DiscVolumeFacts &facts)
{
    const QByteArray kind = volumeKindName(facts.kind).toUtf8();
    return kind + '\t' + facts.name.toUtf8() + '\t' + QByteArray::number(facts.blockSize) + '\t' + textOf(facts.created)
        + '\t' + QByteArray() + '\t' + QByteArray::number(qulonglong(facts.blockCount)) + '\t'
        + QByteArray::number(qulonglong(facts.offset)) + '\n' + kind + "\t\t\t" + textOf(facts.modified) + '\n';
}

/// The blocks that hold contents of files, by the views themselves.
std::vector<bool> blocksOfContents(const QByteArray &image)
{
    std::vector<bool> blocks(std::size_t(image.size()) / blockSize + 1);
    for (const FoundVolume &volume : volumesInImage(DiscImageSource::sourceWithBytes(image))) {
        VolumeWalker walker;
        walker.object = [&](const QByteArray &, const VolumeObject &object) {
            for (const VolumeExtent &extent : object.extents) {
                for (std::uint64_t block = extent.offset / blockSize; object.kind == VolumeObjectKind::File
                     && block < (extent.offset + extent.length + blockSize - 1) / blockSize;
                     ++block)
                    blocks[block] = true;
            }
            return true;
        };
        if (volume.reader)
            walkVolume(*volume.reader, walker);
    }
    return blocks;
}

/// The lines of the other text that are not in the first.
QString changeBetween(const QByteArray &before, const QByteArray &after)
{
    const QList<QByteArray> old = before.split('\n');
    QByteArray change;
    for (const QByteArray &line : after.split('\n')) {
        if (!old.contains(line) && change.size() < 400)
            change += line + '\n';
    }
    return QString::fromUtf8(change.isEmpty() ? QByteArray("something is missing") : change);
}

/// A size in whole blocks; in HFS+ the blocks alone are stated twice.
QByteArray inBlocks(const QByteArray &size)
{
    return QByteArray::number((size.toULongLong() + blockSize - 1) / blockSize);
}

/// True for an object whose date and permissions stand twice, or under a checksum; where ISO 9660 is, so is Rock Ridge.
bool hasAttributesTwice(const QByteArray &line)
{
    return line.startsWith("Rock Ridge/") || line.startsWith("ISO 9660/") || line.startsWith("UDF/");
}

/// A line's fields but for name, link target and, in some filesystems, date and permissions: what has a second copy, or
/// can be counted.
QByteArray checkedFields(const QByteArray &line)
{
    QList<QByteArray> fields = line.split('\t');
    if (line.startsWith("HFS+") && fields.size() == FirstExtentField + 1) {
        const QList<QByteArray> extent = fields[FirstExtentField].split('+');
        fields[SizeField] = inBlocks(fields[SizeField]);
        fields[FirstExtentField] = extent.first() + '+' + inBlocks(extent.last());
    }
    for (const qsizetype field : {NameField, DateField, ModeField, TargetField}) {
        const bool isAttribute = field == DateField || field == ModeField;
        if (field < fields.size() && !(isAttribute && hasAttributesTwice(line)))
            fields[field].clear();
    }
    return fields.join('\t');
}

/// The filesystem of a line; plain ISO 9660 and Rock Ridge are two views of the same records.
QByteArray filesystemOf(const QByteArray &line)
{
    const QByteArray view = line.left(line.indexOf('\t')).split('/').first();
    return view == "Rock Ridge" ? QByteArray("ISO 9660") : view;
}

/// View and path of an object as the lines of what lies in it begin.
QByteArray pathOf(const QList<QByteArray> &fields)
{
    return fields[FolderField] + (fields[FolderField].endsWith('/') ? "" : "/") + fields[NameField];
}

/// The paths of what lies in a folder whose name changed have that name in them, too.
bool isPathBelow(const QByteArray &line, const QByteArray &path)
{
    const QByteArray folder = line.left(line.indexOf('\t'));
    return folder == path || folder.startsWith(path + '/');
}

/// Gives the lines of a renamed folder's contents the old name again.
void undoFolderName(const QList<QByteArray> &before, QList<QByteArray> *after)
{
    for (qsizetype index = 0; index < std::min(before.size(), after->size()); ++index) {
        const QList<QByteArray> old = before[index].split('\t');
        const QList<QByteArray> changed = after->at(index).split('\t');
        if (old.size() <= NameField || changed.size() <= NameField || old[FolderField] != changed[FolderField]
            || old[NameField] == changed[NameField])
            continue;
        const QByteArray path = pathOf(changed);
        const QByteArray oldPath = pathOf(old);
        for (QByteArray &line : *after) {
            if (isPathBelow(line, path))
                line = oldPath + line.mid(path.size());
        }
        return;
    }
}

/// What a line says of its object besides the name.
QByteArray withoutName(const QByteArray &line)
{
    return line.mid(line.indexOf('\t', line.indexOf('\t') + 1));
}

/// One record differs, and only in such fields. It has one line in each view, and one for each name of its file.
bool isSingleCopy(const QByteArray &before, const QByteArray &after)
{
    const QList<QByteArray> old = before.split('\n');
    QList<QByteArray> changed = after.split('\n');
    undoFolderName(old, &changed);
    if (old.size() != changed.size())
        return false;
    qsizetype first = -1;
    int records = 0;
    for (qsizetype index = 0; index < old.size(); ++index) {
        if (old[index] == changed[index])
            continue;
        if (checkedFields(old[index]) != checkedFields(changed[index]))
            return false;
        const bool isOtherName = first >= 0 && withoutName(old[index]) == withoutName(old[first])
            && withoutName(changed[index]) == withoutName(changed[first]);
        records += isOtherName ? 0 : 1;
        if (first >= 0 && filesystemOf(old[index]) != filesystemOf(old[first]))
            return false;
        first = first < 0 ? index : first;
    }
    return records == 1 || (records == 2 && filesystemOf(old[first]) == "ISO 9660");
}

/// Where a bit lies, fine enough to tell structures apart.
QString placeName(const QByteArray &image, std::uint64_t offset)
{
    const QByteArray block = image.mid(qsizetype(offset / blockSize) * qsizetype(blockSize), qsizetype(blockSize));
    if (std::all_of(block.begin(), block.end(), [](char byte) { return byte == 0; }))
        return QStringLiteral("empty block");
    if (offset < 16 * blockSize)
        return QStringLiteral("before byte 32768, at %1").arg(offset);
    if (block.mid(1, 5) == "CD001")
        return QStringLiteral("volume descriptor %1, byte %2").arg(int(block[0])).arg(offset % blockSize);
    if (block.mid(1, 4) == "NSR0" || block.mid(1, 4) == "BEA0" || block.mid(1, 4) == "TEA0")
        return QStringLiteral("volume recognition sequence");
    return QStringLiteral("block %1").arg(offset / blockSize);
}

} // namespace

VisibleImage::VisibleImage(const QByteArray &image)
{
    for (const FoundVolume &volume : volumesInImage(DiscImageSource::sourceWithBytes(image))) {
        hasErrors = hasErrors || volume.error;
        if (!volume.reader)
            continue;
        text += linesOf(volume.reader->facts());
        const QByteArray kind = volumeKindName(volume.kind).toUtf8();
        text += lineOf(kind, volume.reader->root());
        VolumeWalker walker;
        walker.object = [&](const QByteArray &folder, const VolumeObject &object) {
            text += lineOf(kind + '/' + folder, object);
            return true;
        };
        walker.failed = [&](const QByteArray &, const NSError &) {
            hasErrors = true;
            return true;
        };
        walkVolume(*volume.reader, walker);
    }
}

FlipResult flipBits(const QByteArray &image, int count, std::uint32_t seed)
{
    const VisibleImage before(image);
    const std::vector<bool> contents = blocksOfContents(image);
    std::vector<std::uint64_t> blocks;
    for (std::uint64_t block = 0; block < std::uint64_t(image.size()) / blockSize; ++block) {
        const auto *const from = image.constData() + block * blockSize;
        const bool isEmpty = std::all_of(from, from + blockSize, [](char byte) { return byte == 0; });
        if (!contents[block] && !isEmpty)
            blocks.push_back(block);
    }
    std::mt19937 random(seed);
    FlipResult result;
    QByteArray changed = image;
    for (; result.flips < count; ++result.flips) {
        const std::uint64_t offset = blocks[random() % blocks.size()] * blockSize + random() % blockSize;
        const auto bit = char(1u << random() % 8);
        changed[qsizetype(offset)] = char(image[qsizetype(offset)] ^ bit);
        const auto source = DiscImageSource::sourceWithBytes(changed);
        const bool isTold = checkDiscImage(source, [](const VolumeProblem &) { return false; }) > 0;
        const VisibleImage after(changed);
        if (isTold || after.hasErrors)
            ++result.told;
        else if (isSingleCopy(before.text, after.text))
            ++result.singleCopies;
        else if (after.text != before.text)
            result.missed.emplace_back(offset, changeBetween(before.text, after.text));
        else {
            ++result.harmless;
            ++result.harmlessPlaces[placeName(image, offset)];
        }
        changed[qsizetype(offset)] = image[qsizetype(offset)];
    }
    return result;
}

} // namespace Tessaron::Testing
