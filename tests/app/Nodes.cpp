#include "tests/app/Nodes.h"

#include "tests/support/EventLoop.h"
#include <TessaronClasses/KRFileReference.h>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

using namespace Desktop;

std::shared_ptr<TakenIn> takenIn(const QList<QByteArray> &paths)
{
    SourceIntake intake;
    std::shared_ptr<TakenIn> taken;
    QObject::connect(&intake, &SourceIntake::finished, &intake,
                     [&taken](const std::shared_ptr<TakenIn> &result) { taken = result; });
    intake.add(paths, *virtualFolderNode(QStringLiteral("disc")));
    EXPECT_TRUE(runEventLoopUntil([&taken] { return taken != nullptr; }));
    return taken;
}

QStringList addTo(DiscDocument &document, const QList<QByteArray> &paths)
{
    return document.addTaken(*takenIn(paths));
}

QStringList pathsOf(const DiscNode &root)
{
    QStringList paths;
    for (const std::unique_ptr<DiscNode> &child : root.children) {
        paths << child->discPath() + (child->isFolder() ? QStringLiteral("/") : QString());
        paths << pathsOf(*child);
    }
    return paths;
}

DiscNode *nodeAt(const DiscDocument &document, const QString &path)
{
    DiscNode *node = &document.model().root();
    for (const QString &name : path.split(u'/', Qt::SkipEmptyParts)) {
        node = node->child(name);
        if (!node)
            return nullptr;
    }
    return node;
}

QString faultOf(const DiscNode &root)
{
    std::uint64_t bytes = root.isFolder() ? 0 : wholeBlocks(root.size);
    std::uint32_t objects = 1;
    if (root.item->items().size() != root.children.size())
        return QStringLiteral("%1 has other items than children").arg(root.discPath());
    for (std::size_t row = 0; row < root.children.size(); ++row) {
        const DiscNode &child = *root.children[row];
        if (child.parent != &root || child.row != row)
            return QStringLiteral("%1 is in a wrong place").arg(child.discPath());
        if (child.item != root.item->items()[row] || child.item->parent() != root.item)
            return QStringLiteral("%1 has a wrong item").arg(child.discPath());
        const QString desired = child.item->fileReference()->desiredNameWithExtensionEvenIfHidden(false);
        if (child.item->fileReference()->hasDesiredName() && desired != child.name)
            return QStringLiteral("%1 is named %2 by its item").arg(child.discPath(), desired);
        QString fault = faultOf(child);
        if (!fault.isEmpty())
            return fault;
        bytes += child.totalBytes;
        objects += child.objects;
    }
    if (bytes != root.totalBytes || objects != root.objects)
        return QStringLiteral("%1 has wrong totals").arg(root.discPath());
    return {};
}

} // namespace Tessaron::Testing
