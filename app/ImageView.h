#pragma once

#include <QByteArray>
#include <QList>
#include <QWidget>

class QAction;
class QLabel;
class QStackedLayout;

namespace Tessaron::Desktop
{

class ImageContentsModel;
class ImageTreeView;
struct ImagePlace;
class JobBar;

/// The window's view of an image: what it is, and what is in it.
class ImageView final : public QWidget
{
    Q_OBJECT

public:
    explicit ImageView(ImageContentsModel &contents, QWidget *parent = nullptr);

    [[nodiscard]] QList<QAction *> actions() const { return {m_open, m_takeFiles, m_compare, m_takeOut, m_copy}; }
    [[nodiscard]] QAction &copyAction() const { return *m_copy; }
    [[nodiscard]] ImageTreeView &tree() const { return *m_tree; }
    [[nodiscard]] JobBar &progress() const { return *m_progress; }
    /// Says what the image is. Without one, an empty text asks for one.
    void showSummary(const QString &text, bool isReady);
    /// The track in the row that is chosen; 0 for none.
    [[nodiscard]] std::uint32_t chosenTrack() const;

    /// What is chosen in filesystems; empty for nothing.
    [[nodiscard]] QList<ImagePlace> chosenPlaces() const;

Q_SIGNALS:
    void openWanted();
    void takeFilesWanted();
    void copyWanted();
    void dragWanted();
    void compareWanted();
    void takeOutWanted();
    void imageDropped(const QByteArray &path);
    void cancelWanted();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    [[nodiscard]] QWidget *emptyPage();

    ImageContentsModel &m_contents;
    QLabel *const m_summary;
    ImageTreeView *const m_tree;
    JobBar *const m_progress;
    QStackedLayout *m_pages = nullptr;
    QAction *m_open = nullptr;
    QAction *m_takeFiles = nullptr;
    QAction *m_compare = nullptr;
    QAction *m_takeOut = nullptr;
    QAction *m_copy = nullptr;
};

} // namespace Tessaron::Desktop
