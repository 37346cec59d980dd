#pragma once

#include <TessaronClasses/DescribedDisc.h>
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>

namespace Tessaron
{

/// The tracks of an image.
struct TracksResult {
    NSError error; ///< null when they are known; domain and codes are those of DiscJobErrors.h
    DescribedDisc disc;
};

/// Finds the tracks of an image or of a description of one: describedDisc() in the background. See DiscJob for threads
/// and lifetime.
class TESSARON_EXPORT TracksJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit TracksJob(QByteArray path, QObject *parent = nullptr);
    ~TracksJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const TracksResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::TracksResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::TracksResult)
