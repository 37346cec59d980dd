#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"
#include "platform/quicktime/QTMovie.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstddef>
#include <memory>

namespace Tessaron
{

class FlacEncoder;
struct MediaService;

/// A FLAC file (RFC 9639) of the sound of a CD, that is being written; made by the media module (see QTMovie.h). One
/// thread at a time.
class FlacFile
{
public:
    /// Writes into the open file, which is empty, from its start; the descriptor stays the caller's. The path is for
    /// errors. Tags are those of CDSound::tags().
    [[nodiscard]] static Result<std::unique_ptr<FlacFile>> create(int descriptor, const QByteArray &path,
                                                                  const QMap<QString, QString> &tags);
    ~FlacFile();
    FlacFile(const FlacFile &) = delete;
    FlacFile &operator=(const FlacFile &) = delete;

    /// Appends samples of both channels, 4 bytes each, the lower byte first.
    [[nodiscard]] NSError write(const char *bytes, std::size_t samples);
    /// Writes what is left, and length and checksum of all into the head. Without it the file is not whole.
    [[nodiscard]] NSError finish();

private:
    FlacFile(const MediaService &service, MovieStorageHandle storage, FlacEncoder *encoder);

    const MediaService &m_service;
    MovieStorageHandle m_storage;
    FlacEncoder *const m_encoder; ///< the module's, closed by this object; goes before the storage
};

} // namespace Tessaron
