#include "imaging/verification/NameRules.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// A name in two parts, the extension with its dot.
struct NameParts {
    QString stem;
    QString extension;
};

NameParts partsOf(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return {name, {}};
    return {name.left(dot), name.mid(dot)};
}

QString withoutNumber(const QString &stem)
{
    qsizetype end = stem.size();
    while (end > 0 && stem[end - 1].isDigit())
        --end;
    const bool isNumbered = end < stem.size() && end > 1 && stem[end - 1] == u'_';
    return isNumbered ? stem.left(end - 1) : stem;
}

/// As HFS+ counts and keeps names. What is not text is no matter here.
QString decomposed(const QString &name)
{
    return name.normalized(QString::NormalizationForm_D, QChar::Unicode_3_2);
}

/// The longest name that needs no cutting, in UTF-16 units.
qsizetype longestName(VolumeKind kind, const QString &name)
{
    if (kind == VolumeKind::Joliet)
        return 64; // by the text; many writers go on to 103
    if (kind == VolumeKind::HFSPlus)
        return 255;
    const bool isNarrow = std::all_of(name.begin(), name.end(), [](QChar unit) { return unit.unicode() < 256; });
    return isNarrow ? 254 : 127;
}

bool isForbidden(VolumeKind kind, QChar unit)
{
    if (unit.isSurrogate() || unit.unicode() == u'\uFFFD')
        return true;
    if (kind == VolumeKind::HFSPlus)
        return unit == u'\0' || unit == u':' || unit == u'\uFFFF';
    if (kind == VolumeKind::UDF)
        return unit == u'\uFEFF' || unit == u'\uFFFE';
    return kind == VolumeKind::Joliet && (unit.unicode() < 32 || QStringView(u"*/:;?\\").contains(unit));
}

bool needsChange(VolumeKind kind, const QString &name)
{
    const qsizetype length = kind == VolumeKind::HFSPlus ? decomposed(name).size() : name.size();
    return length > longestName(kind, name)
        || std::any_of(name.begin(), name.end(), [kind](QChar unit) { return isForbidden(kind, unit); })
        || (kind == VolumeKind::Joliet && name.endsWith(u'.'));
}

/// Unit by unit the same, or '_' where the source has something else; `recorded` may be shorter.
bool isMasked(const QString &recorded, const QString &source)
{
    if (recorded.size() > source.size())
        return false;
    for (qsizetype at = 0; at < recorded.size(); ++at) {
        if (recorded[at] != source[at] && recorded[at] != u'_')
            return false;
    }
    return true;
}

bool mayBeUnicodeName(VolumeKind kind, const QString &recorded, const QString &source)
{
    const NameParts recordedParts = partsOf(recorded);
    const NameParts sourceParts = partsOf(source);
    if (!needsChange(kind, source))
        return withoutNumber(recordedParts.stem) == sourceParts.stem && recordedParts.stem != sourceParts.stem
            && recordedParts.extension == sourceParts.extension;
    if (isMasked(recorded, source) || isMasked(withoutNumber(recorded), source))
        return true;
    return isMasked(recordedParts.extension, sourceParts.extension)
        && (isMasked(recordedParts.stem, sourceParts.stem)
            || isMasked(withoutNumber(recordedParts.stem), sourceParts.stem));
}

bool isDCharacter(QChar unit)
{
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9');
}

/// What is left of a name when all that ISO 9660 changes is left out.
QString bones(const QString &text)
{
    QString result;
    for (const QChar unit : text) {
        const QChar upper = unit.unicode() < 128 ? unit.toUpper() : unit;
        if (isDCharacter(upper))
            result += upper;
    }
    return result;
}

bool mayBePlainName(const QString &recorded, const QString &source)
{
    const QString upper = source.toUpper();
    constexpr qsizetype longestPlainName = 30; // of level 2, without the dot
    const bool isClean = upper.size() <= longestPlainName && upper.count(u'.') <= 1 && !upper.startsWith(u'.')
        && std::all_of(upper.begin(), upper.end(),
                       [](QChar unit) { return isDCharacter(unit) || unit == u'_' || unit == u'.'; });
    const NameParts recordedParts = partsOf(recorded);
    if (recorded == upper || (upper.endsWith(u'.') && recorded == upper.chopped(1)))
        return true;
    if (isClean && recorded.size() >= upper.size()) {
        const NameParts sourceParts = partsOf(upper);
        return withoutNumber(recordedParts.stem) == sourceParts.stem
            && recordedParts.extension == sourceParts.extension;
    }
    // Cut to 8.3 or 31 characters, what cannot stay replaced, perhaps numbered.
    const QString sourceBones = bones(source);
    const QString recordedBones = bones(recordedParts.stem);
    const QString unnumbered = bones(withoutNumber(recordedParts.stem));
    const QString extension = bones(recordedParts.extension);
    const bool hasItsExtension = extension.isEmpty() || bones(partsOf(source).extension).startsWith(extension);
    return (sourceBones.startsWith(recordedBones) || sourceBones.startsWith(unnumbered)) && hasItsExtension;
}

} // namespace

