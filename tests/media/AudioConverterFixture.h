#pragma once

#include "platform/foundation/NSBundle.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// The application's bundle in a folder of the test, with tools that are scripts.
class AudioConverter : public testing::Test
{
protected:
    AudioConverter()
    {
        leaveSessionBus();
        tree.makeFolder("out");
        NSBundle::setMainBundlePath(tree.pathText("bundle"));
        delegate.KRAudioConverterProgress = [this](KRAudioConverter &, float fraction) {
            progress.push_back(fraction);
        };
        delegate.KRAudioConverterDidEnd = [this](KRAudioConverter &) { events.emplace_back("end"); };
        delegate.KRAudioConverterDidAbort = [this](KRAudioConverter &) { events.emplace_back("abort"); };
        delegate.KRAudioConverterDidFailWithError = [this](KRAudioConverter &, const NSError &one) {
            events.emplace_back("fail");
            error = one;
        };
        converter->setDelegate(delegate);
    }

    void makeTool(const QByteArray &relative, const QByteArray &script) const
    {
        tree.makeFile(relative, "#!/bin/sh\n" + script);
        tree.setMode(relative, 0755);
    }
    /// The tool for WAVE and AIFF: a script whose $1 to $5 are its arguments.
    void makeQrlMov2Wav(const QByteArray &script) const
    {
        makeTool("bundle/Resources/QrlMov2Wav.app/Contents/MacOS/QrlMov2Wav", script);
    }
    void useRealTools() { NSBundle::setMainBundlePath({}); }

    void convert(const QStringList &names, const QStringList &results, std::int32_t format)
    {
        QStringList sources, paths;
        for (const QString &name : names)
            sources << tree.pathText(name.toUtf8());
        for (const QString &result : results)
            paths << tree.pathText(result.toUtf8());
        converter->convertAudioFiles(sources, paths, format);
    }
    [[nodiscard]] bool waitForEvent(std::size_t count = 1)
    {
        return runEventLoopUntil([&] { return events.size() >= count; });
    }

    /// Calls `function` when the tool that runs now has ended and the converter has heard of it.
    void atEndOfTool(const std::function<void()> &function) const
    {
        const std::shared_ptr<taskLauncher> task = converter->task();
        ASSERT_TRUE(task);
        taskLauncherDelegate taskDelegate = task->delegate();
        taskDelegate.taskLauncherTaskDidEnd = [function, own = taskDelegate.taskLauncherTaskDidEnd](taskLauncher &one) {
            own(one);
            function();
        };
        task->setDelegate(taskDelegate);
    }

    const TemporaryTree tree;
    KRAudioConverterDelegate delegate;
    std::vector<std::string> events;
    std::vector<float> progress;
    NSError error;
    std::shared_ptr<KRAudioConverter> converter = KRAudioConverter::init();
};

} // namespace Tessaron::Testing
