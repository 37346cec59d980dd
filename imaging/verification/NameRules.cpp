#include "imaging/verification/NameRules.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <array>

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

/// The stem before a number such as "_12"; the whole stem when it has none.
QString withoutNumber(const QString &stem)
{
    qsizetype end = stem.size();
    while (end > 0 && stem[end - 1] >= u'0' && stem[end - 1] <= u'9')
        --end;
    const bool isNumbered = end < stem.size() && end > 0 && stem[end - 1] == u'_' && stem[end] != u'0';
    return isNumbered ? stem.left(end - 1) : stem;
}

/// The length up to which every writer keeps names whole, in UTF-16 units. Joliet's text says 64, many writers go on to
/// 103; UDF has 254 bytes (ECMA-167 14.4.8), one for each character while all lie below U+0100.
qsizetype sureLength(VolumeKind kind)
{
    switch (kind) {
    case VolumeKind::Joliet:
        return 64;
    case VolumeKind::UDF:
        return 127;
    case VolumeKind::HFSPlus:
        return 255;
    case VolumeKind::ISO9660:
    case VolumeKind::RockRidge:
        break;
    }
    return 8;
}

bool isForbidden(VolumeKind kind, QChar unit)
{
    if (unit.isSurrogate() || unit == u'\uFFFD' || unit == u'\0')
        return true;
    if (kind == VolumeKind::HFSPlus)
        return unit == u'\uFFFF';
    if (kind == VolumeKind::UDF)
        return unit == u'\uFEFF' || unit == u'\uFFFE';
    return kind == VolumeKind::Joliet && (unit.unicode() < 32 || QStringView(u"*/:;?\\").contains(unit));
}

/// Characters that the catalog of HFS+ passes over when it compares names (TN1150): a name of nothing else would be the
/// empty one.
bool isIgnored(QChar unit)
{
    const char16_t value = unit.unicode();
    return (value >= 0x200c && value <= 0x200f) || (value >= 0x202a && value <= 0x202e)
        || (value >= 0x206a && value <= 0x206f) || value == 0xfeff;
}

QString unicodeForm(VolumeKind kind, QString name)
{
    for (qsizetype at = 0; at < name.size(); ++at) {
        const bool isPair = name[at].isHighSurrogate() && at + 1 < name.size() && name[at + 1].isLowSurrogate();
        if (isPair)
            ++at;
        else if (isForbidden(kind, name[at])) // a lone surrogate stands for a byte that is not text
            name[at] = u'_';
    }
    // Systems that take dots and blanks off the end of a name before they look for it would not find it.
    if (kind == VolumeKind::Joliet && (name.endsWith(u'.') || name.endsWith(u' ')))
        name.back() = u'_';
    if (kind != VolumeKind::HFSPlus)
        return name;
    if (std::all_of(name.begin(), name.end(), isIgnored))
        return QStringLiteral("_");
    // Some characters are stored as they are although they have a decomposition; here both sides go all the way.
    return name.normalized(QString::NormalizationForm_D);
}

/// How far the recorded name must have come before it may have been cut: a pair of surrogates that had to go whole, for
/// the cut of the name and that for its number, leaves some units unused.
bool isLongEnoughForCut(VolumeKind kind, const QString &recorded)
{
    constexpr qsizetype slack = 4;
    return recorded.size() >= sureLength(kind) - slack;
}

/// True when the text may be the end of a cut name: the system that Joliet was made for takes dots and blanks off
/// there.
bool mayEndWith(VolumeKind kind, const QString &source, const QString &end, qsizetype from)
{
    if (source.indexOf(end, from) >= 0)
        return true;
    if (kind != VolumeKind::Joliet || !end.endsWith(u'_'))
        return false;
    return source.indexOf(end.chopped(1) + u'.', from) >= 0 || source.indexOf(end.chopped(1) + u' ', from) >= 0;
}

/// A name that was cut first may get its number before what looks like an extension since then.
bool mayBeNumberedAfterCut(VolumeKind kind, const QString &recorded, const QString &source)
{
    const NameParts parts = partsOf(recorded);
    const QString stem = withoutNumber(parts.stem);
    return stem != parts.stem && !parts.extension.isEmpty() && source.startsWith(stem)
        && mayEndWith(kind, source, parts.extension, stem.size());
}

bool mayBeUnicodeForm(VolumeKind kind, const QString &recorded, const QString &source)
{
    if (recorded == source)
        return true;
    const bool mayHaveBeenCut = isLongEnoughForCut(kind, recorded);
    const auto isStem = [&](const QString &stem, const QString &whole) {
        if (stem == whole || !mayHaveBeenCut || stem.isEmpty() || stem.size() > whole.size())
            return stem == whole;
        // A cut may leave a dot or a blank at the end.
        const bool isEndReplaced = kind == VolumeKind::Joliet && stem.back() == u'_'
            && (whole[stem.size() - 1] == u'.' || whole[stem.size() - 1] == u' ');
        return whole.startsWith(isEndReplaced ? stem.chopped(1) : stem);
    };
    for (const NameParts &parts : {NameParts{source, {}}, partsOf(source)}) {
        if (!recorded.endsWith(parts.extension))
            continue;
        const QString stem = recorded.chopped(parts.extension.size());
        if (isStem(stem, parts.stem) || (withoutNumber(stem) != stem && isStem(withoutNumber(stem), parts.stem)))
            return true;
    }
    return mayHaveBeenCut && mayBeNumberedAfterCut(kind, recorded, source);
}

