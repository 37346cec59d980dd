#pragma once

#include "imaging/StagedFile.h"
#include "imaging/jobs/ImageDestination.h"
#include "imaging/jobs/OutputStream.h"
#include <TessaronClasses/DiscImageJob.h>

#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

struct TableOfContents;

/// Where an image is made until it is whole: in files without their final names in the destination's folder, or, for a
/// stream, in the stream itself. Used by one thread at a time.
class ImageStage
{
public:
    /// Looks at the destination and makes the files. Waits for a reader of a named pipe, as opening one does.
    [[nodiscard]] NSError open(const DiscImageOrder &order, const std::vector<DiscSource> &sources,
                               const std::stop_token &stop);

    /// The path under which the image's blocks can be written.
    [[nodiscard]] QByteArray pathForWriting() const;
    /// Open for writing at least; owned by this object.
    [[nodiscard]] int descriptor() const;

    /// True when the image goes into a stream, which takes one block after the other.
    [[nodiscard]] bool goesIntoStream() const { return !m_image; }

    [[nodiscard]] const QByteArray &imageName() const { return m_destination.name; }
    /// Empty for a stream without a path.
    [[nodiscard]] const QByteArray &imagePath() const { return m_destination.path; }
    [[nodiscard]] QByteArray cueSheetPath() const;
    /// Empty until makeCDTextFile() was called.
    [[nodiscard]] QByteArray cdTextPath() const;

    /// Makes a file for the CD-TEXT that a cue sheet cannot say; finish() fills it. None of the files at `sources` is
    /// replaced by it: that is an error. Not for streams.
    [[nodiscard]] NSError makeCDTextFile(const QList<QByteArray> &sources);

    /// Completes an image whose blocks hold these tracks: adds the trailer or the cue sheet that the format asks for,
    /// and gives everything its name. `*written` becomes the length of the file. After a stop nothing gets a name.
    [[nodiscard]] NSError finish(const DiscImageOrder &order, const TableOfContents &contents, std::uint64_t *written,
                                 const std::stop_token &stop);

    /// Lets go of everything; files that have no name yet are gone then.
    void close();

private:
    [[nodiscard]] NSError openStream(const DiscImageOrder &order, const std::stop_token &stop);
    [[nodiscard]] NSError makeFiles();
    [[nodiscard]] NSError creationError(int errnoValue) const;
    [[nodiscard]] QByteArray pathBeside(const QByteArray &name) const;
    [[nodiscard]] int giveNames();
    [[nodiscard]] NSError closeStream();

    ImageDestination m_destination;
    std::unique_ptr<StagedFile> m_image;
    std::unique_ptr<StagedFile> m_cueSheet;
    std::unique_ptr<StagedFile> m_cdTextFile;
    UniqueDescriptor m_stream;
};

} // namespace Tessaron
