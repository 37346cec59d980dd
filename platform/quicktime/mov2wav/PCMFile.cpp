#include "platform/quicktime/mov2wav/PCMFile.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/quicktime/MediaErrors.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

NSError tooLong(const QByteArray &path, const PCMForm &form)
{
    const std::uint64_t minutes = mostBytesInAiff / form.bytesPerFrame() / form.samplesPerSecond / 60;
    return mediaError(paramErr, path,
                      QStringLiteral("the sound is longer than an AIFF file can hold (%1 h %2 min)")
                          .arg(minutes / 60)
                          .arg(minutes % 60),
                      QStringLiteral("Convert it to WAVE, or in parts."));
}

/// Null when the path leads to nothing yet, or to a regular file other than the source.
NSError checkDestination(const QByteArray &path, const QByteArray &source)
{
    struct stat there, from;
    if (::stat(path.constData(), &there) != 0)
        return {};
    if (!S_ISREG(there.st_mode))
        return mediaError(paramErr, path, QStringLiteral("it is not a file that sound can be written into"),
                          QStringLiteral("Name another file."));
    if (::stat(source.constData(), &from) == 0 && there.st_dev == from.st_dev && there.st_ino == from.st_ino)
        return mediaError(paramErr, path, QStringLiteral("it is the source itself"),
                          QStringLiteral("Name another file for the result."));
    return {};
}

} // namespace

PCMFile::PCMFile(UniqueDescriptor file, QByteArray path, Kind kind, const PCMForm &form, bool hasRoom)
    : m_file(std::move(file))
    , m_path(std::move(path))
    , m_kind(kind)
    , m_form(form)
    , m_hasRoom(hasRoom)
{
}

PCMFile::~PCMFile()
{
    if (m_file)
        ::unlink(m_path.constData());
}

Result<PCMFile> PCMFile::create(const QByteArray &path, Kind kind, const PCMForm &form, std::uint64_t expectedBytes,
                                const QByteArray &source)
{
    if (kind == Kind::AIFF && expectedBytes > mostBytesInAiff)
        return tooLong(path, form);
    if (const NSError error = checkDestination(path, source))
        return error;
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    UniqueDescriptor file(::open(path.constData(), flags, 0666));
    if (!file)
        return NSError::errorWithErrno(errno, QString::fromUtf8(path));
    const bool isKnownToFit = expectedBytes > 0 && expectedBytes <= mostBytesInWave;
    PCMFile result(std::move(file), path, kind, form, !isKnownToFit);
    const QByteArray header = result.header();
    if (const int failure = writeFully(result.m_file.get(), header.constData(), std::size_t(header.size())))
        return result.error(failure);
    return result;
}

QByteArray PCMFile::header() const
{
    return m_kind == Kind::Wave ? waveHeader(m_form, m_bytes, m_hasRoom) : aiffHeader(m_form, m_bytes);
}

NSError PCMFile::error(int errnoValue) const
{
    return mediaError(statusForErrno(errnoValue), m_path,
                      NSError::errorWithErrno(errnoValue, {}).localizedFailureReason(),
                      QStringLiteral("Make room, or name a file on another disk."));
}

NSError PCMFile::write(char *samples, std::size_t bytes)
{
    if (m_kind == Kind::AIFF) {
        if (m_bytes + bytes > mostBytesInAiff)
            return tooLong(m_path, m_form);
        for (std::size_t position = 0; position + 1 < bytes; position += 2)
            std::swap(samples[position], samples[position + 1]);
    }
    if (const int failure = writeFully(m_file.get(), samples, bytes))
        return error(failure);
    m_bytes += bytes;
    return {};
}

NSError PCMFile::finish()
{
    if (!m_hasRoom && m_kind == Kind::Wave && m_bytes > mostBytesInWave)
        return mediaError(paramErr, m_path, QStringLiteral("the sound is longer than its source says"),
                          QStringLiteral("Convert it to FLAC with another program first."));
    const QByteArray bytes = header();
    if (::lseek(m_file.get(), 0, SEEK_SET) != 0)
        return error(errno);
    if (const int failure = writeFully(m_file.get(), bytes.constData(), std::size_t(bytes.size())))
        return error(failure);
    if (m_file.closeAndReport())
        return {};
    const int failure = errno;
    ::unlink(m_path.constData());
    return error(failure);
}

} // namespace Tessaron
