#pragma once

#include "platform/quicktime/MovieDescription.h"
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QList>
#include <QMetaType>

#include <cstddef>
#include <memory>
#include <vector>

namespace Tessaron
{

/// What is to be looked at. Paths are bytes; relative ones count from the working folder.
struct InfoOrder {
    QList<QByteArray> paths = {}; ///< audio and movie files
    QByteArray artworkFolder = {}; ///< where covers are written, made where it is missing; empty for nowhere
};

/// What was found out about one file.
struct MovieFileInfo {
    QByteArray path;
    NSError error; ///< null when the rest says what is in the file
    MovieDescription movie;
    QByteArray artwork; ///< the file that the cover was written into; empty where none was
    NSError artworkError; ///< why not, where one was to be written
};

/// What was found out about all of them.
struct InfoResult {
    NSError error; ///< null when all files were gone through; domain and codes are those of DiscJobErrors.h
    std::vector<MovieFileInfo> files; ///< in the order of the paths

    /// Files that could not be read, and covers that could not be written.
    [[nodiscard]] TESSARON_EXPORT std::size_t failures() const;
};

/// Tells what is in audio and movie files, and takes their covers out: one file after the other, by KRMovieInfo. A file
/// that cannot be read is told in the result, and the others follow. A cover keeps the name of its file, with another
/// extension; a name that is taken gets a number (unusedName()). See DiscJob for threads and lifetime; the progress
/// counts files.
class TESSARON_EXPORT InfoJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit InfoJob(InfoOrder order, QObject *parent = nullptr);
    ~InfoJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const InfoResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::InfoResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::InfoResult)
