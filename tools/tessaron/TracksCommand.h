#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/TracksJob.h>

namespace Tessaron::Tool
{

class JsonWriter;

/// `tessaron tracks`: lists the tracks of an image. Serves one run, on the main thread.
class TracksCommand
{
public:
    explicit TracksCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void findTracks();
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;
    void writeTrack(JsonWriter &writer, std::size_t session, const DiscTrack &track, const CueTrackPlace &place) const;
    void writeTexts(JsonWriter &writer, std::size_t place) const;

    const Arguments m_arguments;
    JobRun m_run;
    TracksResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
