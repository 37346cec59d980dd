#include "fuzz/FuzzTarget.h"

#include "platform/quicktime/SoundRecords.h"

#include <cmath>

// What a program that decodes hostile files may send to the process that asked it.

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const QByteArray record(reinterpret_cast<const char *>(bytes), qsizetype(size));
    SoundProtocol::OpenedSound opened;
    static_cast<void>(SoundProtocol::readOpened(record, &opened));
    AudioDamageReport damage;
    if (SoundProtocol::readDamage(record, &damage))
        require(damage.places.size() <= AudioDamageReport::mostDescribed && damage.count >= damage.places.size(),
                "a report describes a part of its places");
    require(bool(SoundProtocol::errorOfRecord(record, "a.wav")), "an error is an error whatever it says");
    SoundProtocol::OpenRequest request;
    if (SoundProtocol::readRequest(record, &request))
        require(std::isfinite(request.gain), "a gain is a number");
    return 0;
}
