#include "platform/discrecording/objects/DRFSObject.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/RegularExpression.h"
#include <TessaronClasses/DiscNames.h>

#include <QStringList>

#include <algorithm>
#include <limits>
#include <vector>

namespace Tessaron
{

namespace
{

/// The number that a text begins with, after white space; 0 without one, the nearest limit when it is too big.
std::int64_t leadingInteger(QStringView text)
{
    constexpr std::int64_t greatest = std::numeric_limits<std::int32_t>::max();
    text = text.trimmed();
    const bool isNegative = text.startsWith(u'-');
    if (isNegative || text.startsWith(u'+'))
        text = text.sliced(1);
    std::int64_t value = 0;
    for (const QChar digit : text) {
        if (digit < u'0' || digit > u'9')
            break;
        value = std::min(value * 10 + (digit.unicode() - u'0'), greatest + 1);
    }
    return isNegative ? -value : std::min(value, greatest);
}

/// The folder whose children describe the object, or null when its name does.
const DRFolder *describingFolder(const DRFSObject &object)
{
    return object.isFolder() && object.isVirtual() ? static_cast<const DRFolder *>(&object) : nullptr;
}

} // namespace

std::optional<std::int64_t> msfValue(const QString &text)
{
    const QString compact = QString(text).remove(u' ');
    const QList<QStringView> parts = QStringView(compact).split(u':');
    if (parts.size() != 3)
        return std::nullopt;
    return MSF{leadingInteger(parts[0]), leadingInteger(parts[1]), leadingInteger(parts[2])}.totalFrames();
}

QString extensionForTessaronDiscImageFormat(TessaronDiscImageFormat format)
{
    switch (format) {
    case TessaronDiscImageFormatDMG:
        return QStringLiteral("dmg");
    case TessaronDiscImageFormatISO:
        return QStringLiteral("iso");
    case TessaronDiscImageFormatNRG:
        return QStringLiteral("nrg");
    case TessaronDiscImageFormatCDI:
        return QStringLiteral("cdi");
    case TessaronDiscImageFormatToast:
        return QStringLiteral("toast");
    case TessaronDiscImageFormatBIN:
        return QStringLiteral("bin");
    case TessaronDiscImageFormatTOC:
        return QStringLiteral("toc");
    case TessaronDiscImageFormatCDR:
        return QStringLiteral("cdr");
    case TessaronDiscImageFormatVANT:
        return QStringLiteral("vant");
    default:
        return {};
    }
}

bool occurenceOfString(const QString &text, const QString &string, const QString &comesBeforeString)
{
    // An empty text occurs nowhere.
    const qsizetype first = string.isEmpty() ? -1 : text.indexOf(string);
    const qsizetype second = comesBeforeString.isEmpty() ? -1 : text.indexOf(comesBeforeString);
    return first >= 0 && (second < 0 || second > first);
}

bool matchesRegExp(const QString &text, const QString &pattern)
{
    return !pattern.isNull() && regularExpressionMatches(pattern, text);
}

QString fullDescription(const DRFSObject &object)
{
    struct OpenFolder {
        const DRFolder *folder;
        std::size_t nextChild;
    };
    const DRFolder *const outermost = describingFolder(object);
    if (!outermost)
        return object.baseName();
    QString result;
    std::vector<OpenFolder> stack{{outermost, 0}};
    while (!stack.empty()) {
        OpenFolder &open = stack.back();
        if (open.nextChild == open.folder->children().size()) {
            stack.pop_back();
            if (!stack.empty())
                result += u'\n';
            continue;
        }
        const DRFSObject &child = *open.folder->children()[open.nextChild++];
        if (const DRFolder *const folder = describingFolder(child))
            stack.push_back({folder, 0});
        else
            result += child.baseName() + u'\n';
    }
    return result;
}

std::shared_ptr<DRFSObject> childWithBaseName(const DRFolder &folder, const QString &name)
{
    const auto &children = folder.children();
    const auto found = std::ranges::find_if(children, [&](const auto &child) { return child->baseName() == name; });
    return name.isNull() || found == children.end() ? nullptr : *found;
}

void removeAllChildren(DRFolder &folder)
{
    folder.removeAllChildren();
}

} // namespace Tessaron
