#pragma once

#include "platform/dvdplayback/player/LibraryHandles.h"
#include "platform/dvdplayback/player/LibraryLog.h"
#include "platform/foundation/Result.h"

#include <QByteArray>

#include <memory>

namespace Tessaron
{

/// Where the disc at a path is: found without opening any of its files, so that the process can shut itself off first.
struct DiscPlace {
    QByteArray given; ///< as the caller named it, for errors
    QByteArray path; ///< absolute, without links: the folder VIDEO_TS, or the file or device
    bool isFolder = false;
};

/// An error of DVDErrorDomain where there cannot be a disc.
[[nodiscard]] Result<DiscPlace> findDisc(const QByteArray &path);

/// A disc that is open for the libraries: a folder, or an image or device through our own reader of images. Must
/// outlive what was opened with it. For one thread.
class DiscFiles
{
public:
    [[nodiscard]] static Result<std::unique_ptr<DiscFiles>> open(const DiscPlace &place);

    [[nodiscard]] dvd_reader_t *reader() const { return m_reader.get(); }
    [[nodiscard]] const DiscPlace &place() const { return m_place; }
    [[nodiscard]] LibraryLog &log() { return m_log; }

private:
    explicit DiscFiles(DiscPlace place);

    const DiscPlace m_place;
    LibraryLog m_log;
    DiscReader m_reader; ///< behind all that it uses
};

} // namespace Tessaron
