#include "platform/discrecording/drives/DriveMessages.h"

#include "platform/discrecording/drives/LibBurn.h"

#include <QRegularExpression>

#include <array>

namespace Tessaron
{

namespace
{

DriveMessageSeverity severityOf(const char *name)
{
    const QLatin1String text(name);
    if (text == QLatin1String("NOTE"))
        return DriveMessageSeverity::Note;
    if (text == QLatin1String("HINT"))
        return DriveMessageSeverity::Hint;
    if (text == QLatin1String("WARNING"))
        return DriveMessageSeverity::Warning;
    if (text == QLatin1String("SORRY"))
        return DriveMessageSeverity::Sorry;
    if (text == QLatin1String("MISHAP"))
        return DriveMessageSeverity::Mishap;
    if (text == QLatin1String("FAILURE"))
        return DriveMessageSeverity::Failure;
    return DriveMessageSeverity::Fatal;
}

} // namespace

std::optional<DriveSense> DriveMessage::sense() const
{
    static const QRegularExpression pattern(
        QStringLiteral("\\[([0-9A-Fa-f]{1,2}) ([0-9A-Fa-f]{2}) ([0-9A-Fa-f]{2})\\]"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int group) { return std::uint8_t(match.capturedView(group).toUInt(nullptr, 16)); };
    return DriveSense{number(1), number(2), number(3)};
}

std::vector<DriveMessage> takeDriveMessages()
{
    std::vector<DriveMessage> messages;
    // The first number asks for all of them: those of a lower severity would be lost.
    std::array<char, 4> all{"ALL"};
    std::vector<char> text(BURN_MSGS_MESSAGE_LEN);
    std::array<char, 80> severity{};
    int code = 0;
    int errnoValue = 0;
    while (burn::burn_msgs_obtain(all.data(), &code, text.data(), &errnoValue, severity.data()) == 1)
        messages.push_back(
            {std::uint32_t(code), severityOf(severity.data()), QString::fromUtf8(text.data()), errnoValue});
    return messages;
}

} // namespace Tessaron
