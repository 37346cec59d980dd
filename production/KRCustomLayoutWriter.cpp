#include "platform/discrecording/objects/DRMSF.h"
#include "platform/discrecording/objects/DRTrackDescription.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/PathBytes.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/ArrayAdditions.h>
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/KRCustomLayoutWriter.h>
#include <TessaronClasses/PathHelpers.h>
#include <TessaronClasses/VANTHeader.h>

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <thread>
#include <type_traits>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t chunkBlocks = 350;
constexpr std::uint32_t plainChunk = chunkBlocks * 2352; // bytes
constexpr std::uint32_t largestBlockSize = 65536;
constexpr std::chrono::microseconds retryDelay(20000);
constexpr int chunksPerReport = 7;

std::uint64_t sizeOf(DRTrackProducer &producer)
{
    if (auto *const offering = dynamic_cast<KRTrackOffering *>(&producer)) {
        const std::shared_ptr<DRTrack> track = offering->track();
        return track ? statedBlocks(track->properties()).bytes().value_or(0) : 0;
    }
    const auto *const sized = dynamic_cast<const KRDataSizeOffering *>(&producer);
    return sized ? sized->dataSize() : 0;
}

/// The file at the end of which is written. Opening does not wait for the reader of a fifo.
UniqueDescriptor openDestination(const QByteArray &path)
{
    UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
    if (file && ::fcntl(file.get(), F_SETFL, O_APPEND) != 0)
        return {};
    return file;
}

QString cueKind(const StatedBlocks &blocks)
{
    const QString size = QString::number(blocks.size.value_or(0));
    switch (blocks.type.value_or(0)) {
    case 0:
        return QStringLiteral("AUDIO\n");
    case 10:
    case 12:
    case 13:
        return QStringLiteral("MODE2/") + size + u'\n';
    default:
        return QStringLiteral("MODE1/") + size + u'\n';
    }
}

QString twoDigits(std::uint32_t number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

} // namespace

KRCustomLayoutWriter::KRCustomLayoutWriter(const KRCustomLayoutWriterDelegate &delegate)
    : m_delegate(delegate)
{
}

KRCustomLayoutWriter::~KRCustomLayoutWriter()
{
    abort();
    m_worker.reset();
}

std::shared_ptr<KRCustomLayoutWriter> KRCustomLayoutWriter::initWithLayout(const QVariant &layout,
                                                                           const KRCustomLayoutWriterDelegate *delegate)
{
    if (!layout.isValid() || !delegate)
        return nullptr;
    std::shared_ptr<KRCustomLayoutWriter> writer(new KRCustomLayoutWriter(*delegate));
    const bool isList = layout.typeId() == QMetaType::QVariantList;
    for (const QVariant &element : isList ? flattenedArray(layout.toList()) : QVariantList{layout}) {
        const auto producer = element.value<Producer>();
        writer->m_layout.push_back(producer);
        writer->m_totalBytes += producer ? sizeOf(*producer) : 0;
    }
    return writer;
}

void KRCustomLayoutWriter::beginLayoutWriting()
{
    if (m_isWriting)
        return;
    m_isWriting = true;
    m_currentBytes = 0;
    m_abort = false;
    m_next = 0;
    m_tracks.clear();
    m_hasPlainData = false;
    writeNextLayout();
}

void KRCustomLayoutWriter::abort()
{
    m_abort = true;
}

QString KRCustomLayoutWriter::cueSheet() const
{
    const std::lock_guard lock(m_cueSheetMutex);
    return m_cueSheet;
}

template <typename Callback, typename... Arguments>
auto KRCustomLayoutWriter::send(const Callback &callback, const Arguments &...arguments)
{
    using Answer = std::invoke_result_t<Callback, KRCustomLayoutWriter &, const Arguments &...>;
    // A function may let go of the writer.
    const std::shared_ptr<KRCustomLayoutWriter> self = shared_from_this();
    if (callback && m_delegate.context.isAlive())
        return callback(*this, arguments...);
    if constexpr (!std::is_void_v<Answer>)
        return Answer();
}

void KRCustomLayoutWriter::onMainThread(std::function<void(KRCustomLayoutWriter &)> function)
{
    performOnMainThread([weakThis = weak_from_this(), function = std::move(function)] {
        if (const std::shared_ptr<KRCustomLayoutWriter> writer = weakThis.lock())
            function(*writer);
    });
}

void KRCustomLayoutWriter::writeNextLayout()
{
    if (m_abort)
        notifyAboutAbort();
    else if (m_next == m_layout.size())
        finish();
    else if (!startProducer(m_layout[m_next]))
        failed();
}

/// False when the writing cannot go on with this producer.
bool KRCustomLayoutWriter::startProducer(const Producer &producer)
{
    const std::shared_ptr<KRCustomLayoutWriter> self = shared_from_this();
    if (!producer)
        return false;
    const QByteArray path = fileSystemRepresentation(send(m_delegate.KRCustomLayoutWriterPathForItem, producer));
    bool isFolder = false;
    if (path.isEmpty() || FSPathMakeRef(path, &m_currentDestination, &isFolder) != noErr || isFolder)
        return false;
    if (!producer->prepareTrack(nullptr, nullptr, {}))
        return false;
    if (!m_worker)
        m_worker = std::make_unique<NSThread>([this] { getTheData(); });
    try {
        m_worker->start();
    } catch (const std::system_error &) {
        producer->cleanupTrackAfterBurn(nullptr);
        return false;
    }
    return true;
}

void KRCustomLayoutWriter::finish()
{
    const QList<QByteArray> texts = send(m_delegate.KRCustomLayoutWriterArrayOfCDTextBlocks);
    m_VANTHeader = m_hasPlainData ? QByteArray() : VANTHeaderForDRLayout(m_tracks, texts);
    m_isWriting = false;
    send(m_delegate.KRCustomLayoutWriterDidEnd);
}

