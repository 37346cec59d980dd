#pragma once

#include "platform/quicktime/MovieDescription.h"
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QList>
#include <QMetaType>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

/// What is to be looked at. Paths are bytes; relative ones count from the working folder.
struct InfoOrder {
    /// Audio and movie files, and folders whose files of sound and movies are looked at; a symbolic link here stands
    /// for what it leads to, those inside of folders are left out.
    QList<QByteArray> paths = {};
    QByteArray artworkFolder = {}; ///< where covers are written, made where it is missing; empty for nowhere
    /// False for a program that takes the files from described(): memory does not grow with them then.
    bool areFilesKept = true;
};

/// What was found out about one file.
struct MovieFileInfo {
    QByteArray path;
    NSError error; ///< null when the rest says what is in the file
    /// With the error: the file was read, and is neither sound nor a movie in a form that is known. True for files that
    /// were found in a folder, where a name alone has promised one.
    bool isNoMovie = false;
    MovieDescription movie;
    QByteArray artwork; ///< the file that the cover was written into; empty where none was
    NSError artworkError; ///< why not, where one was to be written
};

/// What was found out about all of them.
struct InfoResult {
    NSError error; ///< null when all files were gone through; domain and codes are those of DiscJobErrors.h
    std::vector<MovieFileInfo> files; ///< in the order of the paths, by name inside of folders; empty unless kept
    std::uint64_t fileCount = 0; ///< that were looked at
    std::uint64_t failureCount = 0; ///< files that could not be read, and covers that could not be written
    std::uint64_t noMovieCount = 0; ///< files of folders that are not movies, see MovieFileInfo
    std::vector<UnreadableFolder> unreadable; ///< folders that could not be listed: what is in them was not looked at
    std::uint64_t leftOut = 0; ///< files in folders whose names say that they hold neither sound nor movies
    std::uint64_t leftOutSpecial = 0; ///< links, pipes, devices and sockets in folders

    /// True when there is no error and no failure, nothing is unreadable, and each file is a movie.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Tells what is in audio and movie files, and takes their covers out: one file after the other, by KRMovieInfo. A file
/// that cannot be read is told like the others, which follow. Files of folders are chosen by their names. A cover keeps
/// the name of its file, with another extension; a name that is taken gets a number (unusedName()). See DiscJob for
/// threads and lifetime; the progress counts files.
class TESSARON_EXPORT InfoJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit InfoJob(InfoOrder order, QObject *parent = nullptr);
    ~InfoJob() override;

    /// As it was sent with finished(); before that, as far as it is known.
    [[nodiscard]] const InfoResult &result() const;

Q_SIGNALS:
    /// Each file, as soon as it is known, in the order of the result.
    void described(const Tessaron::MovieFileInfo &file);
    void finished(const Tessaron::InfoResult &result);

private:
    class Work;

    InfoJob(Work *work, QObject *parent);
    void announceResult() override;

    Work *const m_work; ///< the base's
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::MovieFileInfo)
Q_DECLARE_METATYPE(Tessaron::InfoResult)
