#pragma once

#include "app/AudioConvertDialog.h"
#include "app/AudioDisc.h"

#include <TessaronClasses/AudioConvertJob.h>
#include <TessaronClasses/KRAudioConverter.h>

#include <QObject>

#include <memory>

namespace Tessaron
{
class TessaronPanelDelegate;
}

namespace Tessaron::Desktop
{

/// Converts the files of tracks into another format: asks for it, and shows on a sheet of the window how far it is. On
/// the main thread.
class AudioConversion final : public QObject
{
    Q_OBJECT

public:
    explicit AudioConversion(QObject *parent = nullptr);
    ~AudioConversion() override;

    /// Opens the dialog in front of the view's window. Files that are missing are left out, which is told; so is that a
    /// file of several tracks becomes one file.
    void ask(const QList<AudioTrackRow> &tracks, QWidget &view, const std::shared_ptr<TessaronPanelDelegate> &host);
    /// Runs as a job of the window.
    void convert(const QList<AudioTrackRow> &tracks, const AudioConvertDialog::Choice &choice, QWidget &view,
                 const std::shared_ptr<TessaronPanelDelegate> &host);

private:
    void showSheet(AudioConvertJob &job, QWidget &view);
    void endSheet();

    AudioConvertDialog::Choice m_choice; ///< of the last time
    std::unique_ptr<KRAudioConverterInterface> m_sheet; ///< null while nothing is converted
};

} // namespace Tessaron::Desktop
