// Writes a folder as a disc image with chosen sizes of the block pipeline, to find out which are best:
//   burn_bench FOLDER IMAGE READERS PIECE-KIB BUFFERS KERNEL-COPY-FROM-MIB [sync]
// The time for the plan and the time for the writing are printed apart. With "sync", the latter lasts until the image
// is on the disk.

#include "platform/discrecording/burn/BlockPipeline.h"
#include "platform/discrecording/burn/FileSink.h"
#include "platform/discrecording/burn/ImageTrackWriter.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/planning/DiscImagePlan.h"
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
    if (argc != 7 && argc != 8) {
        std::fputs("usage: burn_bench FOLDER IMAGE READERS PIECE-KIB BUFFERS KERNEL-COPY-FROM-MIB [sync]\n", stderr);
        return 2;
    }
    NSError error;
    const auto planBegin = std::chrono::steady_clock::now();
    const DiscImagePlan plan =
        planDiscImage(DRFolder::folderWithPath(QString::fromLocal8Bit(argv[1])), PlanOptions(), {}, {}, &error);
    if (!plan.image)
        return fail(error);
    const double planSeconds = secondsSince(planBegin);

    BlockPipeline::Options options;
    options.readerCount = number(argv[3]);
    options.pieceBlocks = number(argv[4]) * 1024 / logicalBlockSize;
    options.bufferCount = number(argv[5]);
    options.smallestFileRunLeft = std::uint64_t(number(argv[6])) << 20;
    const UniqueDescriptor file(::open(argv[2], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    FileSink sink(file.get(), QString::fromLocal8Bit(argv[2]),
                  argc > 7 ? FileSink::Syncing::AtTheEnd : FileSink::Syncing::No);
    BlockStream stream(sink);
    const auto writeBegin = std::chrono::steady_clock::now();
    error = ImageTrackWriter(plan.image, options).write(stream);
    if (!error)
        error = sink.endDisc();
    if (error)
        return fail(error);
    std::printf("plan %.3f s, writing %.3f s\n", planSeconds, secondsSince(writeBegin));
    return 0;
}
