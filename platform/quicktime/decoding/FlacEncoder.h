#pragma once

#include "platform/quicktime/MovieStorage.h"
#include "platform/quicktime/decoding/FFmpegHandles.h"
#include "platform/quicktime/decoding/MovieOutput.h"

#include <QMap>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Tessaron
{

/// Encodes the sound of a CD as FLAC into a file; see FlacFile. The file must outlive this object.
class FlacEncoder
{
public:
    [[nodiscard]] static Result<std::unique_ptr<FlacEncoder>> create(MovieStorage &storage,
                                                                     const QMap<QString, QString> &tags);

    /// Appends samples of both channels, 4 bytes each.
    [[nodiscard]] NSError write(const char *bytes, std::size_t samples);
    [[nodiscard]] NSError finish();

private:
    explicit FlacEncoder(MovieStorage &storage);
    [[nodiscard]] NSError begin(const QMap<QString, QString> &tags);
    [[nodiscard]] int openEncoder();
    [[nodiscard]] int writeHead(const QMap<QString, QString> &tags);
    [[nodiscard]] int encode(AVFrame *frame);
    [[nodiscard]] NSError failed(int code) const;

    MovieStorage &m_storage;
    MovieOutput m_file;
    CodecContext m_encoder;
    OutputContext m_output;
    Frame m_frame; ///< as long as the encoder wants them, filled up to m_filled
    Packet m_packet;
    std::size_t m_filled = 0; ///< samples
    std::int64_t m_encoded = 0;
};

} // namespace Tessaron
