#include "imaging/jobs/AudioDecoding.h"

#include "imaging/jobs/SoundFileError.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <new>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t sampleSize = CDSound::bytesPerSample;
constexpr std::size_t pieceSize = SoundProtocol::slotSize;

/// Takes sound; an error ends the work.
using TakeSound = std::function<NSError(std::span<const char>)>;

NSError writeError(int errnoValue)
{
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the image cannot be written: %1").arg(systemText(errnoValue)), {}, {},
                        statusForErrno(errnoValue));
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

NSError openFile(AlbumFile &file, const AudioDecoding &decoding)
{
    CDSoundOptions options;
    options.needsExactLength = true;
    options.helpers = &decoding.helpers;
    const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(file.path, decoding.stop, options);
    if (!sound)
        return soundFileError(file.path, sound.error());
    file.samples = (*sound)->length().samples;
    file.tags = (*sound)->tags();
    return {};
}

NSError measureFile(const AlbumFile &file, const AudioDecoding &decoding, LoudnessMeter &meter)
{
    CDSoundOptions options;
    options.form = CDSampleForm::Float32;
    options.helpers = &decoding.helpers;
    const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(file.path, decoding.stop, options);
    if (!sound)
        return soundFileError(file.path, sound.error());
    std::vector<float> samples;
    for (;;) {
        const Result<std::span<const char>> piece = (*sound)->next(pieceSize);
        if (!piece)
            return soundFileError(file.path, piece.error());
        if (piece->empty())
            return {};
        samples.resize(piece->size() / sizeof(float));
        std::memcpy(samples.data(), piece->data(), piece->size());
        if (!meter.add(samples))
            return outOfMemoryError();
        decoding.bytesDone += piece->size() / CDSound::bytesPerFloatSample * sampleSize;
    }
}

/// A file that is decoded run by run, each behind the one before.
class FileReading
{
public:
    [[nodiscard]] static Result<std::unique_ptr<FileReading>> open(const AlbumFile &file, double gain,
                                                                   const AudioDecoding &decoding)
    {
        CDSoundOptions options;
        options.gain = gain;
        options.helpers = &decoding.helpers;
        Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(file.path, decoding.stop, options);
        if (!sound)
            return soundFileError(file.path, sound.error());
        return std::unique_ptr<FileReading>(new FileReading(file, *std::move(sound), decoding));
    }

    /// Exactly as much as the run has: the neighbours have their places by that.
    [[nodiscard]] NSError copy(const SoundRun &run, const TakeSound &take)
    {
        if (NSError error = advance(run.first - std::min(run.first, m_position), {}))
            return error;
        return advance(run.samples, take);
    }

    /// Everything that was broken. The sound must have been as long as it was when it was opened first.
    [[nodiscard]] Result<AudioDamageReport> finish()
    {
        if (m_missing == 0 && m_position == m_file.samples) {
            const Result<std::span<const char>> more = m_sound->next(sampleSize);
            if (!more)
                return soundFileError(m_file.path, more.error());
            if (!more->empty())
                m_surprise = QStringLiteral("the sound is longer than the file says; the rest is left out");
        }
        if (m_missing > 0)
            m_surprise = QStringLiteral("the sound ends %1 samples early; silence stands for them").arg(m_missing);
        AudioDamageReport report = m_sound->damage();
        if (!m_surprise.isEmpty())
            report.add(double(m_position - m_missing) / CDSound::samplesPerSecond, m_surprise);
        return report;
    }

private:
    FileReading(const AlbumFile &file, std::unique_ptr<CDSound> sound, const AudioDecoding &decoding)
        : m_file(file)
        , m_decoding(decoding)
        , m_sound(std::move(sound))
    {
    }

    [[nodiscard]] NSError advance(std::uint64_t samples, const TakeSound &take)
    {
        static constexpr std::array<char, pieceSize> silence = {};
        for (std::uint64_t left = samples * sampleSize; left > 0;) {
            if (m_decoding.stop.stop_requested())
                return discJobCancellation();
            const std::size_t wanted = std::size_t(std::min<std::uint64_t>(left, pieceSize));
            const Result<std::span<const char>> piece = m_missing > 0 ? std::span<const char>() : m_sound->next(wanted);
            if (!piece)
                return soundFileError(m_file.path, piece.error());
            const std::span<const char> bytes = piece->empty() ? std::span(silence).first(wanted) : *piece;
            m_position += bytes.size() / sampleSize;
            m_missing += piece->empty() ? bytes.size() / sampleSize : 0;
            left -= bytes.size();
            if (!take)
                continue;
            if (NSError error = take(bytes))
                return error;
            m_decoding.bytesDone += bytes.size();
        }
        return {};
    }

    const AlbumFile &m_file;
    const AudioDecoding &m_decoding;
    const std::unique_ptr<CDSound> m_sound;
    std::uint64_t m_position = 0; ///< samples that were passed
    std::uint64_t m_missing = 0; ///< those of them that the file did not have
    QString m_surprise;
};

