#pragma once

#include "platform/quicktime/decoding/AudioStreamReader.h"
#include "platform/quicktime/decoding/MovieOutput.h"

#include <stop_token>
#include <vector>

namespace Tessaron
{

/// Writes segments of sound into the file of a movie, one behind the other. For one movie.
class MovieWriter
{
public:
    MovieWriter(MovieStorage &storage, std::stop_token stop);

    [[nodiscard]] NSError write(const std::vector<QTSoundSegment> &segments);

private:
    using Segment = QTSoundSegment;

    [[nodiscard]] NSError begin(const AVCodecParameters &sound);
    [[nodiscard]] NSError end();
    [[nodiscard]] NSError copyPackets(const Segment &segment, MediaContainer &source, AVStream &stream, MediaRun heard);
    [[nodiscard]] NSError writePacket(AVPacket &packet);
    [[nodiscard]] NSError decode(const Segment &segment);
    [[nodiscard]] NSError beginPcm(const AVFrame &frame);
    [[nodiscard]] NSError writeSamples(const SampleRun &run);
    [[nodiscard]] NSError failed(int code) const;

    MovieStorage &m_storage;
    const MovieOutput m_file; ///< outlives the context that writes into it
    const std::stop_token m_stop;
    OutputContext m_output;
    Resampler m_interleaver;
    AVCodecParameters *m_form = nullptr; ///< of the samples written; the output's
    AVSampleFormat m_sourceFormat = AV_SAMPLE_FMT_NONE;
    AVSampleFormat m_format = AV_SAMPLE_FMT_NONE;
    std::int64_t m_written = 0; ///< samples
};

} // namespace Tessaron
