#include "imaging/ImageFinisher.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/DelayedPerform.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/KRLayoutWriter.h>
#include <TessaronClasses/KRTrackWriter.h>
#include <TessaronClasses/TessaronPanel.h>

#include <climits>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

/// The layout's creation takes this share of the progress, the writing the rest.
constexpr float creationShare = 0.25f;

constexpr std::chrono::milliseconds writingDelay{1};

/// Cannot be opened: the track writer then fails with its own error for a path.
const QString pathOfNothing = QStringLiteral("/i/dont/exist/seriously/foo");

/// The present path of the reference's file; empty when the file is gone.
QByteArray pathOfRef(const FSRef &ref)
{
    char buffer[PATH_MAX];
    return FSRefMakePath(&ref, buffer, sizeof(buffer)) == noErr ? QByteArray(buffer) : QByteArray();
}

/// Makes sure that the file exists and is empty. What fails here fails the track writer, which reports it.
void writeEmptyFile(const QByteArray &path)
{
    // Without waiting: in the file's place there may by now be a fifo that has no reader.
    const UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666));
}

} // namespace

KRLayoutWriter::KRLayoutWriter() = default;

std::shared_ptr<KRLayoutWriter> KRLayoutWriter::layoutWriter()
{
    return std::shared_ptr<KRLayoutWriter>(new KRLayoutWriter);
}

KRLayoutWriter::~KRLayoutWriter()
{
    cancelPreviousPerformRequests(this);
}

void KRLayoutWriter::setDelegate(const KRLayoutWriterDelegate &delegate)
{
    m_delegate = std::make_shared<const KRLayoutWriterDelegate>(delegate);
}

NSError KRLayoutWriter::writeLayoutToFSRef(const FSRef &ref, const std::shared_ptr<TessaronPanel> &askLayoutToPanel,
                                           TessaronDiscImageFormat imageFormat)
{
    const std::shared_ptr<KRLayoutWriter> self = shared_from_this(); // a panel's call may let go of the writer
    const bool hasLostItsPanel = m_stage == Stage::CreatingLayoutAsync && m_panel.expired();
    if (m_stage != Stage::Idle && m_stage != Stage::Ended && !hasLostItsPanel)
        return creationError(ref);
    m_stage = Stage::Idle;
    m_fileRef = ref;
    m_panel = askLayoutToPanel;
    m_format = imageFormat;
    m_finalReport.reset();
    if (!askLayoutToPanel)
        return creationError(ref);
    return askLayoutToPanel->canCreateLayoutAsync() ? startAsync(*askLayoutToPanel) : startSync(*askLayoutToPanel);
}

NSError KRLayoutWriter::startAsync(TessaronPanel &panel)
{
    // Set before the panel is asked: a quick one may report its end before it returns.
    m_stage = Stage::CreatingLayoutAsync;
    if (panel.createLayoutAsyncAndNotifyLayoutCreationManager(weak_from_this()))
        return {};
    releaseTrackWriter(); // of a panel that gave a layout and refuses nevertheless
    m_stage = Stage::Idle;
    return creationError(m_fileRef);
}

NSError KRLayoutWriter::startSync(TessaronPanel &panel)
{
    NSError error;
    const DRLayout layout = panel.createLayoutSync(&error);
    if (error)
        return error;
    const bool isScheduled = performAfterDelay(this, writingDelay, [weakThis = weak_from_this(), layout] {
        const std::shared_ptr<KRLayoutWriter> writer = weakThis.lock();
        if (writer && writer->m_stage == Stage::LayoutIsReady)
            writer->_writeLayout(layout);
    });
    if (!isScheduled)
        return creationError(m_fileRef);
    m_stage = Stage::LayoutIsReady;
    return {};
}

NSError KRLayoutWriter::creationError(const FSRef &ref)
{
    const QString text = NSBundle::mainBundle()->localizedString(QStringLiteral("disc image creation failed"));
    QVariantMap userInfo = {{NSLocalizedDescriptionKey, text}};
    QByteArray path = pathOfRef(ref);
    if (path.isEmpty())
        path = lastKnownPath(ref); // the file is gone
    if (!path.isEmpty())
        userInfo.insert(NSFilePathErrorKey, stringWithFileSystemRepresentation(path));
    return NSError(NSOSStatusErrorDomain, coreFoundationUnknownErr, userInfo);
}

