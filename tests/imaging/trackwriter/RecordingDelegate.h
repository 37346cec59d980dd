#pragma once

#include <TessaronClasses/KRTrackWriter.h>

#include <QStringList>

#include <vector>

namespace Tessaron::Testing
{

/// Notes what a track writer reports, in order: "progress" (a run of them once), "end", "cancel", "failure".
class RecordingDelegate
{
public:
    [[nodiscard]] KRTrackWriterDelegate callbacks();
    /// Runs the event loop until the writer has reported its end, and a little longer.
    void waitForEnd();

    QStringList heard;
    std::vector<float> progress;
    NSError error;
    std::function<void(KRTrackWriter &writer)> onEnd; ///< within the last callback

private:
    void note(const QString &what);
    void noteEnd(const QString &what, KRTrackWriter &writer);

    bool m_isOver = false;
};

} // namespace Tessaron::Testing
