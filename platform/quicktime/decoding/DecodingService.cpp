#include "platform/quicktime/decoding/DecodingService.h"

#include "platform/quicktime/decoding/CDAudioDecoder.h"
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

Result<CDAudioDecoder *> openSound(const QByteArray &path, const std::stop_token &stop)
{
    Result<std::unique_ptr<CDAudioDecoder>> decoder = CDAudioDecoder::openFile(path, stop);
    if (!decoder)
        return decoder.error();
    return decoder->release();
}

CDAudioLength lengthOfSound(const CDAudioDecoder &sound)
{
    return sound.length();
}

Result<std::size_t> readSound(CDAudioDecoder &sound, char *buffer, std::size_t samples)
{
    return sound.read(buffer, samples);
}

const AudioDamageReport &damageOfSound(const CDAudioDecoder &sound)
{
    return sound.damage();
}

QMap<QString, QString> tagsOfSound(const CDAudioDecoder &sound)
{
    return sound.tags();
}

void closeSound(CDAudioDecoder *sound)
{
    delete sound;
}

Result<std::uint64_t> countSamples(const QByteArray &path, const std::stop_token &stop)
{
    return CDAudioDecoder::countSamples(path, stop);
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
    static const MediaService service{&openMovie,       &sizeOfTrack, &writeMovie,    &describeStreams,
                                      &attachedPicture, &openSound,   &lengthOfSound, &readSound,
                                      &damageOfSound,   &tagsOfSound, &closeSound,    &countSamples,
                                      &beginFlac,       &writeFlac,   &finishFlac,    &closeFlac};
    return service;
}

} // namespace Tessaron
