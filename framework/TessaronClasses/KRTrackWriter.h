#pragma once

#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/burn/DRCallbackDevice.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSError.h"

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace Tessaron
{

class BlockSink;
class DRNotificationCenter;
class DRStorageReport;
class KRTrackWriter;
class NSFileHandle;
struct TableOfContents;

/// What a track writer reports, on the thread that started the writing. Each function may be empty. A function may let
/// go of the writer.
struct KRTrackWriterDelegate {
    CallbackContext context; ///< its end silences the rest
    std::function<void(KRTrackWriter &writer, float progress)> KRTrackWriterWritingProgress; ///< above 0, up to 1
    std::function<void(KRTrackWriter &writer)> KRTrackWriterWritingDidEnd; ///< the file is complete and closed
    std::function<void(KRTrackWriter &writer)> KRTrackWriterDidCancel; ///< the file is gone
    /// The file is gone; the error's failure reason is a sentence that says what happened and names the file it
    /// happened to.
    std::function<void(KRTrackWriter &writer, const NSError &error)> KRTrackWriterWritingDidFailWithError;
};

/// Writes a layout into a plain file: runs a burn whose device hands every block that would go to a drive to this
/// writer, which appends it to the file. Serves one writing.
///
/// Made, started and destroyed on one thread, which needs an event loop: the delegate hears on it. Destroying a running
/// writer cancels it, waits for the burn's thread and removes the file; the delegate hears nothing more.
class TESSARON_EXPORT KRTrackWriter final : public std::enable_shared_from_this<KRTrackWriter>, public DRDeviceConsumer
{
public:
    /// Null when the layout is null (no track at all) or the path is a null text.
    [[nodiscard]] static std::shared_ptr<KRTrackWriter> trackWriterWithTrack(const DRLayout &track,
                                                                             const QString &path);
    /// Never null: when the layout or the path is null, the writer has neither of them and its writing cannot start
    /// (error -20).
    [[nodiscard]] static std::shared_ptr<KRTrackWriter> initWithTrack(const DRLayout &track, const QString &path);
    ~KRTrackWriter() override;
    KRTrackWriter(const KRTrackWriter &) = delete;
    KRTrackWriter &operator=(const KRTrackWriter &) = delete;

    /// What errors call the file, where its path means nothing to people: one that is written under another name first.
    /// For the next writing.
    void setOutputName(const QString &path) { m_outputName = path; }
    /// Whether the writing ends only when the contents are on the disk, so that they survive a crash and a failure of
    /// the disk is known (fsync(2)). It does unless told otherwise here. For the next writing.
    void setWaitsForDisk(bool waits) { m_waitsForDisk = waits; }

    /// Starts. Null when the burn was started. The delegate hears of its end; by then the layout's tracks of folders
    /// have their lengths (DRTrackLengthKey). The file must exist and is best empty: it is written from its start and
    /// ends with the last byte written. Errors, both in NSOSStatusErrorDomain: -20 with the path under
    /// NSFilePathErrorKey when the file cannot be opened, -4960 when no burn can be made or this writer is at work.
    [[nodiscard]] NSError writeTrackAndNotifyDelegate(const KRTrackWriterDelegate &delegate);

    /// Asks the running burn to stop; the delegate hears of the cancel. Does nothing when none runs.
    void cancelTrackWriting();

    /// How far the writing has come, or came.
    [[nodiscard]] DRBurnAmounts amounts() const;
    /// What the disc's filesystems cannot hold as it stands; null until the burn has been prepared.
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const;
    /// The tracks that the file holds, one after another from its start, each with those gaps that the table calls
    /// stored; null until the burn has been prepared.
    [[nodiscard]] std::shared_ptr<const TableOfContents> tableOfContents() const;

    /// Takes the status of the burn, as its notification brings it, and tells the delegate.
    void writeStatus(const QVariantMap &status);

    /// Appends the blocks to the file; the address is ignored. Returns 0, or the status of the failure. A burn goes by
    /// blockSink() instead.
    OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                         std::uint32_t atAddress) override;
    /// The file; null when none is being written.
    [[nodiscard]] BlockSink *blockSink() override;

private:
    KRTrackWriter(const DRLayout &track, const QString &path);

    void writingIsDone();
    void writingHasFailed(const QVariantMap &status);
    void writingGoesOn(const QString &state, const QVariantMap &status);
    void forgetBurn();
    [[nodiscard]] NSError closeOutput();
    void dropOutput();
    template <typename Callback, typename... Arguments>
    void notify(const Callback &callback, const Arguments &...arguments);

    const DRLayout m_track;
    const QString m_path;
    QString m_outputName;
    bool m_waitsForDisk = true;
    std::shared_ptr<NSFileHandle> m_output; ///< open while writing
    std::unique_ptr<BlockSink> m_sink; ///< writes to m_output
    KRTrackWriterDelegate m_delegate;
    std::shared_ptr<DRBurn> m_burn; ///< null when none runs
    std::shared_ptr<DRNotificationCenter> m_center; ///< where the burn is observed
    // What the burn left when it was let go.
    DRBurnAmounts m_finalAmounts;
    std::shared_ptr<const DRStorageReport> m_finalReport;
    std::shared_ptr<const TableOfContents> m_finalContents;
};

} // namespace Tessaron