void KRCustomLayoutWriter::failed()
{
    m_isWriting = false;
    send(m_delegate.KRCustomLayoutWriterDidFailWithError, unkownError());
}

/// The writing counts as under way for ever: what was aborted is not begun again.
void KRCustomLayoutWriter::notifyAboutAbort()
{
    send(m_delegate.KRCustomLayoutWriterDidAbort);
}

void KRCustomLayoutWriter::notifyAboutProgress(double progress)
{
    send(m_delegate.KRCustomLayoutWriterProgress, progress);
}

void KRCustomLayoutWriter::getTheData()
{
    DRTrackProducer &producer = *m_layout[m_next];
    Outcome outcome = Outcome::Failed;
    try {
        outcome = writeProducer(producer);
    } catch (const std::bad_alloc &) { // ends as any failure does
    }
    producer.cleanupTrackAfterBurn(nullptr);
    onMainThread([outcome](KRCustomLayoutWriter &writer) {
        ++writer.m_next;
        if (outcome == Outcome::Written)
            writer.writeNextLayout();
        else if (outcome == Outcome::Aborted)
            writer.notifyAboutAbort();
        else
            writer.failed();
    });
}

KRCustomLayoutWriter::Outcome KRCustomLayoutWriter::writeProducer(DRTrackProducer &producer)
{
    const QString destination = stringWithFSRef(&m_currentDestination);
    UniqueDescriptor file = openDestination(fileSystemRepresentation(destination));
    Order order;
    if (!describe(producer, destination, &order) || !file || order.length == 0)
        return Outcome::Failed;
    const Outcome outcome = copyData(producer, order, file.get());
    return file.closeAndReport() ? outcome : Outcome::Failed;
}

/// Finds out what is to be written, and enters a track into the cue sheet. False when there is no track to be had.
bool KRCustomLayoutWriter::describe(DRTrackProducer &producer, const QString &destination, Order *order)
{
    auto *const offering = dynamic_cast<KRTrackOffering *>(&producer);
    if (!offering) {
        const auto *const sized = dynamic_cast<const KRDataSizeOffering *>(&producer);
        order->length = sized ? sized->dataSize() : 0;
        m_hasPlainData = true;
        return true;
    }
    const std::shared_ptr<DRTrack> track = offering->track();
    if (!track)
        return false;
    const StatedBlocks blocks = statedBlocks(track->properties());
    const std::optional<std::uint64_t> length = blocks.bytes();
    const std::uint64_t blockSize = blocks.size.value_or(0);
    if (!length || blockSize > largestBlockSize)
        return false;
    *order = {*length, std::uint32_t(blockSize)};
    m_tracks.push_back(track);
    addToCueSheet(blocks, destination);
    return true;
}

void KRCustomLayoutWriter::addToCueSheet(const StatedBlocks &blocks, const QString &destination)
{
    const std::lock_guard lock(m_cueSheetMutex);
    if (m_cueSheet.isNull()) {
        const QByteArray path = fileSystemRepresentation(destination);
        const QByteArray name = lastPathComponent(path).toByteArray();
        m_cueSheet =
            QStringLiteral("FILE \"") + stringWithFileSystemRepresentation(name) + QStringLiteral("\" BINARY\n");
        m_previousTrackSize = 0;
    }
    const DRMSF start = DRMSF::msfWithFrames(m_previousTrackSize);
    m_cueSheet += QStringLiteral("TRACK ") + twoDigits(std::uint32_t(++m_currentTrackNumber)) + u' ' + cueKind(blocks)
        + QStringLiteral("    INDEX 01 ") + twoDigits(start.minutes()) + u':' + twoDigits(start.seconds()) + u':'
        + twoDigits(start.frames()) + u'\n';
    m_previousTrackSize += std::uint32_t(blocks.length.value_or(0));
}

KRCustomLayoutWriter::Outcome KRCustomLayoutWriter::copyData(DRTrackProducer &producer, const Order &order, int file)
{
    const std::uint32_t chunk = order.blockSize == 0 ? plainChunk : order.blockSize * chunkBlocks;
    std::vector<char> buffer(std::max(chunk, plainChunk));
    std::uint64_t remaining = order.length;
    for (int chunks = 1; remaining > 0; ++chunks) {
        if (m_abort)
            return Outcome::Aborted;
        const auto wanted = std::uint32_t(std::min<std::uint64_t>(remaining, chunk));
        const std::uint32_t got = nextChunk(producer, order, buffer, wanted);
        if (got == 0 || got > wanted || writeFully(file, buffer.data(), got) != 0)
            return Outcome::Failed;
        remaining -= got;
        m_currentBytes += got;
        if (chunks % chunksPerReport != 0)
            continue;
        const std::uint64_t written = m_currentBytes / 1024;
        const std::uint64_t total = std::max<std::uint64_t>(m_totalBytes / 1024, 1);
        const double progress = double(written) / double(total);
        onMainThread([progress](KRCustomLayoutWriter &writer) { writer.notifyAboutProgress(progress); });
    }
    return Outcome::Written;
}

/// The bytes of the next chunk. A producer that has nothing is asked once more a moment later.
std::uint32_t KRCustomLayoutWriter::nextChunk(DRTrackProducer &producer, const Order &order, std::vector<char> &buffer,
                                              std::uint32_t wanted)
{
    const auto ask = [&] {
        std::uint32_t flags = 0;
        return producer.produceDataForTrack(nullptr, buffer.data(), wanted, 0, order.blockSize, &flags);
    };
    if (const std::uint32_t got = ask())
        return got;
    std::this_thread::sleep_for(retryDelay);
    return ask();
}

} // namespace Tessaron
