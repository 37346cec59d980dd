// A program as a user of the installed package writes it: a folder with one file becomes a disc image.
#include <TessaronClasses/DiscImageJob.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

using namespace Tessaron;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QTemporaryDir place;
    QDir(place.path()).mkdir(QStringLiteral("CONSUMER"));
    QFile letter(place.filePath(QStringLiteral("CONSUMER/hello.txt")));
    if (!letter.open(QIODevice::WriteOnly) || letter.write("hello\n") != 6)
        return 1;
    letter.close();
    const QByteArray folder = QFile::encodeName(place.filePath(QStringLiteral("CONSUMER")));
    const QByteArray path = QFile::encodeName(place.filePath(QStringLiteral("disc.iso")));

    DiscImageJob job({.sources = {folder}, .output = path});
    QObject::connect(&job, &DiscJob::progressed,
                     [](const DiscJobProgress &progress) { std::printf("%.1f %%\n", progress.percent()); });
    QObject::connect(&job, &DiscImageJob::finished, [](const DiscImageResult &result) {
        if (result.error)
            std::fprintf(stderr, "%s\n", qPrintable(result.error.localizedDescription()));
        else if (!result.isComplete())
            std::fprintf(stderr, "not everything is in the image\n");
        QCoreApplication::exit(result.isComplete() ? 0 : 1);
    });
    job.start();
    const int status = QCoreApplication::exec();
    return status == 0 && QFile(QFile::decodeName(path)).size() > 32768 ? 0 : 2;
}
