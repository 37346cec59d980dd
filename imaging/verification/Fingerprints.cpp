#include "imaging/verification/Fingerprints.h"

#include "imaging/verification/NameRules.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QHashFunctions>

#include <algorithm>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t readLength = 4096;
/// How deep folders are looked into.
constexpr int maximumDepth = 16;
/// Folders of a damaged volume may hold each other, and would be listed without end.
constexpr std::uint64_t maximumObjects = 1'000'000;

std::uint64_t mixed(std::uint64_t one, std::uint64_t other)
{
    return qHashMulti(0, quint64(one), quint64(other));
}

std::uint64_t ofBytes(const char *bytes, std::size_t length)
{
    return qHashBits(bytes, length);
}

/// A part of the name that stays when it is cut or numbered.
std::uint64_t ofName(VolumeKind kind, std::string_view name)
{
    const QString form = formOfName(kind, name);
    const char16_t first = form.isEmpty() ? u'\0' : form.front().toUpper().unicode();
    return first < 128 ? first : 0;
}

bool counts(VolumeObjectKind kind)
{
    // Links and special files are not in every filesystem.
    return kind == VolumeObjectKind::File || kind == VolumeObjectKind::Folder;
}

} // namespace

Fingerprints::Fingerprints(const VolumeReader &reader, const SourceIndex &sources, const std::stop_token &stop)
    : m_reader(reader)
    , m_sources(sources)
    , m_stop(stop)
    , m_objectsLeft(maximumObjects)
{
}

std::uint64_t Fingerprints::ofObject(const VolumeObject &object)
{
    switch (object.kind) {
    case VolumeObjectKind::File:
        return ofFile(object);
    case VolumeObjectKind::Folder:
        return ofFolder(object, 0);
    case VolumeObjectKind::SymbolicLink:
        return mixed(2, ofBytes(object.linkTarget.constData(), std::size_t(object.linkTarget.size())));
    case VolumeObjectKind::Other:
        break;
    }
    return 3;
}

std::uint64_t Fingerprints::ofSource(SourceNumber source)
{
    switch (m_sources[source].kind) {
    case VolumeObjectKind::File:
        return ofSourceFile(source);
    case VolumeObjectKind::Folder:
        return ofSourceFolder(source, 0);
    case VolumeObjectKind::SymbolicLink: {
        const QByteArray target = m_sources.linkTarget(source);
        return mixed(2, ofBytes(target.constData(), std::size_t(target.size())));
    }
    case VolumeObjectKind::Other:
        break;
    }
    return 3;
}

std::uint64_t Fingerprints::ofFile(const VolumeObject &file)
{
    char bytes[readLength];
    std::size_t length = 0;
    if (file.size > 0 && m_reader.read(file, 0, bytes, sizeof bytes, &length))
        return 0;
    return mixed(file.size, ofBytes(bytes, length));
}

std::uint64_t Fingerprints::ofSourceFile(SourceNumber file) const
{
    char bytes[readLength];
    std::size_t length = 0;
    if (m_sources[file].size > 0) {
        const UniqueDescriptor descriptor(m_sources.open(file, O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        // A file that cannot be read counts as one without bytes; the comparison of contents tells of it.
        if (descriptor)
            (void)readFully(descriptor.get(), 0, bytes, sizeof bytes, &length);
    }
    return mixed(m_sources[file].size, ofBytes(bytes, length));
}

std::uint64_t Fingerprints::ofFolder(const VolumeObject &folder, int depth)
{
    if (depth == maximumDepth)
        return 1;
    std::vector<VolumeObject> folders;
    std::uint64_t sum = 1; // a sum, since the two orders differ
    const NSError error = m_reader.listFolder(folder, [&](const VolumeObject &child) {
        const std::string_view name(child.name.data(), std::size_t(child.name.size()));
        if (child.kind == VolumeObjectKind::Folder)
            folders.push_back(child);
        else if (counts(child.kind))
            sum += mixed(ofName(m_reader.facts().kind, name), ofFile(child));
        return m_objectsLeft-- > 1 && !m_stop.stop_requested();
    });
    for (const VolumeObject &child : folders) {
        if (error || m_objectsLeft <= 1 || m_stop.stop_requested())
            break;
        const std::string_view name(child.name.data(), std::size_t(child.name.size()));
        sum += mixed(ofName(m_reader.facts().kind, name), ofFolder(child, depth + 1));
    }
    m_objectsLeft = std::max<std::uint64_t>(m_objectsLeft, 1);
    return sum;
}

std::uint64_t Fingerprints::ofSourceFolder(SourceNumber folder, int depth) const
{
    if (depth == maximumDepth)
        return 1;
    const SourceObject &facts = m_sources[folder];
    std::uint64_t sum = 1;
    for (SourceNumber child = facts.firstChild; child < facts.firstChild + facts.childCount; ++child) {
        if (m_stop.stop_requested())
            break;
        const VolumeObjectKind kind = m_sources[child].kind;
        if (!counts(kind))
            continue;
        const std::uint64_t print =
            kind == VolumeObjectKind::Folder ? ofSourceFolder(child, depth + 1) : ofSourceFile(child);
        sum += mixed(ofName(m_reader.facts().kind, m_sources.name(child)), print);
    }
    return sum;
}

} // namespace Tessaron
