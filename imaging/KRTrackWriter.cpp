#include "platform/discrecording/burn/DRNotificationCenter.h"
#include "platform/discrecording/burn/FileSink.h"
#include "platform/discrecording/objects/DRTrackDescription.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSFileHandle.h"
#include <TessaronClasses/KRTrackWriter.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// Share of the whole that each stage of a burn takes. The writing starts at a third and is clamped to 1: programs that
/// show the progress expect exactly these factors.
constexpr double preparingShare = 0.25;
constexpr double writingShare = 0.75;
constexpr double writingStart = 0.333;

/// A message with this start comes from a cancelled burn.
const QString cancelMark = QStringLiteral("0x");

/// `path` names the file that the failure has to do with; null for none.
NSError failureWithReason(qint64 code, const QString &reason, const QString &path = {})
{
    QVariantMap userInfo = {{NSLocalizedFailureReasonErrorKey, reason}};
    if (!path.isNull())
        userInfo.insert(NSFilePathErrorKey, path);
    return NSError(NSOSStatusErrorDomain, code, userInfo);
}

} // namespace

KRTrackWriter::KRTrackWriter(const DRLayout &track, const QString &path)
    : m_track(track)
    , m_path(path)
    , m_outputName(path)
{
}

KRTrackWriter::~KRTrackWriter()
{
    if (!m_burn)
        return;
    m_burn->abort();
    m_burn->waitUntilFinished(); // it writes through this object
    forgetBurn();
    dropOutput();
}

std::shared_ptr<KRTrackWriter> KRTrackWriter::trackWriterWithTrack(const DRLayout &track, const QString &path)
{
    if (isNullLayout(track) || path.isNull())
        return nullptr;
    return initWithTrack(track, path);
}

std::shared_ptr<KRTrackWriter> KRTrackWriter::initWithTrack(const DRLayout &track, const QString &path)
{
    const bool isWhole = !isNullLayout(track) && !path.isNull();
    return std::shared_ptr<KRTrackWriter>(isWhole ? new KRTrackWriter(track, path) : new KRTrackWriter({}, {}));
}

NSError KRTrackWriter::writeTrackAndNotifyDelegate(const KRTrackWriterDelegate &delegate)
{
    if (m_burn)
        return NSError(NSOSStatusErrorDomain, coreFoundationUnknownErr);
    m_delegate = delegate;
    m_output = NSFileHandle::fileHandleForWritingAtPath(m_path);
    if (!m_output)
        return NSError(NSOSStatusErrorDomain, fileOpenErr, {{NSFilePathErrorKey, m_path}});
    m_sink = std::make_unique<FileSink>(m_output->fileDescriptor(), m_outputName,
                                        m_waitsForDisk ? FileSink::Syncing::AtTheEnd : FileSink::Syncing::No);
    m_burn = DRBurn::burnForDevice(DRCallbackDevice::initWithConsumer(this));
    if (!m_burn)
        return NSError(NSOSStatusErrorDomain, coreFoundationUnknownErr);
    m_center = DRNotificationCenter::currentRunLoopCenter();
    m_center->addObserver(this, DRBurnStatusChangedNotification, m_burn.get(),
                          [weakThis = weak_from_this()](DRBurn &sender) {
                              // Held, so that the delegate may let go of the writer.
                              if (const std::shared_ptr<KRTrackWriter> writer = weakThis.lock())
                                  writer->writeStatus(sender.status());
                          });
    m_burn->writeLayout(m_track);
    return {};
}

void KRTrackWriter::cancelTrackWriting()
{
    if (m_burn)
        m_burn->abort();
}

DRBurnAmounts KRTrackWriter::amounts() const
{
    return m_burn ? m_burn->amounts() : m_finalAmounts;
}

std::shared_ptr<const DRStorageReport> KRTrackWriter::storageReport() const
{
    return m_burn ? m_burn->storageReport() : m_finalReport;
}

std::shared_ptr<const TableOfContents> KRTrackWriter::tableOfContents() const
{
    return m_burn ? m_burn->tableOfContents() : m_finalContents;
}

