#pragma once

#include <QByteArray>
#include <QList>
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

/// The window's view of an audio CD: its title, its tracks, what is between them, and how full it is.
class AudioView final : public QWidget
{
    Q_OBJECT

public:
    explicit AudioView(AudioTrackModel &tracks, QWidget *parent = nullptr);

    [[nodiscard]] QList<QAction *> actions() const;
    [[nodiscard]] QTreeView &table() const { return *m_table; }
    [[nodiscard]] JobBar &progress() const { return *m_progress; }
    [[nodiscard]] QString discTitle() const;
    [[nodiscard]] QString discPerformer() const;
    [[nodiscard]] double gapSeconds() const;
    void setGapSeconds(double seconds);
    [[nodiscard]] bool isGapless() const;
    [[nodiscard]] bool isNormalized() const;
    [[nodiscard]] bool hasCDText() const;
    /// Says how long the disc is, and how much of it is left.
    void showLength(double seconds);
    [[nodiscard]] QString lengthText() const;

    void addFiles();
    void removeSelected();
    /// Moves the selected rows up by one place, or down.
    void moveSelected(bool isUp);

Q_SIGNALS:
    void filesWanted(const QList<QByteArray> &paths);
    void gapChanged();
    void cancelWanted();

private:
    void makeActions();
    void layOut();
    void updateActions();
    [[nodiscard]] QList<int> selectedRows() const;
    [[nodiscard]] QLayout *options();

    AudioTrackModel &m_tracks;
    QLineEdit *const m_title;
    QLineEdit *const m_performer;
    QTreeView *const m_table;
    QDoubleSpinBox *const m_gap;
    QCheckBox *const m_gapless;
    QCheckBox *const m_normalize;
    QCheckBox *const m_cdText;
    JobBar *const m_progress;
    CapacityMeter *const m_meter;
    QLabel *const m_length;
    QComboBox *const m_medium;
    double m_seconds = 0;
    QAction *m_add = nullptr;
    QAction *m_remove = nullptr;
    QAction *m_up = nullptr;
    QAction *m_down = nullptr;
};

} // namespace Tessaron::Desktop
