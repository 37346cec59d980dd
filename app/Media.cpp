#include "app/Media.h"

#include <QCoreApplication>

#include <algorithm>

namespace Tessaron::Desktop
{

namespace
{

struct Media {
    Q_DECLARE_TR_FUNCTIONS(Media)
};

constexpr std::uint64_t block = 2048;

} // namespace

const QList<DiscMedium> &discMedia()
{
    // Where discs of one kind differ (DVD-R and DVD+R), the smaller counts: what fits on it fits on both. Most CDs of
    // 80 minutes say of themselves that they have room for 359,849 blocks, and no more is written to them.
    static const QList<DiscMedium> media = {
        {QStringLiteral("any"), Media::tr("Any size"), 0},
        {QStringLiteral("cd-650"), Media::tr("CD, 74 minutes"), 333'000 * block},
        {QStringLiteral("cd-700"), Media::tr("CD, 80 minutes"), 359'849 * block},
        {QStringLiteral("dvd"), Media::tr("DVD"), 2'295'104 * block},
        {QStringLiteral("dvd-dl"), Media::tr("DVD, two layers"), 4'171'712 * block},
        {QStringLiteral("bd"), Media::tr("Blu-ray"), 12'219'392 * block},
        {QStringLiteral("bd-dl"), Media::tr("Blu-ray, two layers"), 24'438'784 * block},
    };
    return media;
}

const DiscMedium &discMediumOfKey(const QString &key)
{
    const QList<DiscMedium> &media = discMedia();
    const auto found =
        std::find_if(media.begin(), media.end(), [&key](const DiscMedium &medium) { return medium.key == key; });
    return found == media.end() ? media.front() : *found;
}

} // namespace Tessaron::Desktop
