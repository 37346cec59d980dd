#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/KRProducerOfferings.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessaron
{

class KRCustomLayoutWriter;
class NSThread;
struct StatedBlocks;

/// What a custom layout writer asks and reports, all on the main thread. Each function may be empty; only the first is
/// needed. A function may let go of the writer.
struct KRCustomLayoutWriterDelegate {
    CallbackContext context; ///< its end silences the rest
    /// Where the producer's data goes: the path of an existing file, to which it is appended.
    std::function<QString(KRCustomLayoutWriter &writer, const std::shared_ptr<DRTrackProducer> &item)>
        KRCustomLayoutWriterPathForItem;
    /// Once, behind the last producer: the CD-TEXT for the VANT header.
    std::function<QList<QByteArray>(KRCustomLayoutWriter &writer)> KRCustomLayoutWriterArrayOfCDTextBlocks;
    std::function<void(KRCustomLayoutWriter &writer, double progress)> KRCustomLayoutWriterProgress; ///< 0 to 1
    std::function<void(KRCustomLayoutWriter &writer)> KRCustomLayoutWriterDidEnd; ///< the header is there
    /// Any failure, with unkownError(). Destinations keep what was written to them.
    std::function<void(KRCustomLayoutWriter &writer, const NSError &error)> KRCustomLayoutWriterDidFailWithError;
    std::function<void(KRCustomLayoutWriter &writer)> KRCustomLayoutWriterDidAbort;
};

/// Writes a list of track producers into files, one producer after another, without a burn: asks each for its bytes on
/// a worker thread and appends them to the file that the delegate names. Makes a cue sheet of the producers that offer
/// a track, and a VANT header in the end; it writes neither of them anywhere.
///
/// Producers are DRTrackProducers; KRTrackOffering and KRDataSizeOffering are found by dynamic_cast. Made, used and
/// destroyed on the main thread, which needs an event loop; the producers are used by the worker meanwhile. Destroying
/// a writer at work stops it before its next chunk, waits for that, and reports nothing.
class TESSARON_EXPORT KRCustomLayoutWriter final : public std::enable_shared_from_this<KRCustomLayoutWriter>
{
public:
    /// `layout` holds one std::shared_ptr<DRTrackProducer>, or a QVariantList of them, which is flattened as
    /// flattenedArray() does; any other element fails the writing when its turn comes. Null for a null layout or
    /// delegate. Asks each producer that offers a track for it, to know the size of all.
    [[nodiscard]] static std::shared_ptr<KRCustomLayoutWriter>
    initWithLayout(const QVariant &layout, const KRCustomLayoutWriterDelegate *delegate);
    ~KRCustomLayoutWriter();
    KRCustomLayoutWriter(const KRCustomLayoutWriter &) = delete;
    KRCustomLayoutWriter &operator=(const KRCustomLayoutWriter &) = delete;

    /// Starts to write; does nothing while a writing is under way, nor after an abort.
    void beginLayoutWriting();
    /// Asks the writing to stop, which it does before the next chunk; the delegate hears of it. From any thread.
    void abort();

    /// The sheet of what was written so far; null when no producer had a track. Only the first destination is named.
    [[nodiscard]] QString cueSheet() const;
    /// The VANT header of all producers' tracks, one after another; null until the end, and when a producer has no
    /// track: where the blocks of the others lie could then not be said.
    [[nodiscard]] QByteArray VANTData() const { return m_VANTHeader; }

private:
    using Producer = std::shared_ptr<DRTrackProducer>;
    enum class Outcome : std::uint8_t { Written, Aborted, Failed };
    /// What the worker is to know of its producer.
    struct Order {
        std::uint64_t length = 0; ///< bytes
        std::uint32_t blockSize = 0; ///< bytes; 0 for plain data
    };

    explicit KRCustomLayoutWriter(const KRCustomLayoutWriterDelegate &delegate);

    // On the main thread.
    void writeNextLayout();
    [[nodiscard]] bool startProducer(const Producer &producer);
    void finish();
    void failed();
    void notifyAboutAbort();
    void notifyAboutProgress(double progress);
    template <typename Callback, typename... Arguments>
    auto send(const Callback &callback, const Arguments &...arguments);

    // On the worker's.
    void getTheData();
    [[nodiscard]] Outcome writeProducer(DRTrackProducer &producer);
    [[nodiscard]] bool describe(DRTrackProducer &producer, const QString &destination, Order *order);
    [[nodiscard]] Outcome copyData(DRTrackProducer &producer, const Order &order, int file);
    [[nodiscard]] std::uint32_t nextChunk(DRTrackProducer &producer, const Order &order, std::vector<char> &buffer,
                                          std::uint32_t wanted);
    void addToCueSheet(const StatedBlocks &blocks, const QString &destination);
    void onMainThread(std::function<void(KRCustomLayoutWriter &)> function);

    const KRCustomLayoutWriterDelegate m_delegate;
    std::vector<Producer> m_layout; ///< null where an element is not a producer
    std::uint64_t m_totalBytes = 0;
    std::atomic<bool> m_abort = false;

    // The main thread's.
    bool m_isWriting = false;
    std::size_t m_next = 0; ///< place in m_layout of the producer whose turn it is
    QByteArray m_VANTHeader;

    // The worker's while it runs, the main thread's otherwise.
    FSRef m_currentDestination;
    std::uint64_t m_currentBytes = 0;
    int m_currentTrackNumber = 0;
    std::uint32_t m_previousTrackSize = 0; ///< blocks
    DRTrackArray m_tracks; ///< of this writing, in order
    bool m_hasPlainData = false; ///< a producer of this writing has no track

    mutable std::mutex m_cueSheetMutex;
    QString m_cueSheet; ///< guarded by the mutex
    std::unique_ptr<NSThread> m_worker; ///< last member: it ends before what it works on goes
};

} // namespace Tessaron
