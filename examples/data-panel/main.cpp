// Saves a folder as a disc image through a panel: scan, layout, image, each reported by callback.
//
//     data-panel [--sync] FOLDER IMAGE.iso|IMAGE.bin|IMAGE.vant
//
// It ends with 0 when everything is in the image, with 3 when something is not (and says what), with 1 when there is no
// image; an older one is as it was then.
#include "DataPanel.h"

#include <TessaronClasses/DiscNames.h>
#include <TessaronClasses/KRDirectoryScanner.h>
#include <TessaronClasses/KRLayoutWriter.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdio>
#include <platform/discrecording/objects/DRStorageReport.h>
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

/// An image in the folder that is being saved would have to hold itself.
bool liesIn(const QString &folder, const QString &imagePath)
{
    const QString outer = QFileInfo(folder).canonicalFilePath();
    const QString inner = QFileInfo(imagePath).dir().canonicalPath();
    return inner == outer || inner.startsWith(outer + u'/');
}

/// Holds the panel and the writer while they work. The image is made in a folder of its own beside its place and moved
/// there when all went well: until then an older image stays as it is.
class Program
{
public:
    Program(const QString &imagePath, bool isAsync)
        : m_image(imagePath)
        , m_isAsync(isAsync)
        , m_folder(m_image.dir().filePath(QStringLiteral(".data-panel.XXXXXX")))
    {
    }

    bool scan(const QString &folder)
    {
        m_scanner = KRDirectoryScanner::directoryScannerWithPath(folder);
        if (!m_scanner)
            return false;
        KRDirectoryScannerDelegate delegate;
        delegate.directoryScannerScanDidFinishWithHierarchyItem =
            [this](KRDirectoryScanner &scanner, const std::shared_ptr<KRFileHierarchyItem> &root) {
                // A folder that cannot be listed is in the tree, and empty: the user must hear of it.
                for (const UnreadableFolder &unreadable : scanner.unreadableFolders())
                    tell(stringWithFileSystemRepresentation(unreadable.path), QStringLiteral("cannot be listed"));
                if (root)
                    save(root);
                else
                    QCoreApplication::exit(fail(QStringLiteral("there is not enough memory for the tree")));
            };
        m_scanner->setDelegate(delegate);
        return m_scanner->startDirectoryScan();
    }

private:
    void save(const std::shared_ptr<KRFileHierarchyItem> &root)
    {
        // A reference can only be made to a file that exists.
        const QString path = m_folder.filePath(m_image.fileName());
        QFile file(path);
        FSRef destination;
        if (!m_folder.isValid() || !file.open(QIODevice::WriteOnly)
            || FSPathMakeRef(fileSystemRepresentation(path), &destination, nullptr) != noErr) {
            QCoreApplication::exit(fail(QStringLiteral("nothing can be written beside %1").arg(m_image.filePath())));
            return;
        }
        file.close();
        m_panel = std::make_shared<DataPanel>(root, m_isAsync);
        m_writer = KRLayoutWriter::layoutWriter();
        KRLayoutWriterDelegate delegate;
        delegate.KRLayoutWriterProgress = [](KRLayoutWriter &, float progress) {
            std::printf("%3d %%\n", int(progress * 100));
        };
        delegate.KRLayoutWriterDidFinishWritingLayout = [this](KRLayoutWriter &) {
            // The cue sheet or the header is added when this returns.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [this] { publish(); }, Qt::QueuedConnection);
        };
        delegate.KRLayoutWriterDidFailWithError = [](KRLayoutWriter &, const NSError &error) {
            QCoreApplication::exit(fail(error.localizedDescription()));
        };
        m_writer->setDelegate(delegate);
        if (const NSError error = m_writer->writeLayoutToFSRef(destination, m_panel, formatOfImage(path)))
            QCoreApplication::exit(fail(error.localizedDescription()));
    }

    static bool move(const QString &from, const QString &to)
    {
        return std::rename(fileSystemRepresentation(from).constData(), fileSystemRepresentation(to).constData()) == 0;
    }

    /// Moves the image over what is there, after the cue sheet where there is one. An older sheet waits in the folder
    /// until the image has its place, and comes back if it does not get it.
    void publish()
    {
        const QString image = m_image.fileName();
        QStringList others = QDir(m_folder.path()).entryList(QDir::Files);
        others.removeAll(image);
        bool isMoved = true;
        for (const QString &name : others) {
            move(m_image.dir().filePath(name), m_folder.filePath(QStringLiteral("older ") + name));
            isMoved = isMoved && move(m_folder.filePath(name), m_image.dir().filePath(name));
        }
        if (!isMoved || !move(m_folder.filePath(image), m_image.filePath())) {
            for (const QString &name : others) {
                move(m_image.dir().filePath(name), m_folder.filePath(name));
                move(m_folder.filePath(QStringLiteral("older ") + name), m_image.dir().filePath(name));
            }
            QCoreApplication::exit(fail(QStringLiteral("%1 cannot be replaced").arg(m_image.filePath())));
            return;
        }
        reportWhatIsNotStored();
        std::printf("done\n");
        QCoreApplication::exit(m_isIncomplete ? 3 : 0);
    }

    /// What no filesystem of the disc holds as it stands: a program must not keep that from its user.
    void reportWhatIsNotStored()
    {
        const std::shared_ptr<const DRStorageReport> report = m_writer->storageReport();
        for (std::size_t index = 0; report && index < report->count(); ++index) {
            const DRStorageReportItem item = report->item(index);
            if (item.isLost)
                tell(item.path, item.reason);
        }
    }

    void tell(const QString &path, const QString &reason)
    {
        m_isIncomplete = true;
        std::fprintf(stderr, "data-panel: %s: %s\n", qPrintable(displayableText(path)), qPrintable(reason));
    }

    const QFileInfo m_image;
    const bool m_isAsync;
    const QTemporaryDir m_folder;
    bool m_isIncomplete = false;
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
    if (liesIn(arguments.at(0), arguments.at(1)))
        return fail(QStringLiteral("%1 lies in the folder that it would hold").arg(arguments.at(1)));
    Program program(arguments.at(1), isAsync);
    if (!program.scan(arguments.at(0)))
        return fail(QStringLiteral("%1 cannot be scanned").arg(arguments.at(0)));
    return QCoreApplication::exec();
}
