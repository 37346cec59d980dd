#pragma once

#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/ZelFileAttribute.h>

#include <QString>

#include <chrono>
#include <cstdint>

namespace Tessaron
{
class NSError;
}

namespace Tessaron::Desktop
{

// What several windows say, in the user's language.

/// "1.2 GB", by the framework's rules with the user's decimal sign.
[[nodiscard]] QString sizeText(std::uint64_t bytes);

/// "0:32" or "1:02:05".
[[nodiscard]] QString durationText(std::chrono::seconds duration);

/// "Writing", "Comparing" … `isForDrive` when it is a drive that takes the image, and not a file.
[[nodiscard]] QString phaseText(DiscJobPhase phase, bool isForDrive = false);

/// "Writing: 120 MB of 1.2 GB at 85 MB/s, 0:12 left", as far as it is known.
[[nodiscard]] QString progressText(const DiscJobProgress &progress, bool isForDrive = false);

/// What an object's options ask for, in words; empty for nothing special.
[[nodiscard]] QString optionsText(const _TessaronAttributes &options);

/// What an error says, and what to do about it.
[[nodiscard]] QString errorText(const NSError &error);

/// The names of a disc and of a folder that have got none yet.
[[nodiscard]] QString untitledDiscName();
[[nodiscard]] QString untitledFolderName();

/// A name that any file system takes as that of a file.
[[nodiscard]] QString fileNameFor(const QString &name);

} // namespace Tessaron::Desktop
