#include "imaging/verification/NameRules.h"
#include "imaging/verification/VolumeComparison.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

// How VolumeComparison finds the source that an object of a volume was made of.

namespace Tessaron
{

SourceNumber VolumeComparison::sourceWithName(const VolumeObject &object) const
{
    const SourceNumber folder = m_levels.back().folder;
    const auto view = [](const QByteArray &name) { return std::string_view(name.data(), std::size_t(name.size())); };
    const SourceNumber exact = m_sources.child(folder, view(object.name));
    if (exact != noSource || m_kind != VolumeKind::HFSPlus)
        return exact;
    // The volume has one form of its own for characters that can be written in several.
    const QString name = stringWithFileSystemRepresentation(object.name);
    const QByteArray decomposed = fileSystemRepresentation(name.normalized(QString::NormalizationForm_D));
    return m_sources.child(folder, view(decomposed));
}

SourceNumber VolumeComparison::sourceAtPlace(const VolumeObject &object) const
{
    const SourceNumber folder = m_levels.back().folder;
    if (object.kind == VolumeObjectKind::Folder) {
        const bool isKnown = m_kind == VolumeKind::ISO9660 && m_rockRidgeFolders != nullptr;
        const SourceNumber source = isKnown ? m_rockRidgeFolders->value(object.location, noSource) : noSource;
        return source != noSource && m_sources[source].parent == folder && mayBe(object, source) ? source : noSource;
    }
    if (object.extents.empty())
        return noSource;
    const QByteArray key = nameKey(m_kind, std::string_view(object.name.data(), std::size_t(object.name.size())));
    SourceNumber found = noSource;
    bool hasKey = false;
    for (const std::uint32_t index : m_contents.placesAt(object.extents.front().offset)) {
        const SourceNumber source = m_contents.place(index).source;
        if (m_sources[source].parent != folder || !mayBe(object, source))
            continue;
        if (object.name == QByteArrayView(m_sources.name(source).data(), m_sources[source].nameLength))
            return source;
        // Of several hard links the one whose name is nearest: "HARD" is no name for "hard2" where there is a "hard".
        if (isSeen(source) || hasKey)
            continue;
        hasKey = nameKey(m_kind, m_sources.name(source)) == key;
        found = hasKey || found == noSource ? source : found;
    }
    return found;
}

bool VolumeComparison::fitsKind(const VolumeObject &object, const SourceObject &source) const
{
    if (object.kind == source.kind)
        return true;
    // Where links and special files have no kind of their own, they may be there as empty files; so are, in the plain
    // tree, folders that Rock Ridge has moved up.
    if (object.kind != VolumeObjectKind::File || object.size != 0)
        return false;
    if (source.kind == VolumeObjectKind::Folder)
        return m_kind == VolumeKind::ISO9660 && m_hasRockRidge;
    return (m_kind == VolumeKind::ISO9660 || m_kind == VolumeKind::Joliet) && source.kind != VolumeObjectKind::File;
}

bool VolumeComparison::hasNameOf(const VolumeObject &object, SourceNumber source) const
{
    const std::string_view name = m_sources.name(source);
    return comparableName(m_kind, object.name)
        == comparableName(m_kind, QByteArray(name.data(), qsizetype(name.size())))
        || mayBeNameOf(m_kind, object.name, name);
}

bool VolumeComparison::mayBe(const VolumeObject &object, SourceNumber source) const
{
    const SourceObject &facts = m_sources[source];
    return !isSeen(source) && object.size == facts.size && fitsKind(object, facts) && hasNameOf(object, source);
}

/// True when the name may be the changed one of a neighbour, even if a source has exactly this name.
bool VolumeComparison::isAmbiguous(const VolumeObject &object) const
{
    return m_kind == VolumeKind::ISO9660 || m_levels.back().changedNames.contains(object.name);
}

/// Looks among the sources whose name becomes that of the object, and those that have it without its number.
SourceNumber VolumeComparison::sourceByKey(const VolumeObject &object, NameKeys &keys) const
{
    constexpr std::size_t enough = 64; // of many that collide, the first ones will do
    const auto keyOf = [this](const QByteArray &name) {
        return nameKey(m_kind, std::string_view(name.data(), std::size_t(name.size())));
    };
    const bool isAnyFine = object.kind != VolumeObjectKind::Folder && object.size == 0;
    std::vector<SourceNumber> possible;
    QByteArray foundKey;
    for (const QByteArray &key : {keyOf(object.name), keyOf(nameWithoutNumber(object.name))}) {
        std::size_t tried = 0;
        for (auto entry = keys.constFind(key); entry != keys.cend() && entry.key() == key && tried < enough; ++entry) {
            ++tried;
            if (!mayBe(object, *entry))
                continue;
            possible.push_back(*entry);
            foundKey = key;
            if (isAnyFine && object.modified && object.modified->seconds == m_sources[*entry].seconds)
                break;
        }
        if (!possible.empty())
            break;
    }
    if (possible.empty())
        return noSource;
    const SourceNumber source = possible.size() == 1 ? possible.front()
        : isAnyFine                                  ? possible.back()
                                                     : likeliest(object, possible);
    keys.remove(foundKey, source);
    return source;
}

/// Looks on from where the last one was found: the volume's order and that of the sources are nearly the same.
SourceNumber VolumeComparison::sourceByRules(const VolumeObject &object, std::vector<SourceNumber> &candidates,
                                             std::size_t *next)
{
    // Objects without contents are as good as each other; of the rest, the one that is most alike.
    const bool isAnyFine = object.kind != VolumeObjectKind::Folder && object.size == 0;
    std::vector<SourceNumber> possible;
    for (std::size_t tried = 0; tried < candidates.size() && m_triesLeft > 0; ++tried, --m_triesLeft) {
        const std::size_t at = (*next + tried) % candidates.size();
        if (!mayBe(object, candidates[at]))
            continue;
        possible.push_back(candidates[at]);
        if (!isAnyFine)
            continue;
        *next = at;
        break;
    }
    if (possible.empty())
        return noSource;
    const SourceNumber source = possible.size() == 1 ? possible.front() : likeliest(object, possible);
    candidates.erase(std::find(candidates.begin(), candidates.end(), source));
    return source;
}

/// For what is not even alike: a file of another size, a folder where a file should be.
SourceNumber VolumeComparison::sourceByNameAlone(const VolumeObject &object, std::vector<SourceNumber> &candidates)
{
    for (auto candidate = candidates.begin(); candidate != candidates.end() && m_triesLeft > 0;
         ++candidate, --m_triesLeft) {
        const SourceNumber source = *candidate;
        if (isSeen(source) || !hasNameOf(object, source))
            continue;
        candidates.erase(candidate);
        return source;
    }
    return noSource;
}

SourceNumber VolumeComparison::likeliest(const VolumeObject &object, const std::vector<SourceNumber> &sources) const
{
    SourceNumber best = sources.front();
    std::uint64_t bestLikeness = 0;
    for (const SourceNumber source : sources) {
        const std::uint64_t here = likeness(object, source);
        if (here <= bestLikeness)
            continue;
        bestLikeness = here;
        best = source;
    }
    return best;
}

/// How many objects of a folder have their names in the other one, or how many bytes files begin alike with.
std::uint64_t VolumeComparison::likeness(const VolumeObject &object, SourceNumber source) const
{
    if (object.kind == VolumeObjectKind::Folder) {
        std::uint64_t count = 0;
        std::uint64_t same = 0;
        (void)m_reader.listFolder(object, [&](const VolumeObject &child) {
            const std::string_view name(child.name.data(), std::size_t(child.name.size()));
            same += m_sources.child(source, name) != noSource ? 1 : 0;
            ++count;
            return true;
        });
        return 2 * same + (count == m_sources[source].childCount ? 1 : 0);
    }
    constexpr std::size_t length = 65536;
    std::vector<char> recorded(length);
    std::vector<char> wanted(length);
    std::size_t recordedLength = 0;
    const UniqueDescriptor file(m_sources.open(source, O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file || m_reader.read(object, 0, recorded.data(), length, &recordedLength))
        return 0;
    const ssize_t wantedLength = ::pread(file.get(), wanted.data(), length, 0);
    const std::size_t shorter = std::min(recordedLength, std::size_t(std::max<ssize_t>(wantedLength, 0)));
    const auto end = recorded.begin() + std::ptrdiff_t(shorter);
    return std::uint64_t(std::mismatch(recorded.begin(), end, wanted.begin()).first - recorded.begin());
}

/// The folder in which writers gather what lies deeper than ISO 9660 allows; Rock Ridge shows its content elsewhere.
bool VolumeComparison::belongsToRelocation(const VolumeObject &folder) const
{
    if (m_levels.size() != 1 || folder.kind != VolumeObjectKind::Folder || !m_hasRockRidge)
        return false;
    const QByteArray name = folder.name.toLower();
    if (name != "rr_moved" && name != ".rr_moved")
        return false;
    bool isEmpty = true;
    const NSError error = m_reader.listFolder(folder, [&](const VolumeObject &) {
        isEmpty = false;
        return false;
    });
    return m_kind == VolumeKind::ISO9660 || (m_kind == VolumeKind::RockRidge && isEmpty && !error);
}

} // namespace Tessaron
