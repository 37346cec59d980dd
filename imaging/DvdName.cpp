#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include <TessaronClasses/DiscNames.h>

namespace Tessaron
{

namespace
{

/// How long the name may be before no further character is read; the last one read may still be appended.
constexpr qsizetype longestBeforeLast = 26;

/// An object that serves only to ask how one character is mangled.
std::shared_ptr<DRFSObject> scratchObject(const QString &path)
{
    if (std::shared_ptr<DRFile> file = DRFile::fileWithPath(path))
        return file;
    if (std::shared_ptr<DRFolder> folder = DRFolder::folderWithPath(path))
        return folder;
    return DRFolder::virtualFolderWithName(path);
}

} // namespace

QString dvdName(const QString &text)
{
    const QString fallback = QStringLiteral("DVD");
    const QString name = text.isEmpty() ? fallback : text;
    const std::shared_ptr<DRFSObject> scratch = scratchObject(name);
    const QString refused = QStringLiteral("_");
    QString result;
    for (const QChar character : name) {
        const QChar converted = character == u'-' || character == u'\'' ? QChar(u' ') : character;
        scratch->setBaseName(converted);
        const QString mangled = scratch->mangledNameForFilesystem(DRISO9660LevelOne);
        if (converted == u' ' || converted == u'_' || mangled != refused)
            result += mangled;
        result.replace(QStringLiteral("__"), refused);
        if (result.size() > longestBeforeLast)
            break;
    }
    if (result.startsWith(u'_'))
        result.remove(0, 1);
    return result.isEmpty() ? fallback : result;
}

} // namespace Tessaron
