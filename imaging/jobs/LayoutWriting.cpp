#include "imaging/jobs/LayoutWriting.h"

#include "platform/discrecording/burn/BurnDevice.h"
#include "platform/discrecording/burn/DRNotificationCenter.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/OSStatus.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRTrackWriter.h>

#include <condition_variable>
#include <mutex>

namespace Tessaron
{

namespace
{

NSError writeError(const NSError &error)
{
    const QString reason = error.localizedFailureReason();
    return discJobError(DiscJobErrorCode::Write, reason.isEmpty() ? error.localizedDescription() : reason,
                        error.localizedRecoverySuggestion(), fileSystemRepresentation(error.filePath()), error.code());
}

class FileWriting final : public LayoutWriting
{
public:
    FileWriting(const DRLayout &layout, const QByteArray &path, QByteArray finalPath, bool waitsForDisk)
        : m_finalPath(std::move(finalPath))
        , m_writer(KRTrackWriter::trackWriterWithTrack(layout, stringWithFileSystemRepresentation(path)))
    {
        m_writer->setOutputName(stringWithFileSystemRepresentation(m_finalPath));
        m_writer->setWaitsForDisk(waitsForDisk);
    }

    [[nodiscard]] NSError start(const Listener &listener) override
    {
        KRTrackWriterDelegate delegate;
        delegate.context = m_life;
        delegate.KRTrackWriterWritingProgress = [listener](KRTrackWriter &, float) { listener.progressed(); };
        delegate.KRTrackWriterWritingDidEnd = [listener](KRTrackWriter &) { listener.ended({}); };
        delegate.KRTrackWriterDidCancel = [listener](KRTrackWriter &) { listener.ended(discJobCancellation()); };
        delegate.KRTrackWriterWritingDidFailWithError = [listener](KRTrackWriter &, const NSError &error) {
            listener.ended(writeError(error));
        };
        const NSError error = m_writer->writeTrackAndNotifyDelegate(delegate);
        return error
            ? discJobError(DiscJobErrorCode::Write, QStringLiteral("the image file cannot be opened for writing"), {},
                           m_finalPath, error.code())
            : NSError();
    }
    void cancel() override { m_writer->cancelTrackWriting(); }

    [[nodiscard]] DRBurnAmounts amounts() const override { return m_writer->amounts(); }
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const override
    {
        return m_writer->storageReport();
    }
    [[nodiscard]] std::shared_ptr<const TableOfContents> tableOfContents() const override
    {
        return m_writer->tableOfContents();
    }

private:
    const QByteArray m_finalPath;
    const std::shared_ptr<KRTrackWriter> m_writer;
    const std::shared_ptr<const void> m_life = std::make_shared<int>(); ///< its end silences the writer
};

/// A device that a burn gets to when its plan was approved: until then the burn's thread waits.
class GatedDevice final : public BurnDevice
{
public:
    explicit GatedDevice(std::shared_ptr<BurnDevice> device)
        : m_device(std::move(device))
    {
    }

    void open()
    {
        const std::lock_guard lock(m_mutex);
        m_isOpen = true;
        m_isOpened.notify_all();
    }

    [[nodiscard]] std::shared_ptr<BlockSink> sinkForBurn(const std::stop_token &cancellation) override
    {
        std::unique_lock lock(m_mutex);
        m_isOpened.wait(lock, cancellation, [this] { return m_isOpen; });
        return m_device->sinkForBurn(cancellation);
    }
    [[nodiscard]] QVariantMap mediaInfo() const override { return m_device->mediaInfo(); }
    [[nodiscard]] BlockAddress firstBlock() const override { return m_device->firstBlock(); }

private:
    const std::shared_ptr<BurnDevice> m_device;
    std::mutex m_mutex; ///< guards the next two
    std::condition_variable_any m_isOpened;
    bool m_isOpen = false;
};

class DeviceWriting final : public LayoutWriting
{
public:
    DeviceWriting(DRLayout layout, std::shared_ptr<BurnDevice> device)
        : m_layout(std::move(layout))
        , m_device(std::make_shared<GatedDevice>(std::move(device)))
        , m_burn(DRBurn::burnForDevice(m_device))
    {
    }
    ~DeviceWriting() override
    {
        if (m_center)
            m_center->removeObserver(this, DRBurnStatusChangedNotification, m_burn.get());
        m_burn->abort();
        m_burn->waitUntilFinished();
    }

    [[nodiscard]] NSError start(const Listener &listener) override
    {
        m_center = DRNotificationCenter::currentRunLoopCenter();
        m_center->addObserver(this, DRBurnStatusChangedNotification, m_burn.get(), [this, listener](DRBurn &burn) {
            const QString state = burn.status().value(DRStatusStateKey).toString();
            if (state != DRStatusStateDone && state != DRStatusStateFailed) {
                listener.progressed();
                return;
            }
            m_center->removeObserver(this, DRBurnStatusChangedNotification, m_burn.get());
            listener.ended(state == DRStatusStateDone ? NSError() : jobErrorOfBurn(burn.error()));
        });
        m_burn->writeLayout(m_layout);
        m_layout = {}; // the burn lets go of it when it is planned
        return {};
    }
    void cancel() override { m_burn->abort(); }
    void approvePlan() override { m_device->open(); }

    [[nodiscard]] DRBurnAmounts amounts() const override { return m_burn->amounts(); }
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const override
    {
        return m_burn->storageReport();
    }
    [[nodiscard]] std::shared_ptr<const TableOfContents> tableOfContents() const override
    {
        return m_burn->tableOfContents();
    }

private:
    DRLayout m_layout; ///< null once the burn has it
    const std::shared_ptr<GatedDevice> m_device;
    const std::shared_ptr<DRBurn> m_burn;
    std::shared_ptr<DRNotificationCenter> m_center; ///< null until it is started
};

} // namespace

std::unique_ptr<LayoutWriting> writingIntoFile(const DRLayout &layout, const QByteArray &path,
                                               const QByteArray &finalPath, bool waitsForDisk)
{
    return std::make_unique<FileWriting>(layout, path, finalPath, waitsForDisk);
}

std::unique_ptr<LayoutWriting> writingToDevice(const DRLayout &layout, std::shared_ptr<BurnDevice> device)
{
    return std::make_unique<DeviceWriting>(layout, std::move(device));
}

NSError jobErrorOfBurn(const NSError &error)
{
    if (!error || error.domain() == DiscJobErrorDomain)
        return error;
    const auto status = OSStatus(error.code());
    QVariantMap userInfo = error.userInfo();
    if (status == kDRUserCanceledErr) {
        userInfo.insert(NSLocalizedDescriptionKey, discJobCancellation().localizedDescription());
        return NSError(DiscJobErrorDomain, qint64(DiscJobErrorCode::Cancelled), userInfo);
    }
    userInfo.insert(DiscJobUnderlyingStatusKey, qint64(status));
    const auto code = status == dskFulErr ? DiscJobErrorCode::Space : DiscJobErrorCode::Write;
    return NSError(DiscJobErrorDomain, qint64(code), userInfo);
}

} // namespace Tessaron