NSError writeAt(int descriptor, std::span<const char> bytes, std::uint64_t offset)
{
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(descriptor, bytes.data(), bytes.size(), off_t(offset));
        if (written < 0 && errno != EINTR)
            return writeError(errno);
        const auto done = std::size_t(std::max<ssize_t>(written, 0));
        bytes = bytes.subspan(done);
        offset += done;
    }
    return {};
}

/// Writes all of one file into its places.
Result<AudioDamageReport> writeFile(const AlbumFile &file, double gain, const std::vector<SoundPiece> &pieces,
                                    int descriptor, const AudioDecoding &decoding)
{
    const Result<std::unique_ptr<FileReading>> reading = FileReading::open(file, gain, decoding);
    if (!reading)
        return reading.error();
    for (const SoundPiece &piece : pieces) {
        std::uint64_t offset = piece.position * sampleSize;
        const auto put = [&](std::span<const char> bytes) {
            const std::uint64_t at = offset;
            offset += bytes.size();
            return writeAt(descriptor, bytes, at);
        };
        if (NSError error = (*reading)->copy(piece.run, put))
            return error;
    }
    return (*reading)->finish();
}

/// The frames of an image one after another.
class SoundStream
{
public:
    SoundStream(int descriptor, std::uint64_t firstFrame)
        : m_descriptor(descriptor)
        , m_position(firstFrame * CDSound::bytesPerFrame)
    {
    }

    [[nodiscard]] NSError put(std::span<const char> bytes)
    {
        m_position += bytes.size();
        const int failure = writeFully(m_descriptor, bytes.data(), bytes.size());
        return failure == 0 ? NSError() : writeError(failure);
    }

    /// Silence up to this place of the image.
    [[nodiscard]] NSError silenceUpTo(std::uint64_t position)
    {
        const int failure = writeZeros(m_descriptor, position - m_position);
        m_position = position;
        return failure == 0 ? NSError() : writeError(failure);
    }

private:
    const int m_descriptor;
    std::uint64_t m_position; ///< bytes of the image
};

} // namespace

Result<std::vector<AlbumFile>> openAudioFiles(const QList<QByteArray> &paths, const AudioDecoding &decoding)
{
    std::vector<AlbumFile> files(std::size_t(paths.size()));
    for (std::size_t number = 0; number < files.size(); ++number)
        files[number].path = paths[qsizetype(number)];
    if (const NSError error =
            forEachOnAllProcessors(files.size(), [&](std::size_t number) { return openFile(files[number], decoding); }))
        return error;
    return files;
}

Result<std::vector<std::unique_ptr<LoudnessMeter>>> measureAudioFiles(const std::vector<AlbumFile> &files,
                                                                      const AudioDecoding &decoding)
{
    std::vector<std::unique_ptr<LoudnessMeter>> meters(files.size());
    const NSError error = forEachOnAllProcessors(files.size(), [&](std::size_t number) {
        meters[number] = LoudnessMeter::create();
        return meters[number] ? measureFile(files[number], decoding, *meters[number]) : outOfMemoryError();
    });
    if (error)
        return error;
    return meters;
}

Result<std::vector<AudioDamageReport>> writeAudioFiles(const std::vector<AlbumFile> &files,
                                                       const std::vector<double> &gains, const AudioLayout &layout,
                                                       int descriptor, const AudioDecoding &decoding)
{
    std::vector<std::vector<SoundPiece>> pieces(files.size());
    for (const SoundPiece &piece : layout.pieces)
        pieces[piece.run.file].push_back(piece);
    std::vector<AudioDamageReport> damage(files.size());
    const NSError error = forEachOnAllProcessors(files.size(), [&](std::size_t number) {
        Result<AudioDamageReport> report =
            writeFile(files[number], gains[number], pieces[number], descriptor, decoding);
        if (!report)
            return report.error();
        damage[number] = *std::move(report);
        return NSError();
    });
    if (error)
        return error;
    return damage;
}

Result<std::vector<AudioDamageReport>> streamAudioFiles(const std::vector<AlbumFile> &files,
                                                        const std::vector<double> &gains, const AudioLayout &layout,
                                                        int descriptor, const AudioDecoding &decoding)
{
    std::vector<AudioDamageReport> damage(files.size());
    SoundStream stream(descriptor, layout.firstFrame);
    for (auto piece = layout.pieces.begin(); piece != layout.pieces.end();) {
        const std::size_t file = piece->run.file;
        const Result<std::unique_ptr<FileReading>> reading = FileReading::open(files[file], gains[file], decoding);
        if (!reading)
            return reading.error();
        for (; piece != layout.pieces.end() && piece->run.file == file; ++piece) {
            NSError error = stream.silenceUpTo(piece->position * sampleSize);
            if (!error)
                error = (*reading)->copy(piece->run, [&](std::span<const char> bytes) { return stream.put(bytes); });
            if (error)
                return error;
        }
        Result<AudioDamageReport> report = (*reading)->finish();
        if (!report)
            return report.error();
        damage[file] = *std::move(report);
    }
    if (const NSError error = stream.silenceUpTo((layout.firstFrame + layout.frames) * CDSound::bytesPerFrame))
        return error;
    return damage;
}

} // namespace Tessaron
