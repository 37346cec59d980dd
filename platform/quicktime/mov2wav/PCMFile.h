#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/PCMHeaders.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// A WAVE or AIFF file that is being written: two channels of 16 bits. Unless it is finished, nothing is left of it.
class PCMFile
{
public:
    enum class Kind : std::uint8_t { Wave, AIFF };

    /// Makes the file, or empties the one that is there. `expectedBytes` is how many bytes of samples will come, if
    /// that is known, else 0: what an AIFF file cannot hold is refused at once then, and a WAVE file whose size is
    /// known has the plain header of 44 bytes. Only a regular file will do, and not `source`, which would be lost.
    [[nodiscard]] static Result<PCMFile> create(const QByteArray &path, Kind kind, const PCMForm &form,
                                                std::uint64_t expectedBytes, const QByteArray &source);
    ~PCMFile();
    PCMFile(PCMFile &&other) = default;
    PCMFile &operator=(PCMFile &&) = delete;

    /// Appends samples of both channels, the lower byte first; the bytes are changed on the way.
    [[nodiscard]] NSError write(char *samples, std::size_t bytes);
    /// Writes the header that fits, and closes.
    [[nodiscard]] NSError finish();

private:
    PCMFile(UniqueDescriptor file, QByteArray path, Kind kind, const PCMForm &form, bool hasRoom);
    [[nodiscard]] QByteArray header() const;
    [[nodiscard]] NSError error(int errnoValue) const;

    UniqueDescriptor m_file; ///< invalid once it is finished
    QByteArray m_path;
    Kind m_kind;
    PCMForm m_form;
    bool m_hasRoom; ///< a WAVE header that can become one of RF64
    std::uint64_t m_bytes = 0;
};

} // namespace Tessaron
