#pragma once

#include <QTreeView>

namespace Tessaron::Desktop
{

/// The tree of a disc with its empty state: what to do stands where the files will be.
class DiscTreeView final : public QTreeView
{
    Q_OBJECT

public:
    explicit DiscTreeView(QWidget *parent = nullptr);

    void setEmptyText(const QString &title, const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void drawEmptyText();
    void copyOnly(QDropEvent &event) const;

    QString m_emptyTitle;
    QString m_emptyText;
    bool m_isDraggedOver = false;
};

} // namespace Tessaron::Desktop
