#include "tests/tools/AudioFixture.h"

#include <csignal>
#include <filesystem>
#include <map>
#include <vector>

// Commands that are killed, or lose one of their helpers, at one step of their way after the other.

namespace Tessaron::Testing
{

namespace
{

namespace fs = std::filesystem;

/// What is done to files. The calls of one thread or process are counted apart from those of the others.
constexpr const char *callsOnFiles =
    "pwrite64,ftruncate,fchmod,fsync,fdatasync,linkat,rename,renameat,renameat2,unlink,unlinkat,mkdir,mkdirat";

class KilledCommand : public Audio
{
protected:
    /// The contents of all files in the folder of the output, by their paths there, but for what is hidden.
    [[nodiscard]] std::map<std::string, QByteArray> visibleFiles() const
    {
        std::map<std::string, QByteArray> files;
        const fs::path folder = m_tree.path("out").toStdString();
        for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator();
             ++entry) {
            const std::string path = fs::relative(entry->path(), folder).string();
            if (entry->path().filename().string().starts_with('.'))
                entry.disable_recursion_pending();
            else if (entry->is_regular_file())
                files.emplace(path, m_tree.contents(QByteArray::fromStdString("out/" + path)));
        }
        return files;
    }
    /// The paths of all that is hidden in the folder of the output.
    [[nodiscard]] std::vector<fs::path> hiddenEntries() const
    {
        std::vector<fs::path> hidden;
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(m_tree.path("out").toStdString())) {
            if (entry.path().filename().string().starts_with('.'))
                hidden.push_back(entry.path());
        }
        return hidden;
    }
    /// What is hidden stays, as it would beside a person's files.
    void removeVisibleFiles() const
    {
        for (const auto &[path, contents] : visibleFiles())
            fs::remove(fs::path(m_tree.path("out").toStdString()) / path);
    }
    /// Runs the command under strace(1), which ends with the last process that the command has started: a helper that
    /// stays lets this fail.
    [[nodiscard]] ChildResult runTraced(const QList<QByteArray> &words, const QByteArray &injection) const
    {
        ChildSettings settings;
        settings.program = "strace";
        settings.environment = {"LSAN_OPTIONS=detect_leaks=0"}; // it cannot look for leaks in a program that is watched
        settings.arguments = {"-f", "-qq", "-o", m_tree.path("trace"), "-e", QByteArray("trace=") + callsOnFiles};
        if (!injection.isEmpty())
            settings.arguments += {"-e", QByteArray("inject=") + callsOnFiles + injection};
        settings.arguments += tessaron({}).program;
        settings.arguments += words;
        return runChild(settings);
    }
    /// How many of the calls that thread made which made the most.
    [[nodiscard]] int callsInTrace() const
    {
        std::map<QByteArray, int> calls;
        int most = 0;
        const QList<QByteArray> lines = m_tree.contents("trace").split('\n');
        for (const QByteArray &line : lines) {
            const bool isCall = line.contains('(') && !line.contains(" resumed>");
            most = std::max(most, isCall ? ++calls[line.left(line.indexOf(' '))] : 0);
        }
        return most;
    }
    /// Kills the command at one call after the other, each time in the folder that the killed ones before have left;
    /// how many of them have left something hidden. What the last one left is gone when the command has run through.
    [[nodiscard]] int expectWholeFilesOnly(const QList<QByteArray> &words) const
    {
        EXPECT_EQ(runTraced(words, {}).exitStatus, 0);
        const std::map<std::string, QByteArray> whole = visibleFiles();
        EXPECT_FALSE(whole.empty());
        const int calls = callsInTrace();
        EXPECT_GE(calls, 3);
        int killed = 0, withRemains = 0;
        for (int call = 1; call <= calls; ++call) {
            removeVisibleFiles();
            const ChildResult result = runTraced(words, ":signal=KILL:when=" + QByteArray::number(call));
            killed += result.signal == SIGKILL ? 1 : 0;
            withRemains += hiddenEntries().empty() ? 0 : 1;
            const std::map<std::string, QByteArray> left = visibleFiles();
            for (const auto &[path, contents] : left) {
                const auto expected = whole.find(path);
                EXPECT_TRUE(expected != whole.end() && expected->second == contents) << path << " after call " << call;
            }
            EXPECT_TRUE(result.exitStatus != 0 || left == whole) << call << result.errors.constData();
        }
        EXPECT_GE(killed, 2);
        removeVisibleFiles();
        EXPECT_EQ(runTraced(words, {}).exitStatus, 0);
        EXPECT_TRUE(visibleFiles() == whole);
        EXPECT_EQ(hiddenEntries(), std::vector<fs::path>());
        removeVisibleFiles();
        return withRemains;
    }
    /// Half a second of sound.
    void makeSounds() const
    {
        m_tree.makeFile("1.wav", waveFile(partOf(recording, 0, 22050)));
        m_tree.makeFile("2.wav", waveFile(partOf(recording, 22050, 22050)));
    }
};

TEST_F(KilledCommand, audio_leavesWholeFilesOnly_andNoHelper)
{
    makeSounds();
    (void)expectWholeFilesOnly(arguments({"-q"}, {"1.wav", "2.wav"}));
}

TEST_F(KilledCommand, extract_leavesWholeFilesOnly_andNoHelper)
{
    makeSounds();
    make({"-q"}, {"1.wav", "2.wav"});
    fs::rename(m_tree.path("out/album.bin").toStdString(), m_tree.path("album.bin").toStdString());
    fs::rename(m_tree.path("out/album.cue").toStdString(), m_tree.path("album.cue").toStdString());
    for (const QByteArray form : {"wav", "flac"})
        (void)expectWholeFilesOnly({"extract", "-q", "--format", form, "--track", "all", "-o",
                                    m_tree.path("out/tracks"), m_tree.path("album.cue")});
}

TEST_F(KilledCommand, convert_leavesWholeFilesOnly_andNoHelper)
{
    makeSounds();
    for (const QByteArray format : {"wav", "mp3"})
        EXPECT_GE(expectWholeFilesOnly({"convert", "-q", "--to", format, "-j", "2", "-d", m_tree.path("out"),
                                        m_tree.path("1.wav"), m_tree.path("2.wav")}),
                  1);
}

} // namespace

} // namespace Tessaron::Testing