OSStatus KRTrackWriter::writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                                    std::uint32_t /*atAddress*/)
{
    if (!m_sink)
        return ioErr;
    return OSStatus(m_sink->writeBlocks({buffer, blockCount, blockSize, {}}).code());
}

BlockSink *KRTrackWriter::blockSink()
{
    return m_sink.get();
}

void KRTrackWriter::writeStatus(const QVariantMap &status)
{
    const QString state = status.value(DRStatusStateKey).toString();
    if (state == DRStatusStateDone)
        writingIsDone();
    else if (state == DRStatusStateFailed)
        writingHasFailed(status);
    else
        writingGoesOn(state, status);
}

void KRTrackWriter::writingIsDone()
{
    forgetBurn();
    if (const NSError error = closeOutput()) {
        dropOutput();
        notify(m_delegate.KRTrackWriterWritingDidFailWithError, error);
    } else {
        if (m_finalContents)
            putPlannedLengths(*m_finalContents, m_track);
        notify(m_delegate.KRTrackWriterWritingDidEnd);
    }
}

void KRTrackWriter::writingHasFailed(const QVariantMap &status)
{
    forgetBurn();
    dropOutput();
    if (!status.contains(DRErrorStatusKey))
        return;
    const QVariantMap error = status.value(DRErrorStatusKey).toMap();
    const QVariant message = error.contains(DRErrorStatusErrorInfoStringKey)
        ? error.value(DRErrorStatusErrorInfoStringKey)
        : error.value(DRErrorStatusErrorStringKey);
    const QVariant code = error.value(DRErrorStatusErrorKey);
    if (!message.isValid() || message.toString().startsWith(cancelMark) || !code.isValid()
        || qint32(code.toLongLong()) == kDRUserCanceledErr)
        notify(m_delegate.KRTrackWriterDidCancel);
    else
        notify(m_delegate.KRTrackWriterWritingDidFailWithError,
               failureWithReason(qint32(code.toLongLong()), message.toString(),
                                 error.value(NSFilePathErrorKey).toString()));
}

void KRTrackWriter::writingGoesOn(const QString &state, const QVariantMap &status)
{
    double fraction = status.value(DRStatusPercentCompleteKey).toDouble();
    if (!(fraction > 0))
        return;
    if (state == DRStatusStatePreparing)
        fraction *= preparingShare;
    else if (state == DRStatusStateTrackWrite)
        fraction = fraction * writingShare + writingStart;
    notify(m_delegate.KRTrackWriterWritingProgress, float(std::min(fraction, 1.0)));
}

void KRTrackWriter::forgetBurn()
{
    if (!m_burn)
        return;
    m_finalAmounts = m_burn->amounts();
    m_finalReport = m_burn->storageReport();
    m_finalContents = m_burn->tableOfContents();
    m_center->removeObserver(this, DRBurnStatusChangedNotification, m_burn.get());
    m_burn.reset();
}

/// The sink has written everything, but some filesystems refuse data only when the file is closed.
NSError KRTrackWriter::closeOutput()
{
    m_sink.reset();
    const std::shared_ptr<NSFileHandle> output = std::exchange(m_output, nullptr);
    const NSError closing = output ? output->closeFile() : NSError();
    if (!closing)
        return {};
    const QString reason = QStringLiteral("“%1” could not be finished: %2. Check the disk, or write to another one.")
                               .arg(displayableText(m_outputName), closing.localizedFailureReason());
    return failureWithReason(closing.code(), reason, m_outputName);
}

/// Lets go of the output and removes the partly written file. A device or a pipe in its place stays.
void KRTrackWriter::dropOutput()
{
    m_sink.reset();
    m_output.reset();
    const QByteArray path = fileSystemRepresentation(m_path);
    struct stat status;
    if (::lstat(path.constData(), &status) == 0 && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)))
        ::unlink(path.constData());
}

template <typename Callback, typename... Arguments>
void KRTrackWriter::notify(const Callback &callback, const Arguments &...arguments)
{
    if (!callback || !m_delegate.context.isAlive())
        return;
    const Callback called = callback; // it may start the next writing, which replaces the delegate
    called(*this, arguments...);
}

} // namespace Tessaron
