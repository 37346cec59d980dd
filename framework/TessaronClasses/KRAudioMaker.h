#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/KRCustomLayoutWriter.h>

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace Tessaron
{

class HelperProcess;

/// Makes an audio track of a file: a helper program ("DummyRedbook", a resource of the main bundle) decodes the file
/// and writes the sound of a CD, in frames of 2352 bytes, into a named pipe, from which the track is fed. The track
/// always has its announced length: what the helper does not deliver is silence; helperExitStatus() tells whether it
/// has.
///
/// The pipe is made, opened and closed on the main thread, which the calling thread waits for; when the main thread
/// does not come to it within a second (it may be waiting for this very thread), that is done on the calling thread
/// instead. Only one burn of audio makers at a time is counted right, see totalSize(). Otherwise makers have nothing to
/// do with each other.
class TESSARON_EXPORT KRAudioMaker final : public DRTrackProducer,
                                           public KRTrackOffering,
                                           public KRDataSizeOffering,
                                           public std::enable_shared_from_this<KRAudioMaker>
{
public:
    KRAudioMaker();
    /// Ends a burn that was not ended, as cleanupTrackAfterBurn() does.
    ~KRAudioMaker() override;
    KRAudioMaker(const KRAudioMaker &) = delete;
    KRAudioMaker &operator=(const KRAudioMaker &) = delete;

    void setRef(FSRef ref) { m_ref = ref; } ///< of the source
    void setSize(std::uint64_t size) { m_size = size; } ///< bytes that the track will hold
    [[nodiscard]] std::uint64_t dataSize() const override { return m_size; }

    /// An audio track as long as there are whole frames in the size, with this object as its producer; null for more
    /// than 32 bits can count. The maker must be held by a std::shared_ptr.
    [[nodiscard]] std::shared_ptr<DRTrack> dataProducer();
    [[nodiscard]] std::shared_ptr<DRTrack> track() override { return dataProducer(); }

    /// Makes the pipe, starts the helper and waits until it has opened the pipe. False when the source is gone, the
    /// pipe cannot be made (which is logged), or the helper does not start, ends or does nothing before it opens the
    /// pipe. Sets totalSize() to 0.
    bool prepareTrack(DRTrack *track, DRBurn *forBurn, const QVariantMap &toMedia) override;
    /// Reads from the pipe while the helper runs. Where the helper closes the pipe or has ended, the rest is silence:
    /// what still lay in the pipe when it ended is lost. 0 after an error, or when the helper is silent for longer than
    /// it may be; it is killed then.
    std::uint32_t produceDataForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                      std::uint32_t blockSize, std::uint32_t *ioFlags) override;
    /// Closes and removes the pipe. The helper is not terminated; it ends since nothing reads any more.
    void cleanupTrackAfterBurn(DRTrack *track) override;

    // The steps of the pipe, for the main thread.
    /// Makes a pipe in the folder: "tempFifo-%lf" with the seconds since the beginning of 2001, by "/usr/bin/mkfifo",
    /// whose failure is logged as "mkfifo error %d". Only the user may open it.
    bool createFifo(const QString &folder);
    /// Opens it for reading, as soon as the helper has opened it for writing.
    void openFifo();
    void destroyFifo();

    [[nodiscard]] QString tempFifoPath() const { return m_tempFifoPath; } ///< null without a pipe
    [[nodiscard]] int fifoFileNo() const { return m_fifoFileNo; } ///< 0 or less when it is closed

    /// Bytes delivered by all audio makers of the process, silence included, since one of them was last prepared.
    [[nodiscard]] static std::uint64_t totalSize();

    /// How long the helper may take to open the pipe, and be silent after that: a minute unless set here.
    void setHelperPatience(std::chrono::milliseconds patience) { m_patience = patience; }
    /// How the helper of the present or last burn has ended: 0 well, 3 with something in the source broken and silent,
    /// 4 since the track was not read to its end, 128 and more by a signal, anything else with a failure. No value
    /// while it runs, or where there was no helper.
    [[nodiscard]] std::optional<int> helperExitStatus() const;

private:
    [[nodiscard]] bool startHelper(const QString &source);
    [[nodiscard]] bool isTaskRunning() const;
    enum class Wait : std::uint8_t { Readable, HelperEnded, TooLong, Failed };
    [[nodiscard]] Wait waitForData() const;

    FSRef m_ref;
    std::uint64_t m_size = 0;
    QString m_tempFifoPath;
    std::unique_ptr<HelperProcess> m_task;
    int m_fifoFileNo = 0;
    std::chrono::milliseconds m_patience;
    bool m_isHelperHung = false;
};

} // namespace Tessaron