bool KRLayoutWriter::cancelLayoutWritingAsync()
{
    const std::shared_ptr<KRLayoutWriter> self = shared_from_this();
    if (m_stage == Stage::CreatingLayoutAsync) {
        const std::shared_ptr<TessaronPanel> panel = m_panel.lock();
        return panel && panel->cancelLayoutCreationAsync();
    }
    if (m_trackWriter) {
        m_trackWriter->cancelTrackWriting();
    } else if (m_stage == Stage::LayoutIsReady) {
        // Nothing was touched yet, and now nothing will be.
        cancelPreviousPerformRequests(this);
        m_stage = Stage::Cancelling;
        performAfterDelay(this, std::chrono::milliseconds(0), [weakThis = weak_from_this()] {
            if (const std::shared_ptr<KRLayoutWriter> writer = weakThis.lock()) {
                writer->end();
                writer->notifyCancel();
            }
        });
    }
    return true;
}

std::shared_ptr<const DRStorageReport> KRLayoutWriter::storageReport() const
{
    return m_trackWriter ? m_trackWriter->storageReport() : m_finalReport;
}

void KRLayoutWriter::_writeLayout(const DRLayout &layout)
{
    const std::shared_ptr<KRLayoutWriter> self = shared_from_this();
    if (!m_trackWriter)
        m_stage = Stage::LayoutIsReady;
    notifyProgress(creationShare);
    // Another stage now means that the delegate cancelled just there.
    if (m_trackWriter || m_stage != Stage::LayoutIsReady)
        return;
    m_stage = Stage::Writing;
    if (const NSError error = startTrackWriter(layout)) {
        end();
        notifyFailure(error);
    }
}

NSError KRLayoutWriter::startTrackWriter(const DRLayout &layout)
{
    // A panel that gives neither a layout nor an error; the file keeps what it holds.
    if (isNullLayout(layout))
        return creationError(m_fileRef);
    const QByteArray path = pathOfRef(m_fileRef);
    if (!path.isEmpty())
        writeEmptyFile(path);
    m_trackWriter = KRTrackWriter::trackWriterWithTrack(
        layout, path.isEmpty() ? pathOfNothing : stringWithFileSystemRepresentation(path));
    m_trackWriter->setWaitsForDisk(m_waitsForDisk);
    return m_trackWriter->writeTrackAndNotifyDelegate(trackWriterDelegate());
}

KRTrackWriterDelegate KRLayoutWriter::trackWriterDelegate()
{
    const auto forward = [weakThis = weak_from_this()](auto operation) {
        return [weakThis, operation](KRTrackWriter &writer, const auto &...arguments) {
            if (const std::shared_ptr<KRLayoutWriter> layoutWriter = weakThis.lock())
                (layoutWriter.get()->*operation)(writer, arguments...);
        };
    };
    KRTrackWriterDelegate delegate;
    delegate.KRTrackWriterWritingProgress = forward(&KRLayoutWriter::KRTrackWriterWritingProgress);
    delegate.KRTrackWriterWritingDidEnd = forward(&KRLayoutWriter::KRTrackWriterWritingDidEnd);
    delegate.KRTrackWriterDidCancel = forward(&KRLayoutWriter::KRTrackWriterDidCancel);
    delegate.KRTrackWriterWritingDidFailWithError = forward(&KRLayoutWriter::KRTrackWriterWritingDidFailWithError);
    return delegate;
}

void KRLayoutWriter::releaseTrackWriter()
{
    if (m_trackWriter) {
        m_finalReport = m_trackWriter->storageReport();
        m_finalContents = m_trackWriter->tableOfContents();
    }
    m_trackWriter.reset();
}

void KRLayoutWriter::end()
{
    releaseTrackWriter();
    m_stage = Stage::Ended;
}

/// A panel that reports twice must neither end an image that is being written nor be heard after the end.
bool KRLayoutWriter::countsPanelsEnd() const
{
    return m_stage != Stage::Ended && m_stage != Stage::Cancelling && !m_trackWriter;
}

void KRLayoutWriter::TessaronPanelLayoutCreationDidFailWithError(TessaronPanel &, const NSError &error)
{
    if (!countsPanelsEnd())
        return;
    m_stage = Stage::Ended;
    notifyFailure(error);
}

