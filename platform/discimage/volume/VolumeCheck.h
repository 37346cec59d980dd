#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>

namespace Tessaron
{

/// Something that is wrong in an image, found while its structures were held against one another.
struct VolumeProblem {
    enum class Kind : std::uint8_t {
        Damaged, ///< a structure contradicts its standard, its checksum, its copy or another structure
        Truncated, ///< the image ends before the volume does
        Remains, ///< a part of a filesystem or partition map whose beginning cannot be found any more
        Unsupported, ///< sound as far as it was looked at, but of a kind that is not read here
    };

    Kind kind = Kind::Damaged;
    std::optional<VolumeKind> volume; ///< absent for what belongs to no filesystem, such as a partition map
    /// True when what a reader shows depends on the structure; false for a copy, a count or a field that only repair
    /// tools and writers use.
    bool isVisible = true;
    std::uint64_t offset = 0; ///< in the image, bytes
    QString structure; ///< such as "path table"
    QString message; ///< what is wrong, a sentence without the full stop and without the place
    /// The part of the image in which `offset` counts, such as "track 2"; empty for its main part.
    QString part;
};

/// Told one problem, in the order in which they are found; the problem lives for the call only. False ends the check.
using VolumeProblemVisitor = std::function<bool(const VolumeProblem &problem)>;

/// Where the checks of one image leave what they find. Not for several threads.
class TESSARON_EXPORT VolumeProblemReport
{
public:
    VolumeProblemReport(VolumeProblemVisitor visitor, std::stop_token stop)
        : m_visitor(std::move(visitor))
        , m_stop(std::move(stop))
    {
    }

    /// Passes a problem on.
    void add(const VolumeProblem &problem);
    /// An error of a reader, at the offset that it names.
    void addError(VolumeKind volume, const QString &structure, const NSError &error);

    /// True once the caller of the check has asked for its end.
    [[nodiscard]] bool isStopped() const { return m_isStopped || m_stop.stop_requested(); }
    /// Problems passed on so far.
    [[nodiscard]] std::uint64_t count() const { return m_count; }

private:
    const VolumeProblemVisitor m_visitor;
    const std::stop_token m_stop;
    std::uint64_t m_count = 0;
    bool m_isStopped = false;
};

/// The part of a report that concerns one filesystem.
class VolumeProblems
{
public:
    VolumeProblems(VolumeProblemReport &report, VolumeKind volume)
        : m_report(report)
        , m_volume(volume)
    {
    }

    void damaged(std::uint64_t offset, const QString &structure, const QString &message) const
    {
        m_report.add({VolumeProblem::Kind::Damaged, m_volume, true, offset, structure, message, {}});
    }
    /// Something that no reader shows is wrong: a copy or a count.
    void unnoticed(std::uint64_t offset, const QString &structure, const QString &message) const
    {
        m_report.add({VolumeProblem::Kind::Damaged, m_volume, false, offset, structure, message, {}});
    }
    void truncated(std::uint64_t offset, const QString &structure, const QString &message) const
    {
        m_report.add({VolumeProblem::Kind::Truncated, m_volume, true, offset, structure, message, {}});
    }
    void remains(std::uint64_t offset, const QString &structure, const QString &message) const
    {
        m_report.add({VolumeProblem::Kind::Remains, m_volume, true, offset, structure, message, {}});
    }
    /// Sound as far as it goes, but not read here.
    void unsupported(std::uint64_t offset, const QString &structure, const QString &message) const
    {
        m_report.add({VolumeProblem::Kind::Unsupported, m_volume, true, offset, structure, message, {}});
    }
    void error(const QString &structure, const NSError &error) const { m_report.addError(m_volume, structure, error); }
    [[nodiscard]] bool isStopped() const { return m_report.isStopped(); }

private:
    VolumeProblemReport &m_report;
    const VolumeKind m_volume;
};

} // namespace Tessaron
