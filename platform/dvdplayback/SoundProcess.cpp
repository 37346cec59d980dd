#include "platform/dvdplayback/SoundProcess.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

/// A sound server that does not answer keeps the program from its end.
constexpr std::chrono::seconds patience(2);

} // namespace

SoundProcess::SoundProcess(SharedSound *sound, std::uint32_t rate)
{
    const QByteArray program =
        fileSystemRepresentation(NSBundle::mainBundle()->pathForResource(QStringLiteral("TessaronDVDSound")));
    std::array<int, 2> ends;
    if (program.isEmpty()) {
        sound->tellAbsent("the program of TessaronClasses that plays it, TessaronDVDSound, is not installed");
        return;
    }
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        sound->tellAbsent(::strerror(errno));
        return;
    }
    const UniqueDescriptor theirs(ends[0]);
    m_life.reset(ends[1]);
    HelperSettings settings;
    settings.standardInput = theirs.get();
    settings.standardOutput = sound->descriptor();
    settings.hasOwnGroup = true;
    QList<QByteArray> arguments;
    if (rate > 0)
        arguments << QByteArray::number(rate);
    int errnoValue = 0;
    m_process = HelperProcess::start(program, arguments, &errnoValue, settings);
    if (!m_process)
        sound->tellAbsent(::strerror(errnoValue));
}

SoundProcess::~SoundProcess()
{
    m_life.reset();
    if (!m_process || m_process->waitForEnd(patience))
        return;
    m_process->kill();
    m_process->waitForEnd(patience);
}

} // namespace Tessaron
