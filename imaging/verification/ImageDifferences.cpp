#include "platform/discimage/source/DiscImageErrors.h"
#include <TessaronClasses/ImageDifferences.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t keptDifferences = 10'000;

} // namespace

QString nameOfDifference(ImageDifference::Kind kind)
{
    switch (kind) {
    case ImageDifference::Kind::Missing:
        return QStringLiteral("missing");
    case ImageDifference::Kind::Extra:
        return QStringLiteral("extra");
    case ImageDifference::Kind::Type:
        return QStringLiteral("type");
    case ImageDifference::Kind::Size:
        return QStringLiteral("size");
    case ImageDifference::Kind::Contents:
        return QStringLiteral("contents");
    case ImageDifference::Kind::LinkTarget:
        return QStringLiteral("link-target");
    case ImageDifference::Kind::Time:
        return QStringLiteral("time");
    case ImageDifference::Kind::Damage:
        return QStringLiteral("damage");
    case ImageDifference::Kind::Source:
        return QStringLiteral("source");
    }
    return {};
}

void ImageDifferenceList::add(ImageDifference difference)
{
    ++m_count;
    for (std::size_t kind = 0; kind < std::size(m_counts); ++kind)
        m_counts[kind] += (difference.volumes >> kind) & 1u;
    if (m_items.size() < keptDifferences)
        m_items.push_back(std::move(difference));
}

void ImageDifferenceList::addDamage(VolumeSet volumes, const QByteArray &path, const NSError &error)
{
    ImageDifference difference{ImageDifference::Kind::Damage, volumes, path, {}, error.localizedFailureReason()};
    if (const QVariant offset = error.userInfo().value(DiscImageErrorOffsetKey); offset.isValid())
        difference.offset = offset.toULongLong();
    add(std::move(difference));
}

} // namespace Tessaron
