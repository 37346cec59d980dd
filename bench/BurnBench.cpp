// Writes a folder as a disc image with chosen sizes of the block pipeline, to find out which are best:
//   burn_bench FOLDER IMAGE READERS PIECE-KIB BUFFERS KERNEL-COPY-FROM-MIB
// The time for the plan and the time for the writing are printed apart.

#include "platform/discrecording/burn/BlockPipeline.h"
#include "platform/discrecording/burn/BurnSink.h"
#include "platform/discrecording/burn/ImageTrackWriter.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/planning/DiscImagePlan.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>

using namespace Tessaron;

namespace
{

class ImageFile final : public DRDeviceConsumer, public DRFileDescriptorConsumer
{
public:
    explicit ImageFile(const char *path)
        : m_file(::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644))
    {
    }
    OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                         std::uint32_t /*atAddress*/) override
    {
        m_lastErrno = writeFully(m_file.get(), buffer, std::size_t(blockCount) * blockSize);
        return statusForErrno(m_lastErrno);
    }
    int outputDescriptor() override { return m_file.get(); }
    void didCopyBlocks(std::uint32_t /*blockCount*/, std::uint32_t /*blockSize*/) override { }
    [[nodiscard]] int lastWriteErrno() const override { return m_lastErrno; }

private:
    UniqueDescriptor m_file;
    int m_lastErrno = 0;
};

std::uint32_t number(const char *text)
{
    return std::uint32_t(std::strtoul(text, nullptr, 10));
}

double secondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

int fail(const NSError &error)
{
    std::fprintf(stderr, "burn_bench: %s\n", qPrintable(error.localizedDescription()));
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 7) {
        std::fputs("usage: burn_bench FOLDER IMAGE READERS PIECE-KIB BUFFERS KERNEL-COPY-FROM-MIB\n", stderr);
        return 2;
    }
    const BurnCancellation cancellation;
    NSError error;
    const auto planBegin = std::chrono::steady_clock::now();
    const DiscImagePlan plan = planDiscImage(DRFolder::folderWithPath(QString::fromLocal8Bit(argv[1])), PlanOptions(),
                                             cancellation.token(), {}, &error);
    if (!plan.image)
        return fail(error);
    const double planSeconds = secondsSince(planBegin);

    BlockPipeline::Options options;
    options.readerCount = number(argv[3]);
    options.pieceBlocks = number(argv[4]) * 1024 / logicalBlockSize;
    options.bufferCount = number(argv[5]);
    options.smallestFileRunLeft = std::uint64_t(number(argv[6])) << 20;
    ImageFile file(argv[2]);
    const auto status =
        std::make_shared<BurnStatus>(DRNotificationCenter::currentRunLoopCenter(), std::weak_ptr<DRBurn>());
    BurnSink sink(file, *status, cancellation);
    const auto writeBegin = std::chrono::steady_clock::now();
    error = ImageTrackWriter(*plan.image, sink, options, cancellation).write();
    if (error)
        return fail(error);
    std::printf("plan %.3f s, writing %.3f s\n", planSeconds, secondsSince(writeBegin));
    return 0;
}
