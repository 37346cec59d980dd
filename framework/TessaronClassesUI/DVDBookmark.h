#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// A place on the disc that is open in the DVD session. What is in it only the session can read; it stands for that one
/// disc, and outlives the session. On any thread.
class TESSARON_EXPORT DVDBookmark
{
public:
    /// The place that plays now; without data, and with a line in the log, where the session has no such place to tell,
    /// as in a menu. Never null.
    [[nodiscard]] static std::shared_ptr<DVDBookmark> init();

    /// Plays from there on. A failure is a line in the log.
    void gotoBookmark() const;

    /// Empty where there is no place.
    [[nodiscard]] const QByteArray &data() const { return m_data; }
    /// Of the data, bytes.
    [[nodiscard]] std::uint32_t size() const { return std::uint32_t(m_data.size()); }

private:
    DVDBookmark() = default;

    QByteArray m_data;
};

} // namespace Tessaron
