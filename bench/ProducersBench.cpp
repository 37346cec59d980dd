// Writes files one after another into one, as a list of data producers (KRCustomLayoutWriter):
//   producers_bench OUT FILE...
// The files hold blocks of 2048 bytes.

#include <TessaronClasses/KRCustomLayoutWriter.h>
#include <TessaronClasses/KRDRDataProducer.h>

#include <QCoreApplication>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Tessaron;

namespace
{

std::shared_ptr<DRTrackProducer> producerOf(const char *path)
{
    constexpr std::uint32_t blockSize = 2048;
    struct stat status;
    if (::stat(path, &status) != 0)
        return nullptr;
    KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
    info.sectorSize = blockSize;
    info.framesCount = std::uint32_t(status.st_size / blockSize);
    return KRDRDataProducer::initWithInfo(info, QString::fromLocal8Bit(path));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc < 3) {
        std::fputs("usage: producers_bench OUT FILE...\n", stderr);
        return 2;
    }
    ::close(::open(argv[1], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    QVariantList layout;
    for (int number = 2; number < argc; ++number)
        layout << QVariant::fromValue(producerOf(argv[number]));
    KRCustomLayoutWriterDelegate delegate;
    delegate.KRCustomLayoutWriterPathForItem = [argv](auto &, const auto &) { return QString::fromLocal8Bit(argv[1]); };
    delegate.KRCustomLayoutWriterDidEnd = [](auto &) { QCoreApplication::exit(0); };
    delegate.KRCustomLayoutWriterDidFailWithError = [](auto &, const auto &) { QCoreApplication::exit(1); };
    const auto writer = KRCustomLayoutWriter::initWithLayout(layout, &delegate);
    writer->beginLayoutWriting();
    return QCoreApplication::exec();
}
