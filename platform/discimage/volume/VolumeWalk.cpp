#include "platform/discimage/volume/VolumeWalk.h"

#include "platform/discimage/source/DiscImageErrors.h"

#include <unordered_set>
#include <vector>

namespace Tessaron
{

namespace
{

/// Longer paths exist in no sound image: folders nested sixty thousand deep under the longest of names.
constexpr qsizetype longestPath = qsizetype(16) << 20;

class Walk
{
public:
    Walk(const VolumeReader &reader, const VolumeWalker &walker)
        : m_reader(reader)
        , m_walker(walker)
    {
    }

    bool run()
    {
        if (!enter(m_reader.root()))
            return false;
        while (!m_levels.empty()) {
            Level &level = m_levels.back();
            if (level.next == level.folders.size()) {
                if (m_walker.leaveFolder)
                    m_walker.leaveFolder(m_path);
                m_path.truncate(level.parentPathLength);
                m_levels.pop_back();
                continue;
            }
            const VolumeObject folder = std::move(level.folders[level.next++]);
            if (!enter(folder))
                return false;
        }
        return true;
    }

private:
    /// A folder that was listed, and what is still to be walked below it.
    struct Level {
        qsizetype parentPathLength = 0;
        std::vector<VolumeObject> folders;
        std::size_t next = 0;
    };

    /// Lists a folder; false when the walk is to end.
    bool enter(const VolumeObject &folder)
    {
        const qsizetype parentPathLength = m_path.size();
        if (!m_path.isEmpty())
            m_path += '/';
        m_path += folder.name;
        if (m_walker.enterFolder && !m_walker.enterFolder(m_path, folder)) {
            m_path.truncate(parentPathLength);
            return true;
        }
        m_levels.push_back({parentPathLength, {}, 0});
        NSError error = check(folder);
        bool goesOn = true;
        if (!error) {
            error = m_reader.listFolder(folder, [&](const VolumeObject &object) {
                if (object.kind == VolumeObjectKind::Folder)
                    m_levels.back().folders.push_back(object);
                goesOn = !m_walker.object || m_walker.object(m_path, object);
                return goesOn;
            });
        }
        if (error && goesOn)
            goesOn = !m_walker.failed || m_walker.failed(m_path, error);
        return goesOn;
    }

    NSError check(const VolumeObject &folder)
    {
        const auto loop = [&](const QString &reason) {
            return discImageError(DiscImageErrorCode::Loop, folder.recordOffset, reason);
        };
        if (m_visited.contains(folder.location))
            return loop(QStringLiteral("The folder leads to one that is listed elsewhere"));
        m_visited.insert(folder.location);
        if (m_path.size() > longestPath)
            return loop(QStringLiteral("The path of the folder is longer than %1 bytes").arg(longestPath));
        const std::uint64_t room = m_reader.source().length() - m_listed;
        if (folder.listingLength > room)
            return loop(QStringLiteral("The folders take more bytes together than the image has"));
        m_listed += folder.listingLength;
        return {};
    }

    const VolumeReader &m_reader;
    const VolumeWalker &m_walker;
    QByteArray m_path;
    std::vector<Level> m_levels;
    std::unordered_set<std::uint64_t> m_visited;
    std::uint64_t m_listed = 0;
};

} // namespace

bool walkVolume(const VolumeReader &reader, const VolumeWalker &walker)
{
    return Walk(reader, walker).run();
}

} // namespace Tessaron
