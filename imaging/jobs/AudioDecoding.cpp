#include "imaging/jobs/AudioDecoding.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <new>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t samplesAtATime = std::size_t(75) * CDSound::samplesPerFrame; // a second

NSError sourceError(const QByteArray &path, const NSError &error)
{
    if (error.code() == userCanceledErr)
        return discJobCancellation();
    return discJobError(
        DiscJobErrorCode::Source,
        QStringLiteral("%1 cannot be read as sound: %2").arg(quoted(path), error.localizedFailureReason()),
        error.localizedRecoverySuggestion(), path, error.code());
}

/// Calls `work` for each number below `count`, on as many threads as there are processors. After a failure no further
/// number is begun; the failure of the lowest number is returned.
NSError forEachOnAllProcessors(std::size_t count, const std::function<NSError(std::size_t)> &work)
{
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> hasFailed = false;
    std::vector<NSError> errors(count);
    const auto takeTurns = [&] {
        for (std::size_t number = next++; number < count && !hasFailed; number = next++) {
            try {
                errors[number] = work(number);
            } catch (const std::bad_alloc &) { // which must not leave its thread
                errors[number] = outOfMemoryError();
            }
            if (errors[number])
                hasFailed = true;
        }
    };
    {
        std::vector<std::jthread> helpers;
        const std::size_t threads = std::min<std::size_t>(count, std::max(std::thread::hardware_concurrency(), 1U));
        try {
            while (helpers.size() + 1 < threads)
                helpers.emplace_back(takeTurns);
        } catch (const std::system_error &) { // fewer threads do it, too
        }
        takeTurns();
    }
    const auto failed = std::find_if(errors.begin(), errors.end(), [](const NSError &error) { return bool(error); });
    return failed == errors.end() ? NSError() : *failed;
}

NSError openSound(OpenedSound &opened, const std::stop_token &stop)
{
    Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(opened.path, stop);
    if (!sound)
        return sourceError(opened.path, sound.error());
    opened.samples = (*sound)->length().samples;
    if (!(*sound)->length().isExact) {
        const Result<std::uint64_t> counted = CDSound::countSamples(opened.path, stop);
        if (!counted)
            return sourceError(opened.path, counted.error());
        opened.samples = *counted;
    }
    opened.tags = (*sound)->tags();
    opened.sound = *std::move(sound);
    if (opened.samples >= CDSound::samplesPerFrame)
        return {};
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("%1 is too short for a track: its sound has %2 samples, and a frame has %3")
                            .arg(quoted(opened.path))
                            .arg(opened.samples)
                            .arg(CDSound::samplesPerFrame),
                        QStringLiteral("Leave it out."), opened.path);
}

NSError writeAt(int descriptor, const char *bytes, std::size_t length, std::uint64_t offset)
{
    while (length > 0) {
        const ssize_t written = ::pwrite(descriptor, bytes, length, off_t(offset));
        if (written < 0 && errno != EINTR)
            return discJobError(DiscJobErrorCode::Write,
                                QStringLiteral("the image cannot be written: %1").arg(systemText(errno)), {}, {},
                                statusForErrno(errno));
        const auto done = std::size_t(std::max<ssize_t>(written, 0));
        bytes += done;
        length -= done;
        offset += done;
    }
    return {};
}

/// One sound on its way into the image.
class SoundWriting
{
public:
    SoundWriting(OpenedSound &opened, const AudioTrackPlace &place, int descriptor,
                 std::atomic<std::uint64_t> &bytesDone)
        : m_opened(opened)
        , m_place(place)
        , m_descriptor(descriptor)
        , m_bytesDone(bytesDone)
        , m_buffer(samplesAtATime * CDSound::bytesPerSample)
    {
    }

    [[nodiscard]] NSError run(const std::stop_token &stop)
    {
        while (m_done < m_place.samples) {
            if (stop.stop_requested())
                return discJobCancellation();
            const Result<std::size_t> got = read(std::min<std::uint64_t>(m_place.samples - m_done, samplesAtATime));
            if (!got)
                return got.error();
            if (*got == 0)
                break;
            const std::uint64_t offset = (m_place.firstSample + m_done) * CDSound::bytesPerSample;
            const std::size_t bytes = *got * CDSound::bytesPerSample;
            if (NSError error = writeAt(m_descriptor, m_buffer.data(), bytes, offset))
                return error;
            m_done += *got;
            m_bytesDone += bytes;
        }
        return checkEnd();
    }

    [[nodiscard]] AudioDamageReport damage() const
    {
        AudioDamageReport report = m_opened.sound->damage();
        if (!m_surprise.isEmpty())
            report.add(double(m_done) / CDSound::samplesPerSecond, m_surprise);
        return report;
    }

private:
    [[nodiscard]] Result<std::size_t> read(std::size_t samples)
    {
        Result<std::size_t> got = m_opened.sound->read(m_buffer.data(), samples);
        if (!got)
            return sourceError(m_opened.path, got.error());
        return got;
    }

    /// The sound must be as long as it was when it was opened, for its neighbours have their places by that.
    [[nodiscard]] NSError checkEnd()
    {
        if (m_done < m_place.samples) {
            const std::uint64_t missing = m_place.samples - m_done;
            m_bytesDone += missing * CDSound::bytesPerSample;
            m_surprise = QStringLiteral("the sound ends %1 samples early; silence stands for them").arg(missing);
            return {};
        }
        const Result<std::size_t> more = read(1);
        if (!more)
            return more.error();
        if (*more > 0)
            m_surprise = QStringLiteral("the sound is longer than the file says; the rest is left out");
        return {};
    }

    OpenedSound &m_opened;
    const AudioTrackPlace &m_place;
    const int m_descriptor;
    std::atomic<std::uint64_t> &m_bytesDone;
    std::vector<char> m_buffer;
    std::uint64_t m_done = 0; ///< samples
    QString m_surprise;
};

} // namespace

Result<std::vector<OpenedSound>> openSounds(const QList<QByteArray> &paths, const std::stop_token &stop)
{
    std::vector<OpenedSound> sounds(std::size_t(paths.size()));
    for (std::size_t number = 0; number < sounds.size(); ++number)
        sounds[number].path = paths[qsizetype(number)];
    if (const NSError error =
            forEachOnAllProcessors(sounds.size(), [&](std::size_t number) { return openSound(sounds[number], stop); }))
        return error;
    return sounds;
}

Result<std::vector<AudioDamageReport>> writeSounds(std::vector<OpenedSound> &sounds,
                                                   const std::vector<AudioTrackPlace> &places, int descriptor,
                                                   std::atomic<std::uint64_t> *bytesDone, const std::stop_token &stop)
{
    std::vector<AudioDamageReport> damage(sounds.size());
    const NSError error = forEachOnAllProcessors(sounds.size(), [&](std::size_t number) {
        SoundWriting writing(sounds[number], places[number], descriptor, *bytesDone);
        NSError failure = writing.run(stop);
        damage[number] = writing.damage();
        sounds[number].sound.reset();
        return failure;
    });
    if (error)
        return error;
    return damage;
}

} // namespace Tessaron
