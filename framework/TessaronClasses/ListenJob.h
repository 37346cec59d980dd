#pragma once

#include <TessaronClasses/AudioTracks.h>
#include <TessaronClasses/DiscJob.h>

#include <QMetaType>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// What is to be heard. Places and lengths are frames: 75 in a second.
struct ListenOrder {
    std::vector<AudioPart> sound; ///< one after the other, without a break
    std::uint64_t from = 0; ///< where to begin, counted over all of `sound`
};

/// How playing has ended.
struct ListenResult {
    /// Null when the sound was heard to its end. Domain and codes are those of DiscJobErrors.h: Cancelled, Source for
    /// what cannot be decoded, Destination where nothing can play it.
    NSError error;
    bool isDeviceMissing = false; ///< the error is that there is no sound device, or that it has stopped
};

/// Lets the user hear files of sound: decodes them in one program and plays them from another one, TessaronDVDSound,
/// through the sound server or the card that SDL finds. See DiscJob for threads and lifetime. Going to an earlier place
/// decodes the file from its begin, which takes a second for each five minutes or so.
class TESSARON_EXPORT ListenJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit ListenJob(ListenOrder order, QObject *parent = nullptr);
    ~ListenJob() override;

    void setPaused(bool isPaused);
    /// What was asked for last.
    [[nodiscard]] bool isPaused() const;
    /// Goes on from this frame of the whole; a frame behind the end ends the job.
    void seek(std::uint64_t frame);
    /// The frame of the whole that is heard now, as far as the device tells. Ask for it with progressed().
    [[nodiscard]] std::uint64_t position() const;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const ListenResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::ListenResult &result);

private:
    class Work;

    ListenJob(Work *work, QObject *parent);
    void announceResult() override;

    Work *const m_work; ///< the base's
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::ListenResult)
