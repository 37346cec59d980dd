#pragma once

#include "platform/dvdplayback/DVDDescription.h"
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QString>

#include <vector>

namespace Tessaron
{

/// A file of a folder VIDEO_TS that is not as players need it.
struct DVDFileProblem {
    QByteArray name; ///< bytes
    QString message; ///< continues the name to a sentence without the full stop: "is missing"
};

/// What a video DVD says about itself.
struct DVDInspectResult {
    NSError error; ///< null when it is known; domain and codes are those of DiscJobErrors.h
    DVDDescription disc;
    /// Of a folder, also after an error: files that are missing, have other names or lengths than they must, or differ
    /// from their backups.
    std::vector<DVDFileProblem> problems;
};

/// Describes a video DVD, describeDVD() in the background: a folder VIDEO_TS or the one that holds it, an image, or a
/// device. See DiscJob for threads and lifetime; a cancel ends the process that reads.
class TESSARON_EXPORT DVDInspectJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit DVDInspectJob(QByteArray path, QObject *parent = nullptr);
    ~DVDInspectJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const DVDInspectResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::DVDInspectResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::DVDInspectResult)
