#include "tests/discrecording/udf/UdfLibraryReader.h"

#include <QCryptographicHash>
#include <QFile>

#include <memory>
#include <udfread/udfread.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

struct Closer {
    void operator()(udfread *volume) const { udfread_close(volume); }
    void operator()(UDFDIR *folder) const { udfread_closedir(folder); }
    void operator()(UDFFILE *file) const { udfread_file_close(file); }
};

LibraryObject readFile(udfread *volume, const QByteArray &path, bool *isReadable)
{
    LibraryObject object;
    const std::unique_ptr<UDFFILE, Closer> file(udfread_file_open(volume, path.constData()));
    if (!file) {
        *isReadable = false;
        return object;
    }
    object.size = udfread_file_size(file.get());
    QCryptographicHash hash(QCryptographicHash::Sha1);
    QByteArray buffer(1 << 20, '\0');
    for (std::int64_t done = 0; done < object.size;) {
        const ssize_t count = udfread_file_read(file.get(), buffer.data(), static_cast<std::size_t>(buffer.size()));
        if (count <= 0) {
            *isReadable = false;
            break;
        }
        hash.addData(buffer.first(count));
        done += count;
    }
    object.digest = hash.result();
    return object;
}

} // namespace

LibraryVolume readWithLibrary(const QString &imagePath)
{
    LibraryVolume result;
    const std::unique_ptr<udfread, Closer> volume(udfread_init());
    if (!volume || udfread_open(volume.get(), QFile::encodeName(imagePath).constData()) != 0)
        return result;
    result.isReadable = true;
    result.name = QString::fromUtf8(udfread_get_volume_id(volume.get()));
    std::vector<QByteArray> pending{"/"};
    while (!pending.empty()) {
        const QByteArray folderPath = pending.back();
        pending.pop_back();
        const std::unique_ptr<UDFDIR, Closer> folder(udfread_opendir(volume.get(), folderPath.constData()));
        if (!folder) {
            result.isReadable = false;
            continue;
        }
        udfread_dirent entry;
        while (udfread_readdir(folder.get(), &entry)) {
            const QByteArray name = entry.d_name;
            if (name == "." || name == "..")
                continue;
            const QByteArray path = folderPath + name;
            LibraryObject object;
            object.isFolder = entry.d_type == UDF_DT_DIR;
            if (object.isFolder)
                pending.push_back(path + '/');
            else
                object = readFile(volume.get(), path, &result.isReadable);
            result.objects[path.mid(1)] = object;
        }
    }
    return result;
}

} // namespace Tessaron::Testing
