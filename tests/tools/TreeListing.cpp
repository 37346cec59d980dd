#include "tests/tools/TreeListing.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <QCryptographicHash>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

std::string contentOf(const std::string &path)
{
    const UniqueDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
        return std::string("unreadable: ") + std::strerror(errno);
    QCryptographicHash hash(QCryptographicHash::Md5);
    std::vector<char> buffer(1 << 20);
    for (ssize_t got = 0; (got = ::read(file.get(), buffer.data(), buffer.size())) > 0;)
        hash.addData(QByteArrayView(buffer.data(), got));
    return hash.result().toHex().toStdString();
}

std::string kindAndContent(const std::string &path, const struct stat &status)
{
    if (S_ISDIR(status.st_mode))
        return "folder";
    if (S_ISLNK(status.st_mode)) {
        std::string target(8192, '\0');
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        target.resize(length < 0 ? 0 : size_t(length));
        return "link to " + target;
    }
    if (S_ISFIFO(status.st_mode))
        return "fifo";
    if (!S_ISREG(status.st_mode))
        return "special";
    return "file of " + std::to_string(status.st_size) + " bytes " + contentOf(path);
}

} // namespace

std::map<std::string, std::string> listTree(const QByteArray &root, const TreeListingOptions &options)
{
    std::map<std::string, std::string> result;
    const std::string start = root.toStdString();
    std::error_code error;
    for (const std::filesystem::directory_entry &entry : std::filesystem::recursive_directory_iterator(start, error)) {
        const std::string path = entry.path().native();
        struct stat status;
        if (::lstat(path.c_str(), &status) != 0)
            continue;
        const std::string relative = path.substr(start.size() + 1);
        std::string &line = result[relative];
        line = kindAndContent(path, status);
        const bool isLink = S_ISLNK(status.st_mode);
        if (options.modes && !isLink)
            line += " mode " + QByteArray::number(status.st_mode & 07777, 8).toStdString();
        if (options.times && !isLink) // extraction programs differ in what they do to a link's own time
            line += " time " + std::to_string(status.st_mtim.tv_sec);
        if (options.hardLinks && !S_ISDIR(status.st_mode) && status.st_nlink > 1)
            line += " links " + std::to_string(status.st_nlink);
    }
    EXPECT_FALSE(error) << error.message();
    return result;
}

} // namespace Tessaron::Testing
