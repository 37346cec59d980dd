#pragma once

#include "app/AudioDisc.h"
#include "app/BackgroundWork.h"

#include <TessaronClasses/InfoJob.h>

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QStringList>

#include <deque>
#include <memory>
#include <optional>

namespace Tessaron::Desktop
{

/// What was found at the paths that someone added to an audio CD.
struct AudioFound {
    QList<AudioTrackRow> tracks;
    SpokenTexts texts; ///< of a disc, as the one cue sheet says or all files agree
    QByteArray mediaCatalogNumber;
    QStringList problems; ///< what could not be taken, a sentence each
    QStringList notes; ///< what of cue sheets was not taken, a sentence each
    QByteArray sheet; ///< the cue sheet of the first track; empty where that is not one's first track
    int row = -1; ///< that the tracks were to stand in front of
};

/// Finds out which tracks files, folders, lists and cue sheets stand for, in the background; what is added meanwhile
/// waits for its turn. On the main thread.
class AudioIntake final : public QObject
{
    Q_OBJECT

public:
    explicit AudioIntake(QObject *parent = nullptr);
    ~AudioIntake() override;

    /// True for the name of a list of sound files (bytes), which is nothing for another panel.
    [[nodiscard]] static bool isListName(const QByteArray &path);
    /// True for that of a cue sheet, which may describe an image as well.
    [[nodiscard]] static bool isSheetName(const QByteArray &path);
    /// Touches nothing before it returns.
    void add(const QList<QByteArray> &paths, int row);
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// Gives up what runs and what waits, without waiting for it.
    void cancel();
    void letGo() { cancel(); }

Q_SIGNALS:
    void started();
    void progressed(const Tessaron::DiscJobProgress &progress);
    /// All is over, for now.
    void ended();
    void found(const Tessaron::Desktop::AudioFound &found);

private:
    struct Request {
        QList<QByteArray> paths;
        int row;
    };
    /// A cue sheet or a list with its tracks, or files and folders as they were added.
    struct Batch {
        QList<QByteArray> paths;
        QByteArray path; ///< of what describes the tracks
        std::optional<AudioTracks> described;
        NSError error;
    };

    void startNext();
    void describeNext();
    void takeInfo(const Batch &batch, const InfoResult &result);
    void takeFiles(const InfoResult &result);
    void takeDescribed(const Batch &batch, const InfoResult &result);
    void end();

    QList<Request> m_waiting;
    bool m_isRunning = false;
    bool m_isOneDescription = false; ///< nothing else was added with it
    AudioFound m_found;
    std::vector<MovieDescription> m_movies; ///< of the files that stand for themselves, for what they agree on
    std::deque<Batch> m_batches;
    BackgroundWork m_reading;
    std::unique_ptr<InfoJob> m_info;
};

} // namespace Tessaron::Desktop
