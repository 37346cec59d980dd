#include "platform/quicktime/FlacFile.h"

#include "platform/quicktime/MediaModule.h"
#include "platform/quicktime/MovieStorage.h"

namespace Tessaron
{

FlacFile::FlacFile(const MediaService &service, MovieStorageHandle storage, FlacEncoder *encoder)
    : m_service(service)
    , m_storage(std::move(storage))
    , m_encoder(encoder)
{
}

FlacFile::~FlacFile()
{
    m_service.closeFlac(m_encoder);
}

Result<std::unique_ptr<FlacFile>> FlacFile::create(int descriptor, const QByteArray &path,
                                                   const QMap<QString, QString> &tags)
{
    const Result<const MediaService *> service = mediaService(path);
    if (!service)
        return service.error();
    Result<MovieStorageHandle> storage = MovieStorage::ofOpenFile(descriptor, path);
    if (!storage)
        return storage.error();
    const Result<FlacEncoder *> encoder = (*service)->beginFlac(**storage, tags);
    if (!encoder)
        return encoder.error();
    return std::unique_ptr<FlacFile>(new FlacFile(**service, *std::move(storage), *encoder));
}

NSError FlacFile::write(const char *bytes, std::size_t samples)
{
    return m_service.writeFlac(*m_encoder, bytes, samples);
}

NSError FlacFile::finish()
{
    NSError error = m_service.finishFlac(*m_encoder);
    NSError closing = m_storage->close();
    return error ? error : closing;
}

} // namespace Tessaron
