#pragma once

#include "platform/dvdplayback/SharedSound.h"
#include "platform/foundation/HelperProcess.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// The program TessaronDVDSound, which plays what is in the shared memory. It is apart from the helper, which is shut
/// off from devices and sound servers, and apart from the session's process, which may use SDL itself and need not
/// load, or fall with, the thirty libraries of sound servers. The end of the object ends the program.
class SoundProcess
{
public:
    /// A program that cannot be started is told in the memory as an absent device. With a rate, the device takes
    /// samples at that rate, whatever its own is; without one, at a usual rate of its own.
    explicit SoundProcess(SharedSound *sound, std::uint32_t rate = 0);
    ~SoundProcess();
    SoundProcess(const SoundProcess &) = delete;
    SoundProcess &operator=(const SoundProcess &) = delete;

private:
    UniqueDescriptor m_life; ///< the program's input ends with it
    std::unique_ptr<HelperProcess> m_process; ///< null when it could not be started
};

} // namespace Tessaron
