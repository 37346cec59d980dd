#include "fuzz/FuzzTarget.h"

#include "media/jobs/VideoFolderCheck.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

namespace
{

using namespace Tessaron;

/// What an input can have in its folder; the last ones belong to no video DVD.
constexpr std::array names = {"VIDEO_TS.IFO", "VIDEO_TS.BUP", "VIDEO_TS.VOB", "VTS_01_0.IFO", "VTS_01_0.BUP",
                              "VTS_01_0.VOB", "VTS_01_1.VOB", "VTS_01_9.VOB", "vts_01_0.ifo", "VTS_99_0.IFO",
                              "VTS_99_1.VOB", "VTS_02_0.IFO", "VTS_02_3.VOB", "VTS_-1_0.IFO", "VTS_ 1_0.IFO",
                              "VTS_00_0.IFO", "VTS_1__0.IFO", "readme.txt"};
constexpr std::size_t firstForeign = 13;

/// A folder VIDEO_TS that lives as long as the process, in memory where the system has room for files there.
class VideoFolder
{
public:
    VideoFolder()
    {
        std::string pattern = (std::filesystem::is_directory("/dev/shm") ? "/dev/shm/" : "/tmp/");
        pattern += "videofolder-XXXXXX";
        require(::mkdtemp(pattern.data()) != nullptr, "there is room for a folder");
        m_path = pattern;
        std::filesystem::create_directory(m_path / "VIDEO_TS");
    }
    ~VideoFolder() { std::filesystem::remove_all(m_path); }
    VideoFolder(const VideoFolder &) = delete;
    VideoFolder &operator=(const VideoFolder &) = delete;

    [[nodiscard]] QByteArray path() const { return QByteArray::fromStdString(m_path.string()); }

    /// Of records: the number of a name, the file's size in 32 bits (big-endian), the count of bytes that follow, and
    /// these, with which it begins. The rest is zero.
    std::set<std::string> fill(const std::uint8_t *bytes, std::size_t size) const
    {
        constexpr std::size_t headSize = 6;
        std::set<std::string> made;
        for (const char *const name : names)
            std::filesystem::remove(m_path / "VIDEO_TS" / name);
        for (std::size_t at = 0; at + headSize <= size;) {
            const std::string name = names[bytes[at] % names.size()];
            const std::size_t length = std::min<std::size_t>(bytes[at + 5], size - at - headSize);
            const UniqueDescriptor file(
                ::open((m_path / "VIDEO_TS" / name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
            require(file && writeFully(file.get(), bytes + at + headSize, length) == 0
                        && ::ftruncate(file.get(), fileSize(name, loadBigEndian<std::uint32_t>(bytes + at + 1))) == 0,
                    "there is room for files");
            made.insert(name);
            at += headSize + length;
        }
        return made;
    }

private:
    /// Tables are read as a whole, so that long ones only cost time.
    static off_t fileSize(const std::string &name, std::uint32_t size)
    {
        constexpr std::uint32_t longTable = 1 << 16;
        return off_t(name.ends_with(".VOB") ? size : size % longTable);
    }

    std::filesystem::path m_path;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    static const VideoFolder folder;
    const std::set<std::string> made = folder.fill(bytes, size);
    const Result<std::vector<DVDFileProblem>> problems = problemsOfVideoFolder(folder.path(), {});
    require(bool(problems), "a folder that can be listed is checked");
    std::set<std::string> told;
    std::set<std::string> foreign;
    for (const DVDFileProblem &problem : *problems) {
        require(!problem.name.isEmpty() && !problem.message.isEmpty(), "a problem says where and what it is");
        told.insert(problem.name.toStdString());
        if (problem.message.startsWith(QStringLiteral("is not a file of a video DVD")))
            foreign.insert(problem.name.toStdString());
    }
    for (std::size_t name = firstForeign; name < names.size(); ++name)
        require(!made.contains(names[name]) || foreign.contains(names[name]),
                "what is not a file of a video DVD is told as such");
    for (const char *const name : {"VIDEO_TS.IFO", "VIDEO_TS.BUP"})
        require(made.contains(name) || told.contains(name), "what is missing is told");
    return 0;
}
