#pragma once

#include <QByteArray>
#include <QStringList>

#include <stop_token>

namespace Tessaron
{

class SoundHelpers;

/// What a file says of its sound, as an MP3 file says it.
struct CarriedTags {
    QByteArray bytes; ///< for the begin of the MP3 file; empty where there is nothing to say
    QStringList notes; ///< what could not be taken, each in a sentence: the sound is there all the same
};

/// Texts and cover of the source, which one of the helpers opens. Any thread.
[[nodiscard]] CarriedTags carriedTags(const QByteArray &source, SoundHelpers &helpers, const std::stop_token &stop);

} // namespace Tessaron
