#pragma once

#include "platform/quicktime/MediaErrors.h"

#include <QByteArray>

#include <unistd.h>

namespace Tessaron
{

/// The process that has started this one. When it was killed, so that it could not end this one, what is being made
/// here is of no use to it any more.
class Starter
{
public:
    [[nodiscard]] bool hasEnded() const { return ::getppid() != m_identifier; }
    /// The error of one that has ended, about what was being made for it.
    [[nodiscard]] static NSError endedError(const QByteArray &path)
    {
        return mediaError(userCanceledErr, path, QStringLiteral("the program that asked for the sound has ended"),
                          QStringLiteral("Start again."));
    }

private:
    const pid_t m_identifier = ::getppid();
};

} // namespace Tessaron
