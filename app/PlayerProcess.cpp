#include "app/PlayerProcess.h"

#include <array>
#include <cerrno>
#include <platform/foundation/DescriptorIO.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>
#include <platform/foundation/NSBundle.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::size_t mostSaid = 4096;

/// Starts a program with standard error in the file; -1 and `errno` when that fails.
pid_t started(const QList<QByteArray> &words, int errors)
{
    std::vector<char *> arguments;
    QList<QByteArray> copies = words;
    for (QByteArray &word : copies)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    pid_t child = -1;
    const int failure = ::posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    errno = failure;
    return failure == 0 ? child : -1;
}

} // namespace

PlayerProcess::PlayerProcess(QObject *parent)
    : QObject(parent)
{
}

PlayerProcess::~PlayerProcess() = default;

bool PlayerProcess::play(const QByteArray &path, int title, int chapter, QString *reason)
{
    if (isRunning()) {
        *reason = tr("The player is open already.");
        return false;
    }
    const QByteArray program =
        fileSystemRepresentation(NSBundle::frameworkBundle()->pathForResource(QStringLiteral("TessaronDVDWindow")));
    if (program.isEmpty()) {
        *reason = tr("The player is not installed.");
        return false;
    }
    QList<QByteArray> words = {program};
    if (title > 0)
        words << "--title" << QByteArray::number(title);
    if (title > 0 && chapter > 0)
        words << "--chapter" << QByteArray::number(chapter);
    words << "--" << path;
    m_errors.reset(::memfd_create("player", MFD_CLOEXEC));
    m_child = m_errors ? started(words, m_errors.get()) : -1;
    if (m_child > 0)
        m_process.reset(int(::syscall(SYS_pidfd_open, m_child, 0)));
    if (m_child <= 0 || !m_process) {
        *reason = tr("The player cannot be started: %1").arg(systemText(errno));
        return false;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_process.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PlayerProcess::end);
    return true;
}

void PlayerProcess::end()
{
    m_notifier->setEnabled(false);
    m_notifier.release()->deleteLater(); // whose signal this is
    int status = 0;
    ::waitpid(m_child, &status, 0);
    m_child = -1;
    m_process.reset();
    std::array<char, mostSaid> bytes = {};
    std::size_t got = 0;
    QString said;
    if (status != 0 && readFully(m_errors.get(), 0, bytes.data(), bytes.size(), &got) == 0)
        said = displayableText(stringWithFileSystemRepresentation(QByteArray(bytes.data(), qsizetype(got)))).trimmed();
    if (status != 0 && said.isEmpty())
        said = tr("The player ended unexpectedly.");
    Q_EMIT ended(said);
}

} // namespace Tessaron::Desktop
