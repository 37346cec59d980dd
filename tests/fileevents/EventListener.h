#pragma once

#include "platform/fileevents/FSEventStream.h"
#include "platform/fileevents/FileEventSource.h"
#include "tests/support/TemporaryTree.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// A service of the system that events come from.
enum class Mechanism {
    Fanotify,
    Inotify,
};

void PrintTo(Mechanism mechanism, std::ostream *stream);
[[nodiscard]] std::string nameOfMechanism(const testing::TestParamInfo<Mechanism> &info);
[[nodiscard]] std::unique_ptr<FileEventSource> makeSource(Mechanism mechanism);
/// Why this process cannot watch the folder so; empty when it can.
[[nodiscard]] std::string reasonWhyNot(Mechanism mechanism, const QByteArray &folder);

/// A stream and all that it told.
class EventListener
{
public:
    struct Heard {
        QByteArray path;
        FSEventStreamEventFlags flags = 0;
        FSEventStreamEventId identifier = 0;
    };

    /// Watches from the moment this returns on.
    EventListener(Mechanism mechanism, const std::vector<QByteArray> &paths,
                  std::chrono::duration<double> latency = std::chrono::milliseconds(1));

    [[nodiscard]] NSError start();
    /// Runs the event loop until all that was there to be watched is watched, and forgets what was heard by then.
    void settle();
    /// Runs the event loop until there is an event of the folder with at least these flags.
    [[nodiscard]] bool waitFor(const QByteArray &folder, FSEventStreamEventFlags flags = 0);
    [[nodiscard]] bool hasHeardOf(const QByteArray &folder, FSEventStreamEventFlags flags = 0) const;
    /// True when an event of the folder itself or of one below it was heard.
    [[nodiscard]] bool hasHeardFromInside(const QByteArray &folder) const;
    /// Runs the event loop until all is told that has happened until now; the folder lies below a path that is watched,
    /// where nothing else happens.
    [[nodiscard]] bool waitForTheRest(const TemporaryTree &tree, const QByteArray &quietFolder);
    void forget() { heard.clear(); }

    std::vector<Heard> heard;
    std::vector<std::size_t> batches; ///< the number of events of each
    std::vector<NSError> problems;
    std::function<void()> inCallback;
    std::shared_ptr<FSEventStream> stream;

private:
    static void hear(ConstFSEventStreamRef stream, void *listener, std::size_t count, void *paths,
                     const FSEventStreamEventFlags *flags, const FSEventStreamEventId *identifiers);

    const Mechanism m_mechanism;
    const std::vector<QByteArray> m_paths;
};

/// Tests of both services; one that this process may not use is skipped.
class EachMechanism : public testing::TestWithParam<Mechanism>
{
protected:
    void SetUp() override;

    const TemporaryTree tree;
};

} // namespace Tessaron::Testing
