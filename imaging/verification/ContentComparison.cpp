#include "imaging/verification/ContentComparison.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t pieceSize = std::size_t(1) << 20;
constexpr std::size_t windowSize = 4 * pieceSize;

} // namespace

ContentComparison::ContentComparison(const DiscImageSource &image, const SourceIndex &sources, ContentPlan &plan,
                                     ImageDifferenceList &differences)
    : m_image(image)
    , m_sources(sources)
    , m_plan(plan)
    , m_differences(differences)
    , m_places(plan.sortedPlaces())
    , m_window(windowSize)
    , m_buffer(pieceSize)
{
    for (std::size_t index = 0; index < m_places.size(); ++index)
        m_byteCount += isSameAsBefore(index) ? 0 : m_places[index].length;
}

/// Names of one file share their place; they are neighbours in the order of the places or were compared nearby.
bool ContentComparison::isSameAsBefore(std::size_t index) const
{
    const ContentPlace &place = m_places[index];
    for (std::size_t before = index; before > 0 && m_places[before - 1].offset == place.offset; --before) {
        const ContentPlace &other = m_places[before - 1];
        const SourceObject &one = m_sources[place.source];
        const SourceObject &two = m_sources[other.source];
        if (one.device == two.device && one.inode == two.inode && m_plan.runsOf(place) == m_plan.runsOf(other))
            return true;
        if (index - before > 16) // many files that share a place without being one: compare them all
            return false;
    }
    return false;
}

void ContentComparison::run(const std::function<bool(std::uint64_t)> &progress)
{
    m_progress = &progress;
    for (std::size_t index = 0; index < m_places.size() && !m_isCancelled; ++index) {
        if (!isSameAsBefore(index))
            compare(m_places[index]);
        m_isCancelled = m_isCancelled || !progress(m_done);
    }
}

void ContentComparison::compare(const ContentPlace &place)
{
    const UniqueDescriptor file(m_sources.open(place.source, O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file) {
        m_differences.add({ImageDifference::Kind::Source,
                           0,
                           m_sources.discPath(place.source),
                           {},
                           QStringLiteral("the source cannot be read: %1").arg(systemText(errno))});
        return;
    }
    std::uint64_t position = 0;
    for (const VolumeExtent &run : m_plan.runsOf(place)) {
        if (!compareRun(place, file.get(), run, position))
            return;
        position += run.length;
    }
}

/// False when the rest of the file need not be looked at.
bool ContentComparison::compareRun(const ContentPlace &place, int file, const VolumeExtent &run, std::uint64_t position)
{
    static const std::vector<char> zeros(pieceSize);
    for (std::uint64_t done = 0; done < run.length;) {
        const auto length = std::size_t(std::min<std::uint64_t>(pieceSize, run.length - done));
        std::size_t got = 0;
        const int failure = readFully(file, position + done, m_buffer.data(), length, &got);
        if (failure != 0 || got < length) {
            const QString reason =
                failure != 0 ? systemText(failure) : QStringLiteral("it has become shorter since it was listed");
            m_differences.add({ImageDifference::Kind::Source,
                               0,
                               m_sources.discPath(place.source),
                               {},
                               QStringLiteral("the source cannot be read: %1").arg(reason)});
            return false;
        }
        const char *const bytes = run.isHole ? zeros.data() : imageBytes(place, run.offset + done, length);
        if (bytes == nullptr)
            return false;
        if (std::memcmp(bytes, m_buffer.data(), length) != 0) {
            reportMismatch(place, m_buffer.data(), bytes, length, position + done, run.offset + done);
            return false;
        }
        done += length;
        m_done += length;
        if (!(*m_progress)(m_done)) {
            m_isCancelled = true;
            return false;
        }
    }
    return true;
}

const char *ContentComparison::imageBytes(const ContentPlace &place, std::uint64_t offset, std::size_t length)
{
    if (offset < m_windowStart || offset + length > m_windowStart + m_windowLength) {
        const std::uint64_t left = m_image.length() - std::min(m_image.length(), offset);
        const std::size_t wanted = std::max(length, std::size_t(std::min<std::uint64_t>(left, windowSize)));
        m_windowLength = 0;
        if (const NSError error = m_image.read(offset, m_window.data(), wanted)) {
            m_differences.addDamage(place.volumes, m_sources.discPath(place.source), error);
            return nullptr;
        }
        m_windowStart = offset;
        m_windowLength = wanted;
    }
    return m_window.data() + (offset - m_windowStart);
}

void ContentComparison::reportMismatch(const ContentPlace &place, const char *fromSource, const char *fromImage,
                                       std::size_t length, std::uint64_t position, std::uint64_t offset)
{
    const auto at = std::size_t(std::mismatch(fromSource, fromSource + length, fromImage).first - fromSource);
    m_differences.add({ImageDifference::Kind::Contents, place.volumes, m_sources.discPath(place.source), offset + at,
                       QStringLiteral("the contents differ from byte %1 of the file on").arg(position + at)});
}

} // namespace Tessaron
