#include "platform/quicktime/CDSound.h"

#include "platform/quicktime/MediaModule.h"

namespace Tessaron
{

CDSound::CDSound(const MediaService &service, CDAudioDecoder *decoder)
    : m_service(service)
    , m_decoder(decoder)
{
}

CDSound::~CDSound()
{
    m_service.closeSound(m_decoder);
}

Result<std::unique_ptr<CDSound>> CDSound::openFile(const QByteArray &path, const std::stop_token &stop)
{
    const Result<const MediaService *> service = mediaService(path);
    if (!service)
        return service.error();
    const Result<CDAudioDecoder *> decoder = (*service)->openSound(path, stop);
    if (!decoder)
        return decoder.error();
    return std::unique_ptr<CDSound>(new CDSound(**service, *decoder));
}

Result<std::uint64_t> CDSound::countSamples(const QByteArray &path, const std::stop_token &stop)
{
    const Result<const MediaService *> service = mediaService(path);
    if (!service)
        return service.error();
    return (*service)->countSamples(path, stop);
}

CDAudioLength CDSound::length() const
{
    return m_service.lengthOfSound(*m_decoder);
}

Result<std::size_t> CDSound::read(char *buffer, std::size_t samples)
{
    return m_service.readSound(*m_decoder, buffer, samples);
}

const AudioDamageReport &CDSound::damage() const
{
    return m_service.damageOfSound(*m_decoder);
}

QMap<QString, QString> CDSound::tags() const
{
    return m_service.tagsOfSound(*m_decoder);
}

} // namespace Tessaron
