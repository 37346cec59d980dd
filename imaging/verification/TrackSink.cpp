#include "imaging/verification/TrackSink.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/FlacFile.h"
#include "platform/quicktime/PCMHeaders.h"
#include <TessaronClasses/DiscJobErrors.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t roomForTags = 1 << 20; // bytes; CD-TEXT holds less

NSError writeTo(int descriptor, const char *bytes, std::size_t length)
{
    const int failure = writeFully(descriptor, bytes, length);
    return failure == 0 ? NSError()
                        : discJobError(DiscJobErrorCode::Write,
                                       QStringLiteral("the output cannot be written: %1").arg(systemText(failure)));
}

class DataSink : public TrackSink
{
public:
    explicit DataSink(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    NSError write(const char *bytes, std::size_t length) override { return writeTo(m_descriptor, bytes, length); }
    NSError finish() override { return {}; }

private:
    const int m_descriptor;
};

class WaveSink final : public DataSink
{
public:
    WaveSink(const TrackFile &file, const QMap<QString, QString> &tags)
        : DataSink(file.descriptor)
        , m_tags(waveTags(tags))
        , m_head(waveHeader({}, file.bytes, false, std::uint64_t(m_tags.size())))
    {
    }
    NSError write(const char *bytes, std::size_t length) override
    {
        const QByteArray head = std::exchange(m_head, {});
        NSError error = head.isEmpty() ? NSError() : DataSink::write(head.constData(), std::size_t(head.size()));
        return error ? error : DataSink::write(bytes, length);
    }
    NSError finish() override { return DataSink::write(m_tags.constData(), std::size_t(m_tags.size())); }

private:
    const QByteArray m_tags;
    QByteArray m_head; ///< until it is written
};

class FlacSink final : public TrackSink
{
public:
    FlacSink(const TrackFile &file, const QMap<QString, QString> &tags)
        : m_file(file)
        , m_tags(tags)
    {
    }
    NSError write(const char *bytes, std::size_t length) override
    {
        if (!m_flac) {
            Result<std::unique_ptr<FlacFile>> made = FlacFile::create(m_file.descriptor, m_file.path, m_tags);
            if (!made)
                return jobError(made.error());
            m_flac = *std::move(made);
        }
        return jobError(m_flac->write(bytes, length / CDSound::bytesPerSample));
    }
    NSError finish() override { return m_flac ? jobError(m_flac->finish()) : NSError(); }

private:
    [[nodiscard]] static NSError jobError(const NSError &error)
    {
        if (!error)
            return {};
        return discJobError(DiscJobErrorCode::Write,
                            QStringLiteral("the output cannot be written: %1").arg(error.localizedFailureReason()),
                            error.localizedRecoverySuggestion(), {}, error.code());
    }

    const TrackFile m_file;
    const QMap<QString, QString> m_tags;
    std::unique_ptr<FlacFile> m_flac; ///< null until the first bytes come
};

} // namespace

std::unique_ptr<TrackSink> dataSink(const TrackFile &file)
{
    return std::make_unique<DataSink>(file.descriptor);
}

std::unique_ptr<TrackSink> soundSink(const TrackFile &file, ExtractedSound form, const QMap<QString, QString> &tags)
{
    if (form == ExtractedSound::FLAC)
        return std::make_unique<FlacSink>(file, tags);
    return std::make_unique<WaveSink>(file, tags);
}

std::uint64_t mostSoundInWave()
{
    return mostBytesInWave - roomForTags;
}

} // namespace Tessaron
