#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/InfoJob.h>

#include <memory>

namespace Tessaron::Tool
{

class JsonWriter;

/// `tessaron info`: tells what is in audio and movie files. Serves one run, on the main thread.
class InfoCommand
{
public:
    explicit InfoCommand(const Arguments &arguments);
    ~InfoCommand();

    [[nodiscard]] ExitStatus run();

private:
    void tell(const MovieFileInfo &file);
    [[nodiscard]] Problem problemOfResult() const;
    [[nodiscard]] ExitStatus status() const;
    void printRest() const;
    void beginJson();
    [[nodiscard]] bool endOutput();

    const Arguments m_arguments;
    JobRun m_run;
    std::unique_ptr<JsonWriter> m_json; ///< null unless JSON was asked for
    bool m_isFirst = true; ///< no file has been told yet
    int m_outputErrno = 0; ///< why standard output takes no more
    Problem m_firstProblem; ///< of a file
    InfoResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
