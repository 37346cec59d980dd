#include "platform/coreservices/LaunchServices.h"
#include "platform/discrecording/audio/AudioFileTrack.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"
#include "platform/quicktime/QTMovie.h"
#include <TessaronClasses/KRAudioMaker.h>
#include <TessaronClasses/KRAudioTrack.h>
#include <TessaronClasses/KRVideoDVDBurnPathAddition.h>

namespace Tessaron
{

namespace
{

constexpr double framesPerSecond = 75;
constexpr double bytesPerFrame = 2352;
constexpr double beyond64Bits = 18446744073709551616.0;

bool isMovie(const QString &path)
{
    const QByteArray bytes = fileSystemRepresentation(path);
    return extensionOfName(lastPathComponent(bytes)).compare("mov", Qt::CaseInsensitive) == 0;
}

} // namespace

KRAudioTrack::KRAudioTrack(const FSRef &ref)
    : m_fileRef(ref)
{
}

std::shared_ptr<KRAudioTrack> KRAudioTrack::audioTrackWithFileAtPath(const QString &path)
{
    return initWithFileAtPath(path);
}

std::shared_ptr<KRAudioTrack> KRAudioTrack::initWithFileAtPath(const QString &path)
{
    FSRef ref;
    if (FSPathMakeRef(fileSystemRepresentation(path), &ref, nullptr) != noErr)
        return nullptr;
    return initWithFSRef(&ref);
}

std::shared_ptr<KRAudioTrack> KRAudioTrack::audioTrackWithFSRef(const FSRef *ref)
{
    return initWithFSRef(ref);
}

std::shared_ptr<KRAudioTrack> KRAudioTrack::initWithFSRef(const FSRef *ref)
{
    return std::shared_ptr<KRAudioTrack>(new KRAudioTrack(*ref));
}

QString KRAudioTrack::path() const
{
    return KRstringWithFSRef(&m_fileRef);
}

std::uint64_t KRAudioTrack::size()
{
    if (m_size != 0)
        return m_size;
    const std::shared_ptr<QTMovie> movie = QTMovie::movieByOpeningFileSync(fileSystemRepresentation(path()));
    if (!movie || movie->duration().timeScale <= 0)
        return 0;
    const std::int64_t wholeSeconds = movie->duration().timeValue / movie->duration().timeScale;
    const double bytes = (double(wholeSeconds) * framesPerSecond + 1) * bytesPerFrame;
    if (!(bytes < beyond64Bits)) // a header can claim any duration
        return 0;
    m_size = std::uint64_t(bytes);
    return m_size;
}

KRAudioTrack::Producer KRAudioTrack::_dataProducer(bool useCustomExporter)
{
    const QString source = path();
    if (source.isNull())
        return {};
    if (!useCustomExporter && !isMovie(source)) {
        if (std::shared_ptr<DRTrack> track = trackForAudioFile(source))
            return track;
        return {};
    }
    auto maker = std::make_shared<KRAudioMaker>();
    maker->setRef(m_fileRef);
    maker->setSize(size());
    return maker;
}

std::shared_ptr<KRAudioMaker> KRAudioTrack::dataProducer()
{
    const Producer producer = _dataProducer(true);
    const auto *const maker = std::get_if<std::shared_ptr<KRAudioMaker>>(&producer);
    return maker ? *maker : nullptr;
}

std::shared_ptr<DRTrack> KRAudioTrack::trackUsingCustomExporter(bool useCustomExporter)
{
    const Producer producer = _dataProducer(useCustomExporter);
    if (const auto *const track = std::get_if<std::shared_ptr<DRTrack>>(&producer))
        return *track;
    const auto *const maker = std::get_if<std::shared_ptr<KRAudioMaker>>(&producer);
    return maker ? (*maker)->dataProducer() : nullptr;
}

} // namespace Tessaron
