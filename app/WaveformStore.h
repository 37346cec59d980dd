#pragma once

#include <TessaronClasses/WaveformJob.h>

#include <QByteArray>
#include <QCache>
#include <QList>
#include <QObject>
#include <QSet>

#include <memory>

namespace Tessaron::Desktop
{

/// How sound files look, found out in the background, one after the other. What was found is kept for a while, also of
/// files that are not wanted any more, in bounded memory. On the main thread.
class WaveformStore final : public QObject
{
    Q_OBJECT

public:
    explicit WaveformStore(QObject *parent = nullptr);
    ~WaveformStore() override;

    /// The files that are shown. What runs for another one is given up.
    void setWanted(const QList<QByteArray> &paths);
    /// Null until it is known, and for a file that cannot be decoded. Valid until the event loop runs.
    [[nodiscard]] const Waveform *waveformOf(const QByteArray &path) const;
    /// Something is being found out.
    [[nodiscard]] bool isWorking() const { return m_job != nullptr; }
    /// The file may be another one by now.
    void forget(const QByteArray &path);
    void letGo();

Q_SIGNALS:
    /// The waveform of this file is known now.
    void found(const QByteArray &path);

private:
    void startNext();

    QList<QByteArray> m_wanted;
    mutable QCache<QByteArray, Waveform> m_waveforms; ///< looking one up makes it younger
    QSet<QByteArray> m_failed;
    QByteArray m_path; ///< of the job
    std::unique_ptr<WaveformJob> m_job;
};

} // namespace Tessaron::Desktop
