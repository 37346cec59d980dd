#include "platform/foundation/NSBundle.h"

#include <QDialog>
#include <QFile>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QUiLoader>

#include <TessaronClassesUI/AudioConverterSheet.h>
#include <cmath>
#include <functional>

namespace Tessaron
{

namespace
{

constexpr int stepsOfBar = 1000;

class AudioConverterSheet final : public KRAudioConverterInterface
{
public:
    /// The parts belong to the window.
    AudioConverterSheet(const std::function<void()> &whenCancelled, std::unique_ptr<QDialog> win,
                        QProgressBar *progIndic, QPushButton *cancelButton);
    ~AudioConverterSheet() override;
    AudioConverterSheet(const AudioConverterSheet &) = delete;
    AudioConverterSheet &operator=(const AudioConverterSheet &) = delete;

    void beginSheet(QObject &window) override;
    void endSheetAndClose() override;
    [[nodiscard]] bool isIndeterminate() const override { return m_win && m_progIndic->maximum() == 0; }
    void setIndeterminate(bool isIndeterminate) override;
    void setDoubleValue(double value) override;
    void setCancelButtonEnabled(bool isEnabled) override;

private:
    const QPointer<QDialog> m_win; ///< ends with the window that it is a sheet of; the two below then, too
    QProgressBar *const m_progIndic;
    QPushButton *const m_cancelButton;
};

AudioConverterSheet::AudioConverterSheet(const std::function<void()> &whenCancelled, std::unique_ptr<QDialog> win,
                                         QProgressBar *progIndic, QPushButton *cancelButton)
    : m_win(win.release())
    , m_progIndic(progIndic)
    , m_cancelButton(cancelButton)
{
    QObject::connect(cancelButton, &QPushButton::clicked, m_win, &QDialog::reject);
    QObject::connect(m_win, &QDialog::rejected, m_win, whenCancelled);
}

AudioConverterSheet::~AudioConverterSheet()
{
    if (!m_win)
        return;
    m_win->disconnect();
    m_win->hide();
    m_win->deleteLater(); // One of its signals may have led here.
}

void AudioConverterSheet::beginSheet(QObject &window)
{
    auto *const parent = qobject_cast<QWidget *>(&window);
    if (!m_win || !parent)
        return;
    m_win->setParent(parent->window(), Qt::Dialog);
    m_win->setWindowModality(Qt::WindowModal);
    m_win->show();
}

void AudioConverterSheet::endSheetAndClose()
{
    if (!m_win)
        return;
    m_win->disconnect();
    m_win->close();
}

void AudioConverterSheet::setIndeterminate(bool isIndeterminate)
{
    if (m_win)
        m_progIndic->setRange(0, isIndeterminate ? 0 : stepsOfBar);
}

void AudioConverterSheet::setDoubleValue(double value)
{
    if (m_win)
        m_progIndic->setValue(int(std::lround(value * stepsOfBar)));
}

void AudioConverterSheet::setCancelButtonEnabled(bool isEnabled)
{
    if (m_win)
        m_cancelButton->setEnabled(isEnabled);
}

} // namespace

std::unique_ptr<KRAudioConverterInterface> loadAudioConverterInterface(KRAudioConverter &owner)
{
    return loadAudioConverterSheet([weakOwner = owner.weak_from_this()] {
        if (const std::shared_ptr<KRAudioConverter> converter = weakOwner.lock())
            converter->abort();
    });
}

std::unique_ptr<KRAudioConverterInterface> loadAudioConverterSheet(const std::function<void()> &whenCancelled)
{
    const QString name = QStringLiteral("audioConverter");
    QFile file(NSBundle::frameworkBundle()->pathForResource(name, QStringLiteral("ui")));
    QUiLoader loader;
    std::unique_ptr<QWidget> loaded(file.open(QIODevice::ReadOnly) ? loader.load(&file) : nullptr);
    auto *const win = qobject_cast<QDialog *>(loaded.get());
    auto *const progIndic = win ? win->findChild<QProgressBar *>(QStringLiteral("progIndic")) : nullptr;
    auto *const cancelButton = win ? win->findChild<QPushButton *>(QStringLiteral("cancelButton")) : nullptr;
    if (!progIndic || !cancelButton) {
        qWarning("the interface file \"audioConverter\" cannot be loaded, or has not the parts that it needs: %s",
                 qUtf8Printable(loader.errorString()));
        return nullptr;
    }
    (void)loaded.release();
    return std::make_unique<AudioConverterSheet>(whenCancelled, std::unique_ptr<QDialog>(win), progIndic, cancelButton);
}

} // namespace Tessaron
