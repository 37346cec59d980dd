#pragma once

#include <TessaronClasses/DVDInspectJob.h>

#include <QByteArray>
#include <QWidget>

class QAction;
class QLabel;
class QPushButton;
class QStackedLayout;
class QTreeWidget;

namespace Tessaron::Desktop
{

class JobBar;

/// The window's view of a video DVD: what is on it, and whether players will take it.
class VideoView final : public QWidget
{
    Q_OBJECT

public:
    explicit VideoView(QWidget *parent = nullptr);

    [[nodiscard]] QList<QAction *> actions() const { return {m_open, m_openImage, m_play}; }
    [[nodiscard]] QTreeWidget &tree() const { return *m_tree; }
    [[nodiscard]] JobBar &progress() const { return *m_progress; }
    /// Says what the disc is; an empty text asks for one.
    void showSummary(const QString &text, bool canBePlayed);
    void showDisc(const DVDDescription &disc);
    /// What is not as players need it, a line each; and what is said where there is nothing of the kind.
    void showProblems(const QStringList &problems, const QString &nothingFound);
    [[nodiscard]] const QStringList &problems() const { return m_problems; }
    /// What is said of the disc's fitness.
    [[nodiscard]] QString judgement() const;
    /// The title and the chapter in the row that is chosen; 0 for none.
    [[nodiscard]] std::pair<int, int> chosenPlace() const;

Q_SIGNALS:
    void openWanted();
    void openImageWanted();
    void playWanted();
    void discDropped(const QByteArray &path);
    void cancelWanted();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    [[nodiscard]] QWidget *emptyPage();
    [[nodiscard]] QWidget *discPage();
    void makeActions();

    QLabel *const m_summary;
    QLabel *const m_judgement;
    QPushButton *const m_showProblems;
    QTreeWidget *const m_tree;
    JobBar *const m_progress;
    QStackedLayout *m_pages = nullptr;
    QAction *m_open = nullptr;
    QAction *m_openImage = nullptr;
    QAction *m_play = nullptr;
    QStringList m_problems;
};

} // namespace Tessaron::Desktop
