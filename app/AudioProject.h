#pragma once

#include "app/AudioTrackModel.h"
#include "app/ProjectSubject.h"

namespace Tessaron::Desktop
{

/// An audio CD as a project: its tracks, part by part, its texts and options. On the main thread.
class AudioProject final : public ProjectSubject
{
public:
    explicit AudioProject(AudioTrackModel &tracks)
        : m_tracks(tracks)
    {
    }

    // ProjectSubject
    [[nodiscard]] QString kind() const override { return QStringLiteral("audio"); }
    [[nodiscard]] QUndoStack &undoStack() override { return m_tracks.undoStack(); }
    [[nodiscard]] bool isEmpty() const override { return m_tracks.tracks().isEmpty(); }
    [[nodiscard]] Writer writer() const override;
    [[nodiscard]] Reader reader() override;
    void clear() override;

private:
    AudioTrackModel &m_tracks;
};

} // namespace Tessaron::Desktop
