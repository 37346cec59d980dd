#pragma once

#include "platform/coreservices/AliasRecord.h"
#include "platform/foundation/OSStatus.h"

#include <QByteArray>

#include <vector>

namespace Tessaron
{

/// Looks for the file of one alias record, from the likeliest place to the least.
class AliasSearch
{
public:
    explicit AliasSearch(const AliasRecord &record);

    /// noErr when something was found; nsvErr or fnfErr else.
    [[nodiscard]] OSErr run();

    [[nodiscard]] const QByteArray &path() const { return m_path; }
    /// False when another file has taken the place of the one that was meant.
    [[nodiscard]] bool isOriginal() const { return m_isOriginal; }

private:
    void collectPlaces();
    [[nodiscard]] bool isAt(const QByteArray &path);
    [[nodiscard]] bool isProvenAt(const QByteArray &path);
    [[nodiscard]] bool findByHandle();
    [[nodiscard]] bool findInFolders();
    [[nodiscard]] bool findNearby();
    [[nodiscard]] bool findBelow(const QByteArray &top, std::uint64_t device);
    [[nodiscard]] bool findSuccessor();

    const AliasRecord &m_record;
    std::vector<QByteArray> m_places; ///< paths at which the file should be
    std::vector<QByteArray> m_volumes; ///< mount points of its volume
    QByteArray m_path;
    bool m_isOriginal = true;
};

} // namespace Tessaron
