#pragma once

#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

/// What is to be converted, to what, and where to. Paths are bytes; relative ones count from the working folder.
struct AudioConvertOrder {
    /// Files, and folders whose files of sound and movies are converted; a symbolic link here stands for what it leads
    /// to, those inside of folders are left out.
    QList<QByteArray> sources = {};
    QByteArray destination = {}; ///< a folder, which is made where it is missing
    std::int32_t format = 0; ///< a code of KRAudioConverter
    bool isFlat = false; ///< all results into the destination itself, not into folders like those of the sources
    unsigned int jobs = 0; ///< files converted side by side; 0 for one on each processor
    bool carriesTags = false; ///< into MP3 files: title, artist and all the other texts of the source, and its cover
};

/// What has become of one file.
struct ConvertedFile {
    QByteArray source;
    QByteArray destination; ///< empty unless the result is there
    NSError error; ///< null when the result is there; nothing is left of it otherwise
    bool isDamaged = false; ///< something in the source is broken, and silence stands for it
    QStringList damage; ///< where and what, a place each, as far as it was told
    QStringList notes; ///< what could not be carried into the result besides the sound, each in a sentence
};

/// A file that is being converted.
struct RunningConversion {
    QByteArray source;
    double fraction = 0; ///< done of it, from 0 to 1; stays 0 where no bus of the session tells how far its tools are
};

/// How a conversion has ended.
struct AudioConvertResult {
    NSError error; ///< null when all files were gone through; domain and codes are those of DiscJobErrors.h
    std::vector<ConvertedFile> files; ///< those that were begun, in the order of the sources, by name inside of folders
    std::vector<UnreadableFolder> unreadable; ///< folders that could not be listed: what is in them is not converted
    std::uint64_t leftOut = 0; ///< files in folders whose names say that they hold neither sound nor movies
    std::uint64_t leftOutSpecial = 0; ///< links, pipes, devices and sockets in folders
    bool isDestinationLeftOut = false; ///< it lies in a source: what is in it was not converted

    [[nodiscard]] TESSARON_EXPORT std::size_t failures() const;
    /// No error, no failure, nothing unreadable, nothing damaged and no notes.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Converts audio and movie files by KRAudioConverters side by side. A file that cannot be converted is told in the
/// result, and the others follow; so is what the converters pass over without a word: tools that fail, and results that
/// are not whole. Results keep the names of their sources, with another extension; a name that is taken gets a number
/// (unusedName()). They have their names when they are whole; until then they are in hidden folders
/// ".tessaron-convert-XXXXXX" beside their places, and a cancel removes them; what a killed process left goes with the
/// next job that has a result there. See DiscJob for threads and lifetime; bytes are those of the sources.
class TESSARON_EXPORT AudioConvertJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit AudioConvertJob(AudioConvertOrder order, QObject *parent = nullptr);
    ~AudioConvertJob() override;

    /// Stops the programs that convert, and lets them go on. What was asked last holds.
    void suspend();
    void resume();

    /// The files that are being converted now.
    [[nodiscard]] std::vector<RunningConversion> running() const;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const AudioConvertResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::AudioConvertResult &result);

private:
    class Work;

    AudioConvertJob(Work *work, QObject *parent);
    void announceResult() override;

    Work *const m_work; ///< the base's
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::AudioConvertResult)
