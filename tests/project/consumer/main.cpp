// A program as a user of the installed package writes it: a folder with one file becomes a disc image.
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/KRTrackWriter.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <platform/discrecording/objects/DRFile.h>
#include <platform/discrecording/objects/DRFolder.h>
#include <platform/discrecording/objects/DRTrack.h>

using namespace Tessaron;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("disc.iso"));
    QFile image(path);
    if (!image.open(QIODevice::WriteOnly))
        return 1;
    image.close();

    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("CONSUMER"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("hello.txt"), "hello\n"));
    const auto writer = KRTrackWriter::trackWriterWithTrack(DRTrack::trackForRootFolder(root), path);
    KRTrackWriterDelegate delegate;
    delegate.KRTrackWriterWritingDidEnd = [](KRTrackWriter &) { QCoreApplication::exit(0); };
    delegate.KRTrackWriterWritingDidFailWithError = [](KRTrackWriter &, const NSError &error) {
        std::fprintf(stderr, "%s\n", qPrintable(error.localizedDescription()));
        QCoreApplication::exit(1);
    };
    if (const NSError error = writer->writeTrackAndNotifyDelegate(delegate))
        return 1;
    const int status = QCoreApplication::exec();
    return status == 0 && QFile(path).size() > 32768 ? 0 : 2;
}
