#include "tools/tessaron/Differences.h"

#include "platform/discimage/source/DiscImageErrors.h"

namespace Tessaron::Tool
{

namespace
{

constexpr std::size_t keptDifferences = 10'000;

} // namespace

QString nameOfDifference(Difference::Kind kind)
{
    switch (kind) {
    case Difference::Kind::Missing:
        return QStringLiteral("missing");
    case Difference::Kind::Extra:
        return QStringLiteral("extra");
    case Difference::Kind::Type:
        return QStringLiteral("type");
    case Difference::Kind::Size:
        return QStringLiteral("size");
    case Difference::Kind::Contents:
        return QStringLiteral("contents");
    case Difference::Kind::LinkTarget:
        return QStringLiteral("link-target");
    case Difference::Kind::Time:
        return QStringLiteral("time");
    case Difference::Kind::Damage:
        return QStringLiteral("damage");
    case Difference::Kind::Source:
        return QStringLiteral("source");
    }
    return {};
}

void DifferenceList::add(Difference difference)
{
    ++m_count;
    for (std::size_t kind = 0; kind < std::size(m_counts); ++kind)
        m_counts[kind] += (difference.volumes >> kind) & 1u;
    if (m_items.size() < keptDifferences)
        m_items.push_back(std::move(difference));
}

void DifferenceList::addDamage(VolumeSet volumes, const QByteArray &path, const NSError &error)
{
    Difference difference{Difference::Kind::Damage, volumes, path, {}, error.localizedFailureReason()};
    if (const QVariant offset = error.userInfo().value(DiscImageErrorOffsetKey); offset.isValid())
        difference.offset = offset.toULongLong();
    add(std::move(difference));
}

} // namespace Tessaron::Tool
