#include "platform/quicktime/decoding/DecodingService.h"

#include "platform/quicktime/decoding/FlacEncoder.h"
#include "platform/quicktime/decoding/MovieOpening.h"
#include "platform/quicktime/decoding/MovieWriter.h"

namespace Tessaron
{

namespace
{

NSError writeMovie(const std::vector<QTSoundSegment> &segments, MovieStorage &storage, const std::stop_token &stop)
{
    return MovieWriter(storage, stop).write(segments);
}

Result<FlacEncoder *> beginFlac(MovieStorage &storage, const QMap<QString, QString> &tags)
{
    Result<std::unique_ptr<FlacEncoder>> encoder = FlacEncoder::create(storage, tags);
    if (!encoder)
        return encoder.error();
    return encoder->release();
}

NSError writeFlac(FlacEncoder &encoder, const char *bytes, std::size_t samples)
{
    return encoder.write(bytes, samples);
}

NSError finishFlac(FlacEncoder &encoder)
{
    return encoder.finish();
}

void closeFlac(FlacEncoder *encoder)
{
    delete encoder;
}

} // namespace

const MediaService &decodingService()
{
    static const MediaService service{&openMovie, &sizeOfTrack, &writeMovie, &describeStreams, &attachedPicture,
                                      &beginFlac, &writeFlac,   &finishFlac, &closeFlac};
    return service;
}

} // namespace Tessaron
