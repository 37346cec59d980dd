#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// How grave libburn takes a message to be; in ascending order.
enum class DriveMessageSeverity : std::uint8_t { Note, Hint, Warning, Sorry, Mishap, Failure, Fatal };

/// Why a drive refused a command: the three numbers of SPC-3 4.5.6 that name the reason.
struct DriveSense {
    std::uint8_t key = 0;
    std::uint8_t code = 0; ///< additional sense code
    std::uint8_t qualifier = 0; ///< of that code

    friend bool operator==(const DriveSense &, const DriveSense &) = default;
};

/// What libburn says of a drive, or of itself.
struct DriveMessage {
    std::uint32_t code = 0; ///< libburn's own number of the message
    DriveMessageSeverity severity = DriveMessageSeverity::Note;
    QString text;
    int errnoValue = 0;

    /// The drive's own reason, where the text has one: it stands there as "[K AA QQ]", hexadecimal.
    [[nodiscard]] std::optional<DriveSense> sense() const;
};

/// Takes all messages that wait. Only on the control thread; see BurnControl.
[[nodiscard]] std::vector<DriveMessage> takeDriveMessages();

} // namespace Tessaron
