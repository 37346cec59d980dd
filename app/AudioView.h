#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>
#include <QWidget>

class QAction;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QTreeView;

namespace Tessaron::Desktop
{

class AudioTrackModel;
class CapacityMeter;
class JobBar;
class SoundBar;
class WaveformStore;

/// The window's view of an audio CD: its title, its tracks, what is between them, how they sound, and how full it is.
class AudioView final : public QWidget
{
    Q_OBJECT

public:
    AudioView(AudioTrackModel &tracks, WaveformStore &waveforms, QWidget *parent = nullptr);
    ~AudioView() override;

    [[nodiscard]] QList<QAction *> actions() const;
    [[nodiscard]] QTreeView &table() const { return *m_table; }
    [[nodiscard]] JobBar &progress() const { return *m_progress; }
    [[nodiscard]] SoundBar &sound() const { return *m_sound; }
    /// The pause between all tracks, as the field sets it.
    void setPauseSeconds(double seconds);
    [[nodiscard]] QString lengthText() const;

    void addFiles();
    void removeSelected();
    /// Moves the selected rows up by one place, or down.
    void moveSelected(bool isUp);
    /// Opens the editor of the disc's texts.
    void editTexts();
    /// The rows that are selected; all of them when none is.
    [[nodiscard]] QList<int> chosenRows() const;

Q_SIGNALS:
    void filesWanted(const QList<QByteArray> &paths);
    void cancelWanted();
    void conversionWanted();
    void told(const QString &text, const QStringList &details);

private:
    void makeActions();
    void layOut();
    void layOutTable();
    [[nodiscard]] QLayout *names();
    [[nodiscard]] QLayout *options();
    [[nodiscard]] QLayout *lengths();
    void connectFields();
    /// Shows the disc as it is now.
    void showDisc();
    void showLength();
    void showCurrent();
    void updateActions();
    [[nodiscard]] QList<int> selectedRows() const;

    AudioTrackModel &m_tracks;
    QLineEdit *const m_title;
    QLineEdit *const m_performer;
    QTreeView *const m_table;
    QDoubleSpinBox *const m_pause;
    QCheckBox *const m_gapless;
    QCheckBox *const m_normalize;
    QCheckBox *const m_cdText;
    SoundBar *const m_sound;
    JobBar *const m_progress;
    CapacityMeter *const m_meter;
    QLabel *const m_length;
    QComboBox *const m_medium;
    QAction *m_add = nullptr;
    QAction *m_texts = nullptr;
    QAction *m_convert = nullptr;
    QAction *m_remove = nullptr;
    QAction *m_up = nullptr;
    QAction *m_down = nullptr;
};

} // namespace Tessaron::Desktop