void KRLayoutWriter::TessaronPanelLayoutIsCreated(TessaronPanel &, const DRLayout &layout)
{
    // A second report must not overwrite an image that is finished.
    if (m_stage != Stage::Ended && m_stage != Stage::Cancelling)
        _writeLayout(layout);
}

void KRLayoutWriter::TessaronPanelLayoutCreationCancel(TessaronPanel &)
{
    if (!countsPanelsEnd())
        return;
    m_stage = Stage::Ended;
    notifyCancel();
}

void KRLayoutWriter::TessaronPanelLayoutCreationProgress(TessaronPanel &, float progress)
{
    // A late report would take back what the writing has reached.
    if (progress > 0 && (m_stage == Stage::Idle || m_stage == Stage::CreatingLayoutAsync))
        notifyProgress(progress * creationShare);
}

void KRLayoutWriter::KRTrackWriterWritingProgress(KRTrackWriter &, float progress)
{
    if (progress > 0)
        notifyProgress(progress * (1 - creationShare) + creationShare);
}

void KRLayoutWriter::KRTrackWriterWritingDidEnd(KRTrackWriter &)
{
    const std::shared_ptr<KRLayoutWriter> self = shared_from_this();
    const std::shared_ptr<const KRLayoutWriterDelegate> delegate = m_delegate;
    if (delegate && delegate->KRLayoutWriterDidFinishWritingLayout && delegate->context.isAlive())
        delegate->KRLayoutWriterDidFinishWritingLayout(*this);
    releaseTrackWriter();
    const NSError error = addWhatTheFormatNeeds();
    m_stage = Stage::Ended;
    // Asked anew: the call above may have set another delegate.
    const std::shared_ptr<const KRLayoutWriterDelegate> told = m_delegate;
    if (error && told && told->KRLayoutWriterDidNotCompleteImage && told->context.isAlive())
        told->KRLayoutWriterDidNotCompleteImage(*this, error);
}

NSError KRLayoutWriter::addWhatTheFormatNeeds()
{
    m_lostInFormat.clear();
    if (m_format != TessaronDiscImageFormatBIN && m_format != TessaronDiscImageFormatVANT)
        return {};
    // Asked again: the delegate may have given the file its final name.
    const QByteArray path = pathOfRef(m_fileRef);
    struct stat status;
    if (path.isEmpty() || ::stat(path.constData(), &status) != 0)
        return {}; // it has removed the file
    const bool isPlain = !m_finalContents || isOnePlainTrack(*m_finalContents);
    ImageFinisher finisher(m_format, isPlain ? contentsOfPlainImage(std::uint64_t(status.st_size)) : *m_finalContents);
    finisher.setWaitsForDisk(m_waitsForDisk);
    NSError error = finisher.finishInPlace(path);
    if (!error)
        m_lostInFormat = finisher.lost();
    return error;
}

void KRLayoutWriter::KRTrackWriterWritingDidFailWithError(KRTrackWriter &, const NSError &error)
{
    const std::shared_ptr<KRLayoutWriter> self = shared_from_this();
    end();
    notifyFailure(error);
}

void KRLayoutWriter::KRTrackWriterDidCancel(KRTrackWriter &)
{
    const std::shared_ptr<KRLayoutWriter> self = shared_from_this();
    end();
    notifyCancel();
}

std::uint32_t KRLayoutWriter::produceDataForTrack(DRTrack *, char *, std::uint32_t, std::uint64_t, std::uint32_t,
                                                  std::uint32_t *)
{
    return 0;
}

void KRLayoutWriter::notifyProgress(float progress)
{
    const std::shared_ptr<const KRLayoutWriterDelegate> delegate = m_delegate;
    if (delegate && delegate->KRLayoutWriterProgress && delegate->context.isAlive())
        delegate->KRLayoutWriterProgress(*this, progress);
}

void KRLayoutWriter::notifyFailure(const NSError &error)
{
    const std::shared_ptr<const KRLayoutWriterDelegate> delegate = m_delegate;
    if (delegate && delegate->KRLayoutWriterDidFailWithError && delegate->context.isAlive())
        delegate->KRLayoutWriterDidFailWithError(*this, error);
}

void KRLayoutWriter::notifyCancel()
{
    const std::shared_ptr<const KRLayoutWriterDelegate> delegate = m_delegate;
    if (delegate && delegate->KRLayoutWriterDidCancel && delegate->context.isAlive())
        delegate->KRLayoutWriterDidCancel(*this);
}

} // namespace Tessaron