bool keepsEveryName(VolumeKind kind)
{
    return kind == VolumeKind::RockRidge;
}

bool mustChangeName(VolumeKind kind, std::string_view source)
{
    if (keepsEveryName(kind))
        return false;
    if (kind == VolumeKind::ISO9660)
        return true;
    constexpr std::size_t surelyShort = 64;
    const bool isPlain =
        source.size() <= surelyShort && std::all_of(source.begin(), source.end(), [](char byte) {
            return byte >= '0' && byte <= 'z' && byte != ':' && byte != ';' && byte != '?' && byte != '\\';
        });
    return !isPlain
        && needsChange(kind,
                       stringWithFileSystemRepresentation(QByteArrayView(source.data(), qsizetype(source.size()))));
}

QByteArray comparableName(VolumeKind kind, const QByteArray &name)
{
    const bool isAscii = std::all_of(name.begin(), name.end(), [](char byte) { return byte >= 0; });
    if (kind != VolumeKind::HFSPlus || isAscii)
        return name;
    const QString text = stringWithFileSystemRepresentation(name);
    return holdsUndecodableBytes(text) ? name : fileSystemRepresentation(text.normalized(QString::NormalizationForm_C));
}

QByteArray nameKey(VolumeKind kind, std::string_view source)
{
    QString name = stringWithFileSystemRepresentation(QByteArrayView(source.data(), qsizetype(source.size())));
    if (kind == VolumeKind::ISO9660) {
        const NameParts parts = partsOf(name);
        return (bones(parts.stem) + u'.' + bones(parts.extension)).toLatin1();
    }
    if (kind == VolumeKind::HFSPlus && !holdsUndecodableBytes(name))
        name = name.normalized(QString::NormalizationForm_C);
    for (qsizetype at = 0; at < name.size(); ++at) {
        const bool isPair = name[at].isHighSurrogate() && at + 1 < name.size() && name[at + 1].isLowSurrogate();
        if (isPair)
            ++at;
        else if (isForbidden(kind, name[at])) // a lone surrogate stands for a byte that is no text
            name[at] = u'_';
    }
    const qsizetype longest = kind == VolumeKind::Joliet ? 103 : longestName(kind, name);
    const auto cut = [longest](const QString &text) {
        const NameParts parts = partsOf(text);
        return QString(parts.stem.left(std::max<qsizetype>(longest - parts.extension.size(), 0)) + parts.extension);
    };
    if (kind == VolumeKind::HFSPlus && decomposed(name).size() > longest)
        name = cut(decomposed(name)).normalized(QString::NormalizationForm_C);
    else if (name.size() > longest)
        name = cut(name);
    return fileSystemRepresentation(name);
}

QByteArray nameWithoutNumber(const QByteArray &recorded)
{
    const NameParts parts = partsOf(stringWithFileSystemRepresentation(recorded));
    return fileSystemRepresentation(withoutNumber(parts.stem) + parts.extension);
}

bool mayBeNameOf(VolumeKind kind, const QByteArray &recorded, std::string_view source)
{
    if (keepsEveryName(kind))
        return false;
    const QString recordedText = stringWithFileSystemRepresentation(recorded);
    const QString sourceText =
        stringWithFileSystemRepresentation(QByteArrayView(source.data(), qsizetype(source.size())));
    if (kind == VolumeKind::ISO9660)
        return mayBePlainName(recordedText, sourceText);
    if (kind == VolumeKind::HFSPlus && !holdsUndecodableBytes(sourceText))
        return mayBeUnicodeName(kind, recordedText, sourceText.normalized(QString::NormalizationForm_C));
    return mayBeUnicodeName(kind, recordedText, sourceText);
}

} // namespace Tessaron
