#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/taskLauncher.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace Tessaron
{

class KRAudioConverter;

/// What a converter reports, on the main thread. Each function may be empty. A function may let go of the converter.
struct KRAudioConverterDelegate {
    CallbackContext context; ///< its end silences the rest
    /// How much of all files is done, from 0 to 1; unless the sheet shows it.
    std::function<void(KRAudioConverter &converter, float progress)> KRAudioConverterProgress;
    std::function<void(KRAudioConverter &converter)> KRAudioConverterDidEnd; ///< all files were gone through
    std::function<void(KRAudioConverter &converter)> KRAudioConverterDidAbort;
    /// A file could not be begun; the files behind it are not begun, either.
    std::function<void(KRAudioConverter &converter, const NSError &error)> KRAudioConverterDidFailWithError;
};

/// The window that shows a converter's progress: the interface file "audioConverter", with its parts "progIndic", a
/// progress bar, and "cancelButton", whose action is KRAudioConverter::abort(). The library for programs with windows
/// makes it (TessaronClassesUI/AudioConverterSheet.h).
class TESSARON_EXPORT KRAudioConverterInterface
{
public:
    virtual ~KRAudioConverterInterface();

    /// Shows it as a sheet on a window of the program.
    virtual void beginSheet(QObject &window) = 0;
    /// Takes it away and closes it.
    virtual void endSheetAndClose() = 0;
    [[nodiscard]] virtual bool isIndeterminate() const = 0;
    /// A bar that only tells that there is something going on moves by itself.
    virtual void setIndeterminate(bool isIndeterminate) = 0;
    virtual void setDoubleValue(double value) = 0; ///< of the bar, from 0 to 1
    virtual void setCancelButtonEnabled(bool isEnabled) = 0;

protected:
    KRAudioConverterInterface() = default;
    KRAudioConverterInterface(const KRAudioConverterInterface &) = default;
    KRAudioConverterInterface &operator=(const KRAudioConverterInterface &) = default;
};

/// Converts audio and movie files, one after the other, by programs of their own: "QrlMov2Wav" for WAVE and AIFF,
/// "DummyRedbook" with "lame" behind it for MP3. The result has 44,100 samples a second, of 16 bits where they are PCM.
///
/// Progress is what the programs tell on the bus of the session; without a bus nothing is told before the end. A
/// program that fails is not noticed here, and the next file follows: lastTaskEnds() tells.
///
/// Made, used and destroyed on the main thread. Destroying a converter at work kills its programs, reports nothing and
/// leaves the file that was being written.
class TESSARON_EXPORT KRAudioConverter final : public std::enable_shared_from_this<KRAudioConverter>
{
public:
    // Codes of the formats.
    static constexpr std::int32_t waveFormat = 0;
    static constexpr std::int32_t aiffFormat = 1;
    static constexpr std::int32_t mp3FormatVariable128 = 2; ///< 128 kilobits a second on average
    static constexpr std::int32_t mp3FormatVariable160 = 3;
    static constexpr std::int32_t mp3FormatConstant128 = 4;
    static constexpr std::int32_t mp3FormatConstant160 = 5;

    /// Whether there is an encoder for MP3: the application's own "lame", else that of the system. Any thread.
    [[nodiscard]] static bool hasEncoder();

    /// Never null.
    [[nodiscard]] static std::shared_ptr<KRAudioConverter> init();
    ~KRAudioConverter();
    KRAudioConverter(const KRAudioConverter &) = delete;
    KRAudioConverter &operator=(const KRAudioConverter &) = delete;

    /// Starts to convert each source to the path at the same position; what is there is overwritten. Paths are texts
    /// (FileSystemRepresentation.h). Does nothing when a list is missing or when their lengths differ. A file of
    /// another format code than those above is never begun, and nothing ends the batch. What is being converted already
    /// is given up: its programs are killed, and the part of the file that they have written stays.
    ///
    /// The delegate hears of a failure when the folder of a destination is not there (NSPOSIXErrorDomain, code 100020,
    /// its path under NSFilePathErrorKey) and when the programs cannot be started.
    void convertAudioFiles(const std::optional<QStringList> &sources, const std::optional<QStringList> &toPaths,
                           std::int32_t format);
    /// Kills the programs that run, deletes the file that they were writing and, if that leaves it empty, its folder.
    /// The delegate hears of it.
    void abort();

    /// The window that the sheet belongs to, a QWidget; not owned.
    [[nodiscard]] QObject *sheetModal() const { return m_sheetModal; }
    void setSheetModal(QObject *window) { m_sheetModal = window; }
    /// Whether the sheet shows the progress, and not the delegate. False at first.
    [[nodiscard]] bool useStandardUI() const { return m_useStandardUI; }
    void setUseStandardUI(bool useStandardUI) { m_useStandardUI = useStandardUI; }
    [[nodiscard]] const KRAudioConverterDelegate &delegate() const { return m_delegate; }
    void setDelegate(const KRAudioConverterDelegate &delegate) { m_delegate = delegate; }

    /// What loads the interface file; without it there is no sheet.
    using InterfaceLoader = std::function<std::unique_ptr<KRAudioConverterInterface>(KRAudioConverter &owner)>;
    void setInterfaceLoader(const InterfaceLoader &loader)
    {
        m_interfaceLoader = loader;
        m_hasLoadedInterface = m_win != nullptr;
    }

    /// The programs that run; null between two files.
    [[nodiscard]] std::shared_ptr<taskLauncher> task() const { return m_task; }
    /// How the programs of the last file that has ended have ended.
    [[nodiscard]] const std::vector<taskLauncher::TaskEnd> &lastTaskEnds() const { return m_lastTaskEnds; }
    /// The last lines that the last one of them has printed, as text, and the one before it.
    [[nodiscard]] QString lastTaskMessage() const;
    [[nodiscard]] QString earlierTaskMessage() const;

private:
    KRAudioConverter();

    void convertNextFile();
    void loadInterface();
    [[nodiscard]] bool startConversion(const QString &source);
    [[nodiscard]] bool convertFile(const QString &source, const QString &toPCM, bool wave);
    [[nodiscard]] bool convertFile(const QString &source, const QString &toMP3, int bitrate, bool useVBR);
    [[nodiscard]] bool launch(const QVariantList &arguments);
    void dummyProgress(const QVariantMap &userInfo);
    void notifyAboutProgress();
    void taskLauncherTaskDidEnd();
    void notifyAboutTheEnd();
    void notifyAboutError(const NSError &error);
    void _realnotifyAboutError(const NSError &given);
    void endSheet();
    void deleteCurrentOutput();
    void performLater(std::chrono::milliseconds delay, std::function<void()> function);
    template <typename Callback, typename... Arguments>
    void send(Callback KRAudioConverterDelegate::*callback, const Arguments &...arguments);

    QStringList m_queue; ///< sources still to convert
    QStringList m_outPaths; ///< their destinations
    std::int32_t m_outFormat = waveFormat;
    std::shared_ptr<taskLauncher> m_task;
    QString m_uid; ///< name of the notifications of the current file
    float m_totalProgress = 0; ///< the fractions of all files, added up
    float m_oldProgress = 0; ///< of the current file
    float m_fileCount = 0;
    KRAudioConverterDelegate m_delegate;
    bool m_useStandardUI = false;
    bool m_aborted = false;
    bool m_isNextFileDue = false; ///< a tool has ended a moment ago
    QPointer<QObject> m_sheetModal;
    QString m_currentOutPath; ///< being written; null when no file is
    InterfaceLoader m_interfaceLoader;
    std::unique_ptr<KRAudioConverterInterface> m_win; ///< null until it is loaded, and where that has failed
    bool m_hasLoadedInterface = false; ///< or has tried to
    QObject m_progressObserver; ///< its end ends the observation
    QByteArray m_taskOutput; ///< the end of what the last program of the current file has printed
    QByteArray m_earlierTaskOutput; ///< and the one before it
    std::vector<taskLauncher::TaskEnd> m_lastTaskEnds;
};

} // namespace Tessaron
