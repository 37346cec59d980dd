#pragma once

#include <QList>
#include <QString>

#include <cstdint>

namespace Tessaron::Desktop
{

/// A kind of disc that someone may want to fill.
struct DiscMedium {
    QString key; ///< for settings and projects
    QString name; ///< for people
    std::uint64_t bytes; ///< of user data; 0 for any size
};

/// All that are known, the smallest first; the first one has no limit.
[[nodiscard]] const QList<DiscMedium> &discMedia();
/// The one of this key; that without a limit for an unknown one.
[[nodiscard]] const DiscMedium &discMediumOfKey(const QString &key);

} // namespace Tessaron::Desktop
