#pragma once

#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/taskLauncher.h>

#include <QFile>

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// A launcher whose delegate keeps what it hears.
class LauncherTest : public testing::Test
{
protected:
    LauncherTest()
    {
        leaveSessionBus();
        launcher->setDelegate(recordingDelegate());
    }

    taskLauncherDelegate recordingDelegate()
    {
        taskLauncherDelegate delegate;
        delegate.taskLauncherDidReceiveNewString = [this](taskLauncher &, const QString &string) { text += string; };
        delegate.taskLauncherDidReceiveNewData = [this](taskLauncher &, const QByteArray &piece) { data += piece; };
        delegate.taskLauncherTaskDidEnd = [this](taskLauncher &) { events.emplace_back("end"); };
        delegate.taskLauncherTaskDidSuspend = [this](taskLauncher &) { events.emplace_back("suspend"); };
        delegate.taskLauncherTaskDidResume = [this](taskLauncher &) { events.emplace_back("resume"); };
        return delegate;
    }

    /// Words that are texts, in which "|" parts the stages.
    static QVariantList words(const std::vector<const char *> &list)
    {
        QVariantList result;
        for (const char *word : list)
            result << QString::fromUtf8(word);
        return result;
    }
    static QVariantList shell(const char *script) { return words({"/bin/sh", "-c", script}); }

    [[nodiscard]] bool waitForEnd()
    {
        return runEventLoopUntil([this] { return !events.empty() && events.back() == "end"; });
    }
    void run(const QVariantList &arguments)
    {
        ASSERT_EQ(launcher->launchTasksWithArguments(arguments), 0)
            << launcher->launchError().localizedDescription().toStdString();
        ASSERT_TRUE(waitForEnd());
    }

    /// The letter for the state of a process in its "stat", 0 when it is gone.
    static char stateOf(int process)
    {
        QFile file(QStringLiteral("/proc/%1/stat").arg(process));
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        const QByteArray bytes = file.readAll();
        return bytes.mid(bytes.lastIndexOf(')') + 2, 1).toStdString().c_str()[0];
    }
    /// The number that a script has written to a file once it was whole, as `echo $$ >FILE` does.
    int numberIn(const QByteArray &file)
    {
        EXPECT_TRUE(runEventLoopUntil([&] { return tree.exists(file) && tree.contents(file).endsWith('\n'); }));
        return tree.contents(file).trimmed().toInt();
    }
    static std::size_t openDescriptors()
    {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
            ++count;
        return count;
    }
    /// Children of this process, whether they run or wait for their status to be taken.
    static std::string children()
    {
        QFile file(QStringLiteral("/proc/self/task/%1/children").arg(::getpid()));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toStdString() : std::string("?");
    }

    const TemporaryTree tree;
    QString text;
    QByteArray data;
    std::vector<std::string> events;
    std::shared_ptr<taskLauncher> launcher = taskLauncher::init();
};

} // namespace Tessaron::Testing
