#include "imaging/jobs/OneStepWork.h"
#include "imaging/jobs/SoundFileError.h"
#include "platform/dvdplayback/SharedSound.h"
#include "platform/dvdplayback/SoundProcess.h"
#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/SoundHelpers.h"
#include <TessaronClasses/ListenJob.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

namespace Tessaron
{

namespace
{

using namespace std::chrono_literals;

constexpr auto lookEvery = 20ms;
constexpr auto lookInPauseEvery = 200ms;
/// A sound server that has not answered by then, or does not ask for sound any more, is as good as absent.
constexpr auto patienceWithDevice = 5s;
constexpr std::size_t pieceSize = std::size_t(8) * CDSound::samplesPerFrame * CDSound::bytesPerFloatSample;

/// What the thread of the program asks for, and what it is told. Thread-safe.
class ListenControl
{
public:
    void setPaused(bool isPaused)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isPaused = isPaused;
        }
        m_changed.notify_all();
    }
    [[nodiscard]] bool isPaused() const { return m_isPaused; }

    void seek(std::uint64_t frame)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_wanted = frame;
            m_position = frame;
        }
        m_changed.notify_all();
    }
    [[nodiscard]] std::uint64_t position() const { return m_position; }

    // For the worker.

    /// The place that was asked for since the last call.
    [[nodiscard]] std::optional<std::uint64_t> takeWanted()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_wanted, std::nullopt);
    }
    [[nodiscard]] bool isElsewhereWanted()
    {
        const std::lock_guard lock(m_mutex);
        return m_wanted.has_value();
    }
    /// Not while another place is asked for: that is where it is then.
    void tellPosition(std::uint64_t frame)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_wanted)
            m_position = frame;
    }
    /// Until something is asked for, or for a moment.
    void wait(const std::stop_token &stop)
    {
        std::unique_lock lock(m_mutex);
        const bool wasPaused = m_isPaused;
        m_changed.wait_for(lock, stop, wasPaused ? lookInPauseEvery : lookEvery,
                           [&] { return m_wanted || m_isPaused != wasPaused; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::optional<std::uint64_t> m_wanted;
    std::atomic<bool> m_isPaused = false;
    std::atomic<std::uint64_t> m_position = 0;
};

/// Plays through the shared memory. On the worker.
class Listening
{
public:
    Listening(const ListenOrder &order, ListenControl &control, const std::stop_token &stop)
        : m_order(order)
        , m_control(control)
        , m_stop(stop)
    {
    }

    [[nodiscard]] NSError run(bool *isDeviceMissing)
    {
        NSError error = openDevice();
        std::optional<std::uint64_t> from = m_order.from;
        while (!error && from) {
            startAt(*from);
            error = playFrom(*from);
            if (!error)
                error = waitForEnd();
            from = error ? std::nullopt : m_control.takeWanted();
        }
        *isDeviceMissing = m_isDeviceMissing;
        return error;
    }

private:
    [[nodiscard]] NSError deviceError(const QString &reason)
    {
        m_isDeviceMissing = true;
        return discJobError(DiscJobErrorCode::Destination, QStringLiteral("nothing can be heard: %1").arg(reason),
                            QStringLiteral("Connect a sound device, or look whether the sound server runs."));
    }

    [[nodiscard]] NSError openDevice()
    {
        Result<std::unique_ptr<SharedSound>> shared = SharedSound::create();
        if (!shared)
            return deviceError(shared.error().localizedDescription());
        m_sound = *std::move(shared);
        m_process = std::make_unique<SoundProcess>(m_sound.get(), CDSound::samplesPerSecond);
        const auto begin = SharedSound::Clock::now();
        while (m_sound->device() == SoundDevice::Opening) {
            if (m_stop.stop_requested())
                return discJobCancellation();
            if (SharedSound::Clock::now() - begin > patienceWithDevice)
                return deviceError(QStringLiteral("the sound device does not answer"));
            m_control.wait(m_stop);
        }
        if (m_sound->device() != SoundDevice::Open)
            return deviceError(m_sound->reason());
        m_lastAsked = SharedSound::Clock::now();
        m_sound->setPaused(m_control.isPaused()); // before it is given anything
        return {};
    }

    void startAt(std::uint64_t frame)
    {
        m_sound->drop();
        m_firstGiven = m_sound->given();
        m_firstFrame = frame;
        m_control.tellPosition(frame);
    }

    /// Gives all sound from there on, until another place is asked for.
    [[nodiscard]] NSError playFrom(std::uint64_t frame)
    {
        std::uint64_t skipped = frame;
        for (const AudioPart &part : m_order.sound) {
            if (part.frames > 0 && skipped >= part.frames) {
                skipped -= part.frames;
                continue;
            }
            if (NSError error = playPart(part, skipped))
                return error;
            if (m_control.isElsewhereWanted())
                return {};
            skipped = 0;
        }
        return {};
    }

    [[nodiscard]] NSError playPart(const AudioPart &part, std::uint64_t skipped)
    {
        CDSoundOptions options;
        options.form = CDSampleForm::Float32;
        options.helpers = &m_helpers;
        const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(part.path, m_stop, options);
        if (!sound)
            return soundFileError(part.path, sound.error());
        std::uint64_t unheard = (part.first + skipped) * CDSound::samplesPerFrame;
        const bool isToEnd = part.frames == 0;
        std::uint64_t left = isToEnd ? 0 : (part.frames - skipped) * CDSound::samplesPerFrame;
        while (isToEnd || left > 0) {
            if (m_control.isElsewhereWanted())
                return {};
            const Result<std::span<const char>> piece = (*sound)->next(pieceSize);
            if (!piece)
                return soundFileError(part.path, piece.error());
            if (piece->empty())
                return {};
            const std::uint64_t count = piece->size() / CDSound::bytesPerFloatSample;
            const std::uint64_t passed = std::min(unheard, count);
            unheard -= passed;
            const std::uint64_t heard = isToEnd ? count - passed : std::min(count - passed, left);
            left -= isToEnd ? 0 : heard;
            if (NSError error = give(piece->subspan(std::size_t(passed * CDSound::bytesPerFloatSample),
                                                    std::size_t(heard * CDSound::bytesPerFloatSample))))
                return error;
        }
        return {};
    }

    /// Stereo as the device has it; waits for room.
    [[nodiscard]] NSError give(std::span<const char> bytes)
    {
        const std::size_t channels = m_sound->form().channels;
        const std::size_t count = bytes.size() / CDSound::bytesPerFloatSample;
        m_samples.assign(count * channels, 0.0F);
        for (std::size_t sample = 0; sample < count; ++sample) {
            std::array<float, 2> stereo;
            std::memcpy(stereo.data(), bytes.data() + sample * CDSound::bytesPerFloatSample, sizeof stereo);
            float *const out = m_samples.data() + sample * channels;
            if (channels == 1)
                out[0] = (stereo[0] + stereo[1]) / 2;
            else
                std::copy(stereo.begin(), stereo.end(), out);
        }
        std::span<const float> rest = m_samples;
        while (!rest.empty()) {
            rest = rest.subspan(m_sound->give(rest) * channels);
            if (rest.empty())
                break;
            if (NSError error = lookAround())
                return error;
            if (m_control.isElsewhereWanted())
                return {};
        }
        return {};
    }

    /// Tells where it is, waits a moment, and does what is asked for.
    [[nodiscard]] NSError lookAround()
    {
        m_sound->setPaused(m_control.isPaused());
        m_control.wait(m_stop);
        m_sound->setPaused(m_control.isPaused());
        if (m_stop.stop_requested())
            return discJobCancellation();
        const auto now = SharedSound::Clock::now();
        m_lastAsked = std::max(m_lastAsked, m_sound->lastAsked());
        if (now - m_lastAsked > patienceWithDevice)
            return deviceError(QStringLiteral("the sound device has stopped"));
        if (const std::optional<std::int64_t> heard = m_sound->heard(now)) {
            const std::int64_t samples = std::max<std::int64_t>(*heard - std::int64_t(m_firstGiven), 0);
            m_control.tellPosition(m_firstFrame + std::uint64_t(samples) / CDSound::samplesPerFrame);
        }
        return {};
    }

    /// Until the last sample was heard, or another place is asked for.
    [[nodiscard]] NSError waitForEnd()
    {
        while (!m_control.isElsewhereWanted()) {
            const std::optional<std::int64_t> heard = m_sound->heard(SharedSound::Clock::now());
            const bool isOver =
                m_sound->given() == m_firstGiven || (heard && *heard >= 0 && std::uint64_t(*heard) >= m_sound->given());
            if (isOver)
                return {};
            if (NSError error = lookAround())
                return error;
        }
        return {};
    }

    const ListenOrder &m_order;
    ListenControl &m_control;
    const std::stop_token &m_stop;
    std::unique_ptr<SharedSound> m_sound;
    std::unique_ptr<SoundProcess> m_process; ///< plays what is in m_sound; goes first
    SoundHelpers m_helpers;
    std::vector<float> m_samples;
    std::uint64_t m_firstGiven = 0; ///< sample of m_sound that is m_firstFrame
    std::uint64_t m_firstFrame = 0;
    SharedSound::Clock::time_point m_lastAsked;
    bool m_isDeviceMissing = false;
};

} // namespace

class ListenJob::Work final : public OneStepWork<ListenResult>
{
public:
    explicit Work(ListenOrder given)
        : m_order(std::move(given))
    {
        control.tellPosition(m_order.from);
    }

    ListenControl control;

private:
    [[nodiscard]] NSError run(const std::stop_token &stop) override
    {
        return Listening(m_order, control, stop).run(&result.isDeviceMissing);
    }

    const ListenOrder m_order;
};

ListenJob::ListenJob(ListenOrder order, QObject *parent)
    : ListenJob(std::make_unique<Work>(std::move(order)).release(), parent)
{
}

ListenJob::ListenJob(Work *work, QObject *parent)
    : DiscJob(std::unique_ptr<DiscJobWork>(work), parent)
    , m_work(work)
{
}

ListenJob::~ListenJob() = default;

void ListenJob::setPaused(bool isPaused)
{
    m_work->control.setPaused(isPaused);
}

bool ListenJob::isPaused() const
{
    return m_work->control.isPaused();
}

void ListenJob::seek(std::uint64_t frame)
{
    m_work->control.seek(frame);
}

std::uint64_t ListenJob::position() const
{
    return m_work->control.position();
}

const ListenResult &ListenJob::result() const
{
    return m_work->result;
}

void ListenJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
