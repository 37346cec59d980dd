#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QStringList>
#include <QUndoStack>

#include <functional>
#include <platform/foundation/Result.h>
#include <stop_token>

namespace Tessaron::Desktop
{

/// What is saved as a project: a kind of disc that is put together. On the main thread, but for the functions that it
/// gives away.
class ProjectSubject
{
public:
    virtual ~ProjectSubject() = default;

    /// Makes the project, as it was when the function was asked for, for a file in the folder (bytes, without a slash
    /// behind). With aliases, every file carries what finds it again when it is moved. Touches the disk; for a thread.
    /// An empty object after a stop.
    using Writer = std::function<QJsonObject(const QByteArray &folder, bool hasAliases, const std::stop_token &)>;
    /// Puts what was read into the disc's place, on the main thread; returns what could not be found, a path each.
    using Replacement = std::function<QStringList()>;
    /// Finds out what a project holds that lies in the folder. Touches the disk; for a thread. The error says why it
    /// cannot be opened, in the words behind "cannot be opened: ".
    using Reader = std::function<Result<Replacement>(const QJsonObject &project, const QByteArray &folder,
                                                     const std::stop_token &)>;

    /// What a project of this kind says of itself.
    [[nodiscard]] virtual QString kind() const = 0;
    [[nodiscard]] virtual QUndoStack &undoStack() = 0;
    [[nodiscard]] virtual bool isEmpty() const = 0;
    [[nodiscard]] virtual Writer writer() const = 0;
    [[nodiscard]] virtual Reader reader() = 0;
    /// Begins an empty disc.
    virtual void clear() = 0;

protected:
    ProjectSubject() = default;
    ProjectSubject(const ProjectSubject &) = default;
    ProjectSubject &operator=(const ProjectSubject &) = default;
};

} // namespace Tessaron::Desktop
