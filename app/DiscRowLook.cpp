#include "app/DiscRowLook.h"

#include "app/Words.h"

#include <TessaronClasses/KRFileReference.h>

#include <QApplication>
#include <QMimeDatabase>
#include <QStyle>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

DiscRowLook::DiscRowLook()
    : m_folderIcon(QIcon::fromTheme(QStringLiteral("folder"), QApplication::style()->standardIcon(QStyle::SP_DirIcon)))
    , m_warningIcon(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
    , m_changedIcon(QApplication::style()->standardIcon(QStyle::SP_MessageBoxInformation))
{
}

const DiscRowLook::TypeOfFile &DiscRowLook::typeOf(const DiscNode &node) const
{
    const qsizetype dot = node.name.lastIndexOf(u'.');
    const QString extension = dot > 0 ? node.name.mid(dot + 1) : QString();
    const auto known = m_types.constFind(extension);
    if (known != m_types.cend())
        return *known;
    // By the name alone: its content must not be looked at here.
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile(QStringLiteral("x.") + extension, QMimeDatabase::MatchExtension);
    const QIcon plain = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    const QIcon generic = QIcon::fromTheme(type.genericIconName(), plain);
    return *m_types.insert(
        extension, {type.isDefault() ? tr("File") : type.comment(), QIcon::fromTheme(type.iconName(), generic)});
}

QString DiscRowLook::kindText(const DiscNode &node) const
{
    switch (node.kind) {
    case DiscNodeKind::Folder:
        return tr("Folder");
    case DiscNodeKind::VirtualFolder:
        return tr("New folder");
    case DiscNodeKind::SymbolicLink:
        return tr("Link");
    case DiscNodeKind::Other:
        return tr("Device or pipe");
    case DiscNodeKind::File:
        break;
    }
    return typeOf(node).text;
}

QIcon DiscRowLook::icon(const DiscNode &node, DiscMark::Severity severity) const
{
    if (node.isMissing || node.isUnreadable || severity == DiscMark::Severity::Lost)
        return m_warningIcon;
    if (severity == DiscMark::Severity::Changed)
        return m_changedIcon;
    return node.isFolder() ? m_folderIcon : typeOf(node).icon;
}

QString DiscRowLook::toolTip(const DiscNode &node, const QString &markText) const
{
    QStringList lines;
    if (node.isMissing)
        lines << tr("The file is missing: it was moved or removed.");
    if (node.isUnreadable)
        lines << tr("You may not read this file.");
    if (!markText.isEmpty())
        lines << markText;
    const QString options = optionsText(*node.item->fileReference()->tessaronAttributes());
    if (!options.isEmpty())
        lines << options;
    const QByteArray path = node.sourcePath();
    if (!path.isEmpty())
        lines << displayableText(stringWithFileSystemRepresentation(path));
    return lines.join(u'\n');
}

} // namespace Tessaron::Desktop