bool isDCharacter(QChar unit)
{
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9');
}

/// Other letters have no capitals in ISO 9660, even where those are ASCII (the dotless i).
QChar asciiCapital(QChar unit)
{
    return unit >= u'a' && unit <= u'z' ? QChar(unit.unicode() - u'a' + u'A') : unit;
}

QString inCapitals(QString text)
{
    std::transform(text.cbegin(), text.cend(), text.begin(), asciiCapital);
    return text;
}

/// The characters of a name that ISO 9660 surely keeps, in capitals.
QString bones(const QString &text)
{
    QString result;
    for (const QChar unit : text) {
        const QChar upper = asciiCapital(unit);
        if (isDCharacter(upper))
            result += upper;
    }
    return result;
}

/// Cut to 8.3 or 31 characters, what cannot stay replaced or left out, perhaps numbered.
bool mayBeChangedPlainName(const NameParts &recorded, const QString &source)
{
    const QString sourceBones = bones(source);
    const QString extension = bones(recorded.extension);
    const bool hasItsExtension = extension.isEmpty() || bones(partsOf(source).extension).startsWith(extension);
    return hasItsExtension
        && (sourceBones.startsWith(bones(recorded.stem))
            || sourceBones.startsWith(bones(withoutNumber(recorded.stem))));
}

/// A clean name may only be numbered; in folders, which have no extension, the dot is an underscore.
bool mayBeNumberedPlainName(const QString &recorded, const QString &upper)
{
    NameParts source = partsOf(upper);
    if (source.extension == QStringLiteral("."))
        source.extension.clear();
    const NameParts parts = partsOf(recorded);
    if (withoutNumber(parts.stem) == source.stem && parts.extension == source.extension)
        return true;
    QString folder = upper;
    folder.replace(u'.', u'_');
    return recorded == folder || withoutNumber(recorded) == folder;
}

bool mayBePlainName(const QString &recorded, const QString &source)
{
    const QString upper = inCapitals(source);
    if (recorded == upper || (upper.endsWith(u'.') && recorded == upper.chopped(1)))
        return true;
    constexpr qsizetype surelyWhole = 24; // the 30 characters of level 2, less the room for a number
    const bool isClean = upper.size() <= surelyWhole && upper.count(u'.') <= 1 && !upper.startsWith(u'.')
        && std::all_of(upper.begin(), upper.end(),
                       [](QChar unit) { return isDCharacter(unit) || unit == u'_' || unit == u'.'; });
    if (isClean && recorded.size() >= upper.size())
        return mayBeNumberedPlainName(recorded, upper);
    return mayBeChangedPlainName(partsOf(recorded), source);
}

} // namespace

bool keepsEveryName(VolumeKind kind)
{
    return kind == VolumeKind::RockRidge;
}

QString formOfName(VolumeKind kind, std::string_view name)
{
    QString text = stringWithFileSystemRepresentation(QByteArrayView(name.data(), qsizetype(name.size())));
    if (kind == VolumeKind::RockRidge)
        return text;
    if (kind != VolumeKind::ISO9660)
        return unicodeForm(kind, text);
    return bones(text);
}

bool mayBeCut(VolumeKind kind, const QString &form)
{
    constexpr qsizetype longestNumber = 20; // a name may be cut for the number alone
    return form.size() + longestNumber > sureLength(kind);
}

QString sureBeginning(VolumeKind kind, const QString &form)
{
    constexpr qsizetype extensionAndNumber = 40; // at the end of a cut name
    return form.left(kind == VolumeKind::ISO9660 ? 3 : sureLength(kind) - extensionAndNumber);
}

std::vector<QString> formsWithoutNumber(const QString &form)
{
    std::vector<QString> forms;
    if (QString whole = withoutNumber(form); whole != form)
        forms.push_back(std::move(whole));
    const NameParts parts = partsOf(form);
    const QString stem = withoutNumber(parts.stem);
    if (!parts.extension.isEmpty() && stem != parts.stem)
        forms.push_back(stem + parts.extension);
    return forms;
}

ComparableName::ComparableName(VolumeKind kind, std::string_view name)
    : text(stringWithFileSystemRepresentation(QByteArrayView(name.data(), qsizetype(name.size()))))
    , form(formOfName(kind, name))
{
}

bool mayBeNameOf(VolumeKind kind, const ComparableName &recorded, const ComparableName &source)
{
    if (recorded.text == source.text)
        return true;
    if (keepsEveryName(kind))
        return false;
    if (kind == VolumeKind::ISO9660)
        return mayBePlainName(recorded.text, source.text);
    return mayBeUnicodeForm(kind, recorded.form, source.form);
}

} // namespace Tessaron
