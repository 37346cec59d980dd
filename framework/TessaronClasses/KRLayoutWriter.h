#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRTrackProducer.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>
#include <TessaronClasses/TessaronLayoutCreationManager.h>

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace Tessaron
{

class DRStorageReport;
class KRLayoutWriter;
class KRTrackWriter;
struct TableOfContents;
/// Further questions that a panel for disc images answers; the application defines them.
class TessaronDiscImageCreator;
struct KRTrackWriterDelegate;

/// The callbacks of a layout writer, on the thread that started it. Each function may be empty. A function may let go
/// of the writer.
struct KRLayoutWriterDelegate {
    CallbackContext context; ///< its end silences the rest
    /// Above 0, up to 1: the layout's creation takes the first quarter, the writing the rest.
    std::function<void(KRLayoutWriter &writer, float progress)> KRLayoutWriterProgress;
    /// The blocks are in the file. What the format needs besides, the cue sheet or the header, is added right after
    /// this call.
    std::function<void(KRLayoutWriter &writer)> KRLayoutWriterDidFinishWritingLayout;
    /// Follows the call above when that could not be added: the cue sheet is not there, or the image has no header; the
    /// blocks stay. The error names the file and says what to do. Nothing is called any more afterwards.
    std::function<void(KRLayoutWriter &writer, const NSError &error)> KRLayoutWriterDidNotCompleteImage;
    std::function<void(KRLayoutWriter &writer, const NSError &error)> KRLayoutWriterDidFailWithError;
    std::function<void(KRLayoutWriter &writer)> KRLayoutWriterDidCancel;
};

/// Saves what a panel holds as a disc image: asks the panel for its layout, has a track writer write the layout's
/// blocks into the file, then adds what the format needs: a cue sheet beside a BIN image, a header behind the blocks of
/// a VANT image. A layout of one track of 2048 bytes a block gets the standard sheet, or a header that describes the
/// file as one such track; for any other layout they say what its tracks are. One writer serves one image.
///
/// Made, used and destroyed on one thread, which needs an event loop. Destroying a writer at work stops it without a
/// further call of the delegate and removes the partly written image; a panel that makes a layout for it then finds no
/// manager.
class TESSARON_EXPORT KRLayoutWriter final : public TessaronLayoutCreationManager,
                                             public DRTrackProducer,
                                             public std::enable_shared_from_this<KRLayoutWriter>
{
public:
    [[nodiscard]] static std::shared_ptr<KRLayoutWriter> layoutWriter();
    ~KRLayoutWriter() override;
    KRLayoutWriter(const KRLayoutWriter &) = delete;
    KRLayoutWriter &operator=(const KRLayoutWriter &) = delete;

    void setDelegate(const KRLayoutWriterDelegate &delegate);
    /// Whether the writer waits until what it writes is on the disk (fsync(2)), so that it survives a crash and a
    /// failure of the disk is known. It does unless told otherwise here.
    void setWaitsForDisk(bool waits) { m_waitsForDisk = waits; }

    /// Starts; a null error means that the work goes on and that the delegate will hear of its end. The file at `ref`
    /// loses what it held once the layout is there. The panel is not owned; when it goes while it makes the layout, no
    /// end is reported.
    ///
    /// Errors: the one that the panel's createLayoutSync() gave; -4960 with the path and a description when the panel
    /// would not start, and when the writer is at work already.
    [[nodiscard]] NSError writeLayoutToFSRef(const FSRef &ref, const std::shared_ptr<TessaronPanel> &askLayoutToPanel,
                                             TessaronDiscImageFormat imageFormat);

    /// Asks the work to stop. While the panel makes the layout in the background, the result is that of its
    /// cancelLayoutCreationAsync(), false when the panel is gone; otherwise it is true. The delegate hears of the
    /// cancel if there was something to cancel.
    bool cancelLayoutWritingAsync();

    /// What the filesystems of the disc cannot hold as it stands; null until the blocks are being written.
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const;
    /// What the tracks of the last image have that its format cannot say, in words (a copy state, for one). Known when
    /// the image is complete; empty when all is said.
    [[nodiscard]] const QStringList &lostInFormat() const { return m_lostInFormat; }

    /// Writes the layout; the panel's own layout is written by this call, too. Progress 0.25 is reported first. Does
    /// nothing more when a writing is under way.
    void _writeLayout(const DRLayout &layout);

    // Reports of the panel. They are ignored once the writer's work has ended.
    void TessaronPanelLayoutCreationDidFailWithError(TessaronPanel &panel, const NSError &error) override;
    void TessaronPanelLayoutIsCreated(TessaronPanel &panel, const DRLayout &layout) override;
    void TessaronPanelLayoutCreationCancel(TessaronPanel &panel) override;
    void TessaronPanelLayoutCreationProgress(TessaronPanel &panel, float progress) override;

    // Reports of the track writer.
    void KRTrackWriterWritingProgress(KRTrackWriter &writer, float progress);
    void KRTrackWriterWritingDidEnd(KRTrackWriter &writer);
    void KRTrackWriterWritingDidFailWithError(KRTrackWriter &writer, const NSError &error);
    void KRTrackWriterDidCancel(KRTrackWriter &writer);

    /// Always 0: as a producer, the writer stands for the image that the VANT header describes and delivers nothing.
    std::uint32_t produceDataForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                      std::uint32_t blockSize, std::uint32_t *ioFlags) override;

private:
    /// What the writer is waiting for.
    enum class Stage : std::uint8_t {
        Idle, ///< nothing was started yet
        CreatingLayoutAsync, ///< the panel
        LayoutIsReady, ///< the next turn of the event loop, which begins to write
        Writing, ///< the track writer
        Cancelling, ///< the next turn of the event loop, which tells the delegate
        Ended, ///< nothing any more
    };

    KRLayoutWriter();

    [[nodiscard]] NSError startAsync(TessaronPanel &panel);
    [[nodiscard]] NSError startSync(TessaronPanel &panel);
    [[nodiscard]] static NSError creationError(const FSRef &ref);
    [[nodiscard]] bool countsPanelsEnd() const;
    [[nodiscard]] NSError startTrackWriter(const DRLayout &layout);
    [[nodiscard]] KRTrackWriterDelegate trackWriterDelegate();
    void releaseTrackWriter();
    void end();
    [[nodiscard]] NSError addWhatTheFormatNeeds();

    void notifyProgress(float progress);
    void notifyFailure(const NSError &error);
    void notifyCancel();

    FSRef m_fileRef;
    std::weak_ptr<TessaronPanel> m_panel;
    TessaronDiscImageFormat m_format = 0;
    bool m_waitsForDisk = true;
    /// Shared, so that a function may set another delegate while it runs.
    std::shared_ptr<const KRLayoutWriterDelegate> m_delegate;
    Stage m_stage = Stage::Idle;
    std::shared_ptr<KRTrackWriter> m_trackWriter;
    // Of the track writer, kept after its end.
    std::shared_ptr<const DRStorageReport> m_finalReport;
    std::shared_ptr<const TableOfContents> m_finalContents;
    QStringList m_lostInFormat;
};

} // namespace Tessaron
