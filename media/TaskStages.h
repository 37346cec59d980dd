#pragma once

#include <QByteArray>
#include <QList>
#include <QVariantList>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// The program of one stage of a pipeline: argument 0 is the path of its tool.
using TaskStage = QList<QByteArray>;

/// A pipeline as taskLauncher::launchTasksWithArguments() gets it, understood.
struct TaskStages {
    /// The statuses that launching has for this.
    enum class Status : std::uint8_t { Complete = 0, NoArguments = 1, EmptyStage = 2, ToolNotFound = 3 };

    Status status = Status::Complete;
    std::vector<TaskStage> stages; ///< with paths of tools that exist; empty unless complete
    QByteArray missingTool; ///< as it was named, for ToolNotFound
};

/// Parts the arguments at every "|" and finds the tools: the file at the path that the first argument of a stage is,
/// else the framework's own bundle's resource of that name. PATH is not looked at.
[[nodiscard]] TaskStages taskStages(const QVariantList &arguments);

/// The bytes that an argument is passed as: bytes as they are, text as a file name (FileSystemRepresentation.h),
/// numbers in digits, fractions in 16 of them or, from single precision, in 7; a leading "~" or "~name" becomes the
/// home folder of the user, or of that one if there is such a user.
[[nodiscard]] QByteArray taskArgument(const QVariant &argument);

} // namespace Tessaron
