// Saves a folder as a disc image through a panel: scan, layout, image, each reported by callback.
//
//     data-panel [--sync] FOLDER IMAGE.iso|IMAGE.bin|IMAGE.vant
#include "DataPanel.h"

#include <TessaronClasses/DiscNames.h>
#include <TessaronClasses/KRDirectoryScanner.h>
#include <TessaronClasses/KRLayoutWriter.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdio>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/NSError.h>

using namespace Tessaron;

namespace
{

TessaronDiscImageFormat formatOfImage(const QString &path)
{
    for (const TessaronDiscImageFormat format :
         {TessaronDiscImageFormatISO, TessaronDiscImageFormatBIN, TessaronDiscImageFormatVANT}) {
        if (QFileInfo(path).suffix() == extensionForTessaronDiscImageFormat(format))
            return format;
    }
    return 0;
}

int fail(const QString &message)
{
    std::fprintf(stderr, "data-panel: %s\n", qPrintable(message));
    return 1;
}

/// Holds the panel and the writer while they work.
class Program
{
public:
    Program(const QString &imagePath, bool isAsync)
        : m_imagePath(imagePath)
        , m_isAsync(isAsync)
    {
    }

    bool scan(const QString &folder)
    {
        m_scanner = KRDirectoryScanner::directoryScannerWithPath(folder);
        if (!m_scanner)
            return false;
        KRDirectoryScannerDelegate delegate;
        delegate.directoryScannerScanDidFinishWithHierarchyItem =
            [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &root) { save(root); };
        m_scanner->setDelegate(delegate);
        return m_scanner->startDirectoryScan();
    }

private:
    void save(const std::shared_ptr<KRFileHierarchyItem> &root)
    {
        m_panel = std::make_shared<DataPanel>(root, m_isAsync);
        m_writer = KRLayoutWriter::layoutWriter();
        KRLayoutWriterDelegate delegate;
        delegate.KRLayoutWriterProgress = [](KRLayoutWriter &, float progress) {
            std::printf("%3d %%\n", int(progress * 100));
        };
        delegate.KRLayoutWriterDidFinishWritingLayout = [](KRLayoutWriter &) {
            std::printf("done\n");
            // The cue sheet or the header is added when this returns; the program ends after that.
            QCoreApplication::exit(0);
        };
        delegate.KRLayoutWriterDidFailWithError = [](KRLayoutWriter &, const NSError &error) {
            QCoreApplication::exit(fail(error.localizedDescription()));
        };
        m_writer->setDelegate(delegate);
        FSRef destination;
        (void)FSPathMakeRef(fileSystemRepresentation(m_imagePath), &destination, nullptr);
        if (const NSError error = m_writer->writeLayoutToFSRef(destination, m_panel, formatOfImage(m_imagePath)))
            QCoreApplication::exit(fail(error.localizedDescription()));
    }

    const QString m_imagePath;
    const bool m_isAsync;
    std::shared_ptr<KRDirectoryScanner> m_scanner;
    std::shared_ptr<DataPanel> m_panel;
    std::shared_ptr<KRLayoutWriter> m_writer;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool isAsync = arguments.removeAll(QStringLiteral("--sync")) == 0;
    if (arguments.size() != 2 || formatOfImage(arguments.at(1)) == 0)
        return fail(QStringLiteral("usage: data-panel [--sync] FOLDER IMAGE.iso|IMAGE.bin|IMAGE.vant"));
    // A reference can only be made to a file that exists.
    QFile image(arguments.at(1));
    if (!image.open(QIODevice::WriteOnly))
        return fail(image.errorString());
    image.close();
    Program program(arguments.at(1), isAsync);
    if (!program.scan(arguments.at(0)))
        return fail(QStringLiteral("%1 cannot be scanned").arg(arguments.at(0)));
    return QCoreApplication::exec();
}
