#pragma once

#include <TessaronClasses/DiscJob.h>

#include <QEventLoop>

#include <gtest/gtest.h>
#include <vector>

namespace Tessaron::Testing
{

/// Runs a job to its end, and keeps what it told on the way.
template <typename Job, typename Result>
class JobRun
{
public:
    explicit JobRun(Job &job)
    {
        QObject::connect(&job, &DiscJob::phaseChanged, &m_loop,
                         [this](DiscJobPhase phase) { phases.push_back(phase); });
        QObject::connect(&job, &DiscJob::progressed, &m_loop,
                         [this](const DiscJobProgress &progress) { told.push_back(progress); });
        QObject::connect(&job, &Job::finished, &m_loop, [this](const Result &finished) {
            result = finished;
            ++endings;
            m_loop.quit();
        });
        job.start();
        EXPECT_EQ(endings, 0) << "the end came from inside start()";
        if (job.isRunning())
            m_loop.exec();
        // Nothing may follow the end.
        QEventLoop rest;
        rest.processEvents();
    }

    Result result;
    int endings = 0;
    std::vector<DiscJobPhase> phases;
    std::vector<DiscJobProgress> told;

private:
    QEventLoop m_loop;
};

} // namespace Tessaron::Testing
