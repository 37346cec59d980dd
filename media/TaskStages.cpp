#include "media/TaskStages.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/PathBytes.h"

#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

// What a number has in its description, significant digits.
constexpr int digitsOfDouble = 16;
constexpr int digitsOfFloat = 7;

bool isStageSeparator(const QVariant &argument)
{
    const int type = argument.typeId();
    return (type == QMetaType::QString || type == QMetaType::QByteArray) && argument.toByteArray() == "|";
}

/// Empty for a name that no user has.
QByteArray homeFolderOfUser(const QByteArray &name)
{
    std::array<char, 4096> buffer;
    passwd entry = {};
    passwd *found = nullptr;
    const int failure = name.isEmpty() ? ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found)
                                       : ::getpwnam_r(name.constData(), &entry, buffer.data(), buffer.size(), &found);
    return failure == 0 && found != nullptr ? QByteArray(found->pw_dir) : QByteArray();
}

QByteArray withHomeFolder(const QByteArray &text)
{
    if (!text.startsWith('~'))
        return text;
    const qsizetype slash = text.indexOf('/');
    const QByteArray user = slash < 0 ? text.mid(1) : text.mid(1, slash - 1);
    QByteArray home = user.isEmpty() ? qgetenv("HOME") : QByteArray();
    if (home.isEmpty())
        home = homeFolderOfUser(user);
    if (home.isEmpty())
        return text;
    return slash < 0 ? home : home + text.mid(slash);
}

QByteArray resourceOfFramework(const QByteArray &tool)
{
    const QByteArray name = lastPathComponent(tool).toByteArray();
    const qsizetype dot = name.lastIndexOf('.');
    const bool hasExtension = dot > 0;
    const QByteArray baseName = tool.chopped(hasExtension ? name.size() - dot : 0);
    const QString path = NSBundle::frameworkBundle()->pathForResource(
        stringWithFileSystemRepresentation(baseName),
        hasExtension ? stringWithFileSystemRepresentation(name.mid(dot + 1)) : QString());
    return fileSystemRepresentation(path);
}

/// The path of a tool; empty when there is no such file.
QByteArray pathOfTool(const QByteArray &tool)
{
    if (tool.isEmpty() || ::access(tool.constData(), F_OK) == 0)
        return tool;
    const QByteArray resource = resourceOfFramework(tool);
    return ::access(resource.constData(), F_OK) == 0 ? resource : QByteArray();
}

} // namespace

QByteArray taskArgument(const QVariant &argument)
{
    QByteArray text;
    switch (argument.typeId()) {
    case QMetaType::QByteArray:
        text = argument.toByteArray();
        break;
    case QMetaType::Bool:
        text = argument.toBool() ? "1" : "0";
        break;
    case QMetaType::Double:
        text = QByteArray::number(argument.toDouble(), 'g', digitsOfDouble);
        break;
    case QMetaType::Float:
        text = QByteArray::number(argument.toDouble(), 'g', digitsOfFloat);
        break;
    default:
        text = fileSystemRepresentation(argument.toString());
    }
    return withHomeFolder(text);
}

TaskStages taskStages(const QVariantList &arguments)
{
    if (arguments.isEmpty())
        return {TaskStages::Status::NoArguments, {}, {}};
    TaskStages result;
    result.stages.emplace_back();
    for (const QVariant &argument : arguments) {
        if (!isStageSeparator(argument))
            result.stages.back().append(taskArgument(argument));
        else if (result.stages.back().isEmpty())
            return {TaskStages::Status::EmptyStage, {}, {}};
        else
            result.stages.emplace_back();
    }
    if (result.stages.back().isEmpty())
        result.stages.pop_back();
    for (TaskStage &stage : result.stages) {
        const QByteArray path = pathOfTool(stage.first());
        if (path.isEmpty())
            return {TaskStages::Status::ToolNotFound, {}, stage.first()};
        stage.first() = path;
    }
    return result;
}

} // namespace Tessaron
